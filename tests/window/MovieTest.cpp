#include "tests/support/Movie.h"

#include "platform/desktop/recorded/RecordedServices.h"
#include "platform/media/asset/OpenAsset.h"
#include "tests/window/WindowFixture.h"
#include "ui/AreaPicker.h"

#include <QLabel>
#include <QProcess>
#include <QPushButton>

#include <chrono>
#include <memory>
#include <thread>
#include <vector>

namespace cantorel {
namespace {

using media::PictureSize;

// Displays that stand still: each shows one picture.
class StillPictures : public media::PictureSources {
public:
    struct Asked {
        std::vector<media::DisplayRequest> requests;
        bool hasDisplay = true, hasCamera = false;
    };
    explicit StillPictures(Asked &asked) : mAsked(asked) {}

    foundation::Result<std::vector<media::Display>> displays() override {
        if (!mAsked.hasDisplay)
            return PictureSources::displays();
        return std::vector<media::Display>{{7, "Test display", QRect(0, 0, 320, 240), 1}};
    }
    foundation::Result<std::unique_ptr<media::PictureSource>>
    openDisplay(const media::DisplayRequest &request) override {
        if (!mAsked.hasDisplay)
            return PictureSources::openDisplay(request);
        mAsked.requests.push_back(request);
        const QSize size = request.region.value_or(QRect(0, 0, 320, 240)).size();
        return std::unique_ptr<media::PictureSource>(std::make_unique<Still>(PictureSize{size.width(), size.height()}));
    }

    std::vector<media::Camera> cameras() override {
        return mAsked.hasCamera ? std::vector<media::Camera>{{"usb-1", "Test camera"}} : std::vector<media::Camera>();
    }
    foundation::Result<std::unique_ptr<media::PictureSource>> openCamera(const QString &,
                                                                         media::CameraQuality) override {
        return std::unique_ptr<media::PictureSource>(std::make_unique<Camera>(PictureSize{320, 180}));
    }

private:
    // A grey picture at the moment of the world's clock.
    static void show(PictureSize size, media::PictureSink &sink) {
        const std::vector<std::uint8_t> grey(static_cast<std::size_t>(size.width * size.height) * 4, 90);
        media::Picture picture;
        picture.size = size;
        picture.planes = {grey.data(), nullptr, nullptr};
        picture.strides = {4 * size.width, 0, 0};
        picture.hostTime = static_cast<std::uint64_t>(hal::HardwareSystem::clock().now().count());
        sink.takePicture(picture);
    }
    class Still : public media::PictureSource {
    public:
        explicit Still(PictureSize size) : mSize(size) {}
        PictureSize size() const override { return mSize; }
        foundation::Result<void> start(media::PictureSink &sink, int) override {
            show(mSize, sink);
            return {};
        }
        void stop() override {}

    protected:
        const PictureSize mSize;
    };
    // Shows it again and again, on a thread of its own.
    class Camera : public Still {
    public:
        using Still::Still;
        ~Camera() override { stop(); }
        foundation::Result<void> start(media::PictureSink &sink, int) override {
            mThread = std::jthread([this, &sink](const std::stop_token &stopped) {
                for (; !stopped.stop_requested(); std::this_thread::sleep_for(std::chrono::milliseconds(5)))
                    show(mSize, sink);
            });
            return {};
        }
        void stop() override { mThread = {}; }

    private:
        std::jthread mThread;
    };
    Asked &mAsked;
};

class Movie : public test::WindowFixture {
public:
    Movie() : WindowFixture(test::EmbeddedWorld::Virtual::Installed, desktop::recordedServices(record())) {
        window.resize(900, 600);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        QApplication::setActiveWindow(&window);
    }
    static std::shared_ptr<desktop::CallRecord> record() {
        static const auto calls = std::make_shared<desktop::CallRecord>();
        return calls;
    }
    bool isState(RecorderState state) {
        return passUntil([&] { return panel.state() == state; }, 30'000); // what is coded stands back for others
    }

    StillPictures::Asked asked;
    media::InstalledPictureSources sources{std::make_unique<StillPictures>(asked)};
};

TEST_F(Movie, AScreenIsRecordedWithItsSoundPausedAndListedAndNothingIsConverted) {
    EXPECT_FALSE(find<QWidget>("moviePicture")->isVisible());
    click("screenToggle");
    EXPECT_TRUE(find<QWidget>("moviePicture")->isVisible());
    EXPECT_FALSE(find<QWidget>("format")->isVisible());
    EXPECT_EQ(find<QLabel>("state")->text(), Lang::windowReadyScreen());
    photograph(window, "movie-idle");
    find<QComboBox>("movieRate")->setCurrentIndex(0);
    Q_EMIT find<QComboBox>("movieRate")->activated(0);
    find<QWidget>("screenToggle")->setFocus();
    QTest::keyClick(&window, Qt::Key_R, Qt::ControlModifier);
    ASSERT_TRUE(isState(RecorderState::Recording));
    const auto begin = world.clock->now();
    EXPECT_FALSE(find<QWidget>("split")->isVisible());
    EXPECT_FALSE(find<QWidget>("screenToggle")->isVisible());
    EXPECT_EQ(window.focusWidget(), find<QWidget>("record")) << "what had it is gone";
    EXPECT_TRUE(passUntil([&] { return panel.display().seconds >= 2; }));
    photograph(window, "movie-recording");
    click("pause");
    ASSERT_TRUE(isState(RecorderState::Paused));
    pass(2000);
    click("pause");
    pass(1000);
    const double passed = std::chrono::duration<double>(world.clock->now() - begin).count();
    click("record");
    ASSERT_TRUE(isState(RecorderState::Idle));
    ASSERT_EQ(list.items().size(), 1u);
    const QString file = list.items().front()->getFileName();
    EXPECT_EQ(QFileInfo(file).fileName(), "Track1.mp4");
    const auto sound = media::openAsset(QUrl::fromLocalFile(file));
    ASSERT_TRUE(sound);
    EXPECT_NEAR(sound.value()->duration().seconds(), passed - 2, 0.6) << "without the pause";
    EXPECT_TRUE(QDir(folder.path()).entryList({"*.mp3", "*.m4a"}).isEmpty());
    EXPECT_TRUE(session.leftovers().pending().empty());
    ASSERT_EQ(asked.requests.size(), 1u);
    EXPECT_FALSE(asked.requests.front().region);
    photograph(window, "movie-result");
    window.findChild<QPushButton *>("playResult")->click();
    EXPECT_TRUE(passUntil([&] { return record()->calls().join('\n').contains("Track1.mp4"); }))
        << "in a player of pictures";
    EXPECT_TRUE(find<QToolButton>("screenToggle")->isChecked());
    click("screenToggle");
    recordByButton();
    click("record");
    EXPECT_TRUE(passUntil([&] {
        return list.items().size() == 2 && list.items().back()->getFileName().endsWith("Track2.mp3");
    })) << "sound alone again";
}

TEST_F(Movie, AnAreaIsDrawnMovedByKeysAndLeft) {
    click("screenToggle");
    const auto pick = [&] {
        auto *chip = find<QComboBox>("moviePicture");
        Q_EMIT chip->activated(1);
        ui::AreaPicker *picker = nullptr;
        EXPECT_TRUE(passUntil([&] {
            for (QWidget *each : QApplication::topLevelWidgets())
                if (each->objectName() == "areaPicker" && each->isVisible())
                    picker = static_cast<ui::AreaPicker *>(each);
            return picker != nullptr;
        }));
        return picker;
    };
    ui::AreaPicker *picker = pick();
    ASSERT_NE(picker, nullptr);
    photograph(*picker, "movie-area");
    QTest::keyClick(picker, Qt::Key_Escape);
    EXPECT_EQ(movies.wish().picture, MovieWish::Picture::Screen) << "nothing was taken";
    picker = pick();
    QTest::mousePress(picker, Qt::LeftButton, {}, {10, 20});
    QMouseEvent move(QEvent::MouseMove, QPointF(109, 99), QPointF(), Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(picker, &move);
    QTest::mouseRelease(picker, Qt::LeftButton, {}, {109, 99});
    EXPECT_EQ(movies.wish().area, QRect(10, 20, 100, 80));
    EXPECT_EQ(movies.wish().display, 7u);
    picker = pick();
    QTest::keyClick(picker, Qt::Key_Right);
    QTest::keyClick(picker, Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(picker, Qt::Key_Return);
    EXPECT_EQ(movies.wish().area, QRect(20, 20, 100, 90));
    click("record");
    ASSERT_TRUE(isState(RecorderState::Recording));
    EXPECT_TRUE(passUntil([&] { return panel.display().seconds >= 1; }));
    click("record");
    ASSERT_TRUE(isState(RecorderState::Idle));
    ASSERT_EQ(asked.requests.size(), 1u);
    EXPECT_EQ(asked.requests.front().region, QRect(20, 20, 100, 90));
}

// Run once more in a process that sees a small disk of its own.
TEST_F(Movie, AFullDiskEndsItInASentenceAndTheMoviePlaysAndTheNextIsRefused) {
    const QString disk = qEnvironmentVariable("CANTOREL_SMALL_DISK");
    if (disk.isEmpty()) {
        if (QProcess::execute("unshare", {"-Urm", "mount", "-t", "tmpfs", "none", "/mnt"}) != 0)
            GTEST_SKIP() << "this machine gives no namespace to mount a small disk in";
        qputenv("CANTOREL_SMALL_DISK", folder.path().toLocal8Bit());
        EXPECT_EQ(
            QProcess::execute("unshare", {"-Urm", "sh", "-c", "mount -t tmpfs -o size=48m none \"$0\" && exec \"$@\"",
                                          folder.path(), QCoreApplication::applicationFilePath(),
                                          "--gtest_filter=Movie.AFullDisk*"}),
            0);
        return;
    }
    standardUserDefaults().setArgument(setting::kOutputFolderPath.key, disk);
    ZQAVRecorderKit::sharedInstance().getScreenRecorder()->diskReserve = 0; // else it would end before
    click("screenToggle");
    click("record");
    ASSERT_TRUE(isState(RecorderState::Recording));
    EXPECT_TRUE(passUntil([&] { return panel.display().seconds >= 3; }));
    QFile rest(disk + "/rest");
    ASSERT_TRUE(rest.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (rest.write(QByteArray(4096, 'x')) > 0) {
    }
    ASSERT_TRUE(isState(RecorderState::Idle)) << "nobody has to stop it";
    EXPECT_TRUE(panel.sentence().contains("no room left")) << panel.sentence().toStdString();
    ASSERT_EQ(list.items().size(), 1u);
    const QString file = list.items().front()->getFileName();
    EXPECT_EQ(QDir(disk).entryList(QDir::Files | QDir::Hidden), QStringList({"rest", "Track1.mp4"}));
    EXPECT_GE(test::picturesOf(file).size(), 3u);
    EXPECT_GT(test::soundOf(file).size(), 48000u);
    click("record");
    EXPECT_TRUE(passUntil([&] { return panel.sentence().contains("is full"); })) << panel.sentence().toStdString();
    EXPECT_EQ(panel.state(), RecorderState::Idle);
    EXPECT_EQ(QDir(disk).entryList(QDir::Files | QDir::Hidden).size(), 2);
    photograph(window, "movie-disk-full");
}

TEST_F(Movie, WithoutADisplayOneSentenceSaysSoAndSoundCanBeRecordedAtOnce) {
    asked.hasDisplay = false;
    click("screenToggle");
    click("record");
    EXPECT_TRUE(passUntil([&] { return !panel.sentence().isEmpty(); }));
    EXPECT_EQ(panel.state(), RecorderState::Idle);
    EXPECT_TRUE(list.items().empty());
    click("screenToggle");
    recordByButton();
    EXPECT_EQ(panel.state(), RecorderState::Recording);
}

TEST_F(Movie, ACameraIsSeenInTheStageBeforeAndWhileItIsRecorded) {
    asked.hasDisplay = false;
    asked.hasCamera = true;
    click("screenToggle");
    EXPECT_EQ(find<QComboBox>("moviePicture")->currentText(), "Test camera");
    EXPECT_EQ(find<QLabel>("state")->text(), Lang::windowReadyCamera());
    auto &preview = *find<QWidget>("cameraPreview");
    const auto isSeen = [&] {
        return passUntil(
            [&] { return preview.isVisible() && qAbs(preview.grab().toImage().pixelColor(40, 40).red() - 90) < 6; });
    };
    EXPECT_TRUE(isSeen());
    click("record");
    ASSERT_TRUE(isState(RecorderState::Recording));
    EXPECT_TRUE(isSeen());
    photograph(window, "movie-camera");
    EXPECT_TRUE(passUntil([&] { return panel.display().seconds >= 1; }));
    click("record");
    ASSERT_TRUE(isState(RecorderState::Idle));
    ASSERT_EQ(list.items().size(), 1u) << panel.sentence().toStdString();
    EXPECT_TRUE(list.items().front()->getFileName().endsWith("Track1.mp4"));
    click("screenToggle");
    EXPECT_FALSE(preview.isVisible()) << "the camera is let go";
}

} // namespace
} // namespace cantorel
