// The window over a real sound server and the screen that it stands on, or one that the desktop's portal shares,
// clicked through to a movie that ffmpeg decodes.

#include "app/start/DesktopPictures.h"
#include "platform/hal/pipewire/PipeWireBackend.h"
#include "tests/support/FakeScreenCast.h"
#include "tests/support/FlashAndClick.h"
#include "tests/support/LoopbackNames.h"
#include "tests/support/Movie.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/VideoNode.h"
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

// As under Wayland: the desktop asks the person, and shares a node of its sound server.
struct SharedScreenMovie : ScreenMovie {
    void SetUp() override {
        ScreenMovie::SetUp();
        qputenv("WAYLAND_DISPLAY", "as if");
        ASSERT_TRUE(eventually([&] { return shared.id() != 0; }));
        portal.node = shared.id();
        parts->click("screenToggle");
    }
    std::string said() const { return parts->panel.sentence().toStdString(); }
    QStringList files() const { return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden); }
    // The number that each picture of the movie shows.
    static std::vector<int> numbersIn(const QString &file) {
        const QString line = QStringLiteral("crop=192:16:0:0,scale=192:1:flags=area,format=bgr0");
        const QByteArray lines = test::outputOf(
            "ffmpeg", {"-v", "error", "-i", file, "-vf", line, "-vsync", "passthrough", "-f", "rawvideo", "-"});
        std::vector<int> numbers;
        for (qsizetype at = 0; at + 192 * 4 <= lines.size(); at += 192 * 4)
            numbers.push_back(test::VideoNode::numberOf(reinterpret_cast<const std::uint8_t *>(lines.data() + at)));
        return numbers;
    }

    const test::PrivateBus bus;
    test::FakeScreenCast portal;
    test::VideoNode shared{"shared", "Shared", {640, 400}};
};

TEST_F(SharedScreenMovie, RefusedItSaysSoAndGrantedItJoinsTheLibraryWithSoundAndPictureTogether) {
    portal.responses["Start"] = 1;
    parts->click("record");
    ASSERT_TRUE(eventually([&] { return !said().empty(); }));
    EXPECT_NE(said().find("not allowed"), std::string::npos) << said();
    ASSERT_TRUE(isState(RecorderState::Idle));
    EXPECT_TRUE(files().isEmpty() && parts->list.items().empty()) << files().join(' ').toStdString();

    portal.responses.clear();
    portal.pace = test::FakeScreenCast::Pace::WhenTold; // the person looks at what is asked
    parts->click("record");
    for (int answers = 0; answers < 3; ++answers) {
        ASSERT_TRUE(eventually([&] { return portal.hasHeld(); })) << answers;
        EXPECT_EQ(parts->panel.state(), RecorderState::Preparing);
        portal.answerNow();
    }
    ASSERT_TRUE(isState(RecorderState::Recording));
    EXPECT_TRUE(said().empty()) << said();
    std::vector<int> seen;
    {
        test::FlashAndClick sound(*test::screenOfThisProcess, {1000, 700, 500, 400});
        for (int i = 0; i < 2; ++i)
            sound.strike([&] { seen.push_back(shared.number()); });
    }
    parts->click("record");
    ASSERT_TRUE(isState(RecorderState::Idle));
    EXPECT_TRUE(eventually([&] { return portal.calls.constLast() == "CloseSession"; })) << "nothing is shared any more";

    ASSERT_EQ(parts->list.items().size(), 1u) << said();
    const QString file = parts->list.items().front()->getFileName();
    EXPECT_EQ(files(), QStringList(QFileInfo(file).fileName()));
    EXPECT_EQ(test::factOf(file, "v", "stream=codec_name,width,height"), "h264,640,400");
    const std::vector<int> numbers = numbersIn(file);
    EXPECT_GT(numbers.size(), 15u);
    EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
    const auto shown = test::picturesOf(file);
    const auto clicks = test::clicksOf(file);
    ASSERT_EQ(shown.size(), numbers.size());
    ASSERT_EQ(clicks.size(), seen.size());
    for (std::size_t i = 0; i < seen.size(); ++i) {
        const auto picture = std::lower_bound(numbers.begin(), numbers.end(), seen[i]);
        ASSERT_NE(picture, numbers.end());
        EXPECT_NEAR(shown[static_cast<std::size_t>(picture - numbers.begin())].time, clicks[i], 2.0 / 30) << i;
    }
}

TEST_F(SharedScreenMovie, WhoStopsSharingKeepsTheMovieAndIsAskedAnewOnlyIfThatIsWanted) {
    portal.pace = test::FakeScreenCast::Pace::WhenTold;
    parts->click("record");
    ASSERT_TRUE(eventually([&] { return portal.hasHeld(); }));
    parts->click("record");
    ASSERT_TRUE(isState(RecorderState::Idle));
    EXPECT_TRUE(eventually([&] { return portal.calls.contains("Close"); })) << "the question is taken back";
    EXPECT_TRUE(files().isEmpty());

    portal.pace = test::FakeScreenCast::Pace::AfterReply;
    parts->click("record");
    ASSERT_TRUE(isState(RecorderState::Recording));
    ASSERT_TRUE(eventually([&] { return parts->panel.display().seconds >= 1; }));
    portal.closeSession();
    ASSERT_TRUE(isState(RecorderState::Idle)) << "nobody has to stop it";
    EXPECT_NE(said().find("stopped sharing"), std::string::npos) << said();
    ASSERT_EQ(parts->list.items().size(), 1u);
    EXPECT_GT(numbersIn(parts->list.items().front()->getFileName()).size(), 5u);

    auto *choices = parts->find<QComboBox>("moviePicture");
    ASSERT_GE(choices->count(), 2);
    for (const int choice : {0, 1}) { // as before, or asked anew
        choices->setCurrentIndex(choice);
        Q_EMIT choices->activated(choice);
        parts->click("record");
        ASSERT_TRUE(isState(RecorderState::Recording));
        EXPECT_EQ(choices->currentIndex(), choice);
        EXPECT_EQ(portal.selected.contains("restore_token"), choice == 0);
        parts->click("record");
        ASSERT_TRUE(isState(RecorderState::Idle));
    }
}

} // namespace
} // namespace cantorel
