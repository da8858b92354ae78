// The window over a real sound server and the screen that it stands on, clicked through to a movie that ffmpeg decodes.

#include "app/start/DesktopPictures.h"
#include "platform/hal/pipewire/PipeWireBackend.h"
#include "tests/support/FlashAndClick.h"
#include "tests/support/LoopbackNames.h"
#include "tests/support/Movie.h"
#include "tests/window/Screen.h"
#include "tests/window/WindowFixture.h"

#include <chrono>

namespace cantorel {
namespace {

using test::eventually;

struct ScreenMovie : testing::Test {
    void SetUp() override {
        ASSERT_TRUE(world.ready());
        auto backend = hal::PipeWireBackend::connect(std::chrono::seconds(10), test::kLoopbackNames);
        ASSERT_TRUE(backend);
        system = std::make_unique<hal::HardwareSystem>(std::move(backend).value(), QDir::homePath() + "/state");
        standardUserDefaults().setArgument(setting::kOutputFolderPath.key, folder.path());
        AppSettings::setAudioType(0);
        parts = std::make_unique<test::WindowParts>(hal::HardwareSystem::clock());
        parts->window.setGeometry(0, 0, 900, 600);
        parts->window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&parts->window));
    }
    ~ScreenMovie() override {
        parts.reset();
        RecorderRelease(ZQAVRecorderKit::sharedInstance().getScreenRecorder());
        ZQAudioKextKit::end();
    }
    bool isState(RecorderState state) const {
        return eventually([&] { return parts->panel.state() == state; }, 20'000);
    }

    const test::PrivateWorld world{[] {
        test::PrivateWorld::Options options;
        options.virtualDevice = false; // what is heard is recorded where it is played
        return options;
    }()};
    const QTemporaryDir folder;
    const media::InstalledPictureSources pictures{desktopPictures()};
    std::unique_ptr<hal::HardwareSystem> system;
    std::unique_ptr<test::WindowParts> parts;
};

TEST_F(ScreenMovie, IsClickedAndPausedWithSoundAndPictureTogetherAndJoinsTheLibrary) {
    test::FlashAndClick both(*test::screenOfThisProcess, {1000, 700, 500, 400}); // beside the window
    parts->click("screenToggle");
    parts->click("record");
    ASSERT_TRUE(isState(RecorderState::Recording));
    const auto begin = std::chrono::steady_clock::now();
    both.strike();
    both.strike();
    parts->click("pause");
    ASSERT_TRUE(isState(RecorderState::Paused));
    const auto paused = std::chrono::steady_clock::now();
    both.strike(); // not in the movie
    QTest::qWait(1400);
    parts->click("pause");
    const auto resumed = std::chrono::steady_clock::now();
    QTest::qWait(300);
    both.strike();
    both.strike();
    parts->click("record");
    const double wall =
        std::chrono::duration<double>((std::chrono::steady_clock::now() - begin) - (resumed - paused)).count();
    ASSERT_TRUE(isState(RecorderState::Idle));

    ASSERT_EQ(parts->list.items().size(), 1u) << parts->panel.sentence().toStdString();
    const RecordedAudioInfo &item = *parts->list.items().front();
    const QString file = item.getFileName();
    EXPECT_EQ(file, folder.filePath("Track1.mp4"));
    EXPECT_EQ(test::factOf(file, "v", "stream=codec_name,width,height"), "h264,1600,1200");
    EXPECT_EQ(test::factOf(file, "a", "stream=codec_name,sample_rate,channels"), "aac,48000,2");
    for (const char *stream : {"v", "a"})
        EXPECT_NEAR(test::factOf(file, stream, "stream=duration").toDouble(), item.Seconds, 0.05) << stream;
    EXPECT_NEAR(item.Seconds, wall, 0.4);
    const auto flashes = test::flashesOf(test::picturesOf(file, "400:300:1050:750"));
    const auto clicks = test::clicksOf(file);
    ASSERT_EQ(flashes.size(), 4u);
    ASSERT_EQ(clicks.size(), 4u);
    for (std::size_t i = 0; i < flashes.size(); ++i)
        EXPECT_NEAR(flashes[i], clicks[i], 1.0 / 30) << "strike " << i;
}

} // namespace
} // namespace cantorel
