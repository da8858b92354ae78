// A real X server and a real sound server, recorded to a movie that ffmpeg decodes.

#include "app/start/DesktopPictures.h"
#include "capture/ZQAVRecorderKit.h"
#include "platform/hal/AudioHardware.h"
#include "platform/hal/HardwareSystem.h"
#include "platform/hal/pipewire/PipeWireBackend.h"
#include "tests/support/LoopbackNames.h"
#include "tests/support/Movie.h"
#include "tests/support/PrivateDisplay.h"
#include "tests/support/PrivateWorld.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <thread>

namespace cantorel {
namespace {

using test::eventually;

// Flashes on a display, and clicks in an output at the same moments.
class FlashAndClick {
public:
    explicit FlashAndClick(const test::PrivateDisplay &display)
        : mConnection(xcb_connect(display.name().toLocal8Bit().constData(), nullptr)), mRoot(display.root()) {
        mContext = xcb_generate_id(mConnection);
        xcb_create_gc(mConnection, mContext, mRoot, 0, nullptr);
        paint(0, {0, 0, 640, 480});
        const AudioObjectPropertyAddress address = {kAudioHardwarePropertyDefaultOutputDevice,
                                                    kAudioObjectPropertyScopeGlobal, 0};
        std::uint32_t size = sizeof mOutput;
        AudioObjectGetPropertyData(kAudioObjectSystemObject, &address, 0, nullptr, &size, &mOutput);
        EXPECT_EQ(AudioDeviceCreateIOProcID(mOutput, &play, this, &mProc), kAudioHardwareNoError);
        EXPECT_EQ(AudioDeviceStart(mOutput, mProc), kAudioHardwareNoError);
    }
    ~FlashAndClick() {
        AudioDeviceStop(mOutput, mProc);
        AudioDeviceDestroyIOProcID(mOutput, mProc);
        xcb_disconnect(mConnection);
    }
    void paint(std::uint32_t colour, const xcb_rectangle_t &where) const {
        xcb_change_gc(mConnection, mContext, XCB_GC_FOREGROUND, &colour);
        xcb_poly_fill_rectangle(mConnection, mRoot, mContext, 1, &where);
        xcb_flush(mConnection);
    }
    // Both, a little later, and dark again after that; returns then.
    void strike() {
        const auto at = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
        mClickAt = std::chrono::nanoseconds(at.time_since_epoch()).count();
        std::this_thread::sleep_until(at);
        paint(0xFFFFFF, {0, 0, 640, 480});
        std::this_thread::sleep_until(at + std::chrono::milliseconds(250));
        paint(0, {0, 0, 640, 480});
        std::this_thread::sleep_until(at + std::chrono::milliseconds(400));
    }

private:
    static OSStatus play(AudioObjectID, const AudioTimeStamp *, const AudioBufferList *, const AudioTimeStamp *,
                         AudioBufferList *output, const AudioTimeStamp *outputTime, void *data) noexcept {
        auto &self = *static_cast<FlashAndClick *>(data);
        auto *samples = static_cast<float *>(output->mBuffers[0].mData);
        const auto channels = output->mBuffers[0].mNumberChannels;
        const std::size_t frames = output->mBuffers[0].mDataByteSize / sizeof(float) / channels;
        for (std::size_t i = 0; i < frames; ++i) {
            const auto now = static_cast<std::int64_t>(outputTime->mHostTime + i * 1'000'000'000 / 48000);
            const std::int64_t since = now - self.mClickAt;
            const bool sounds = since >= 0 && since < 20'000'000;
            for (std::size_t channel = 0; channel < channels; ++channel)
                samples[i * channels + channel] = sounds ? (i / 24 % 2 ? 0.8f : -0.8f) : 0.0f;
        }
        return kAudioHardwareNoError;
    }

    xcb_connection_t *mConnection;
    xcb_window_t mRoot;
    xcb_gcontext_t mContext;
    AudioObjectID mOutput = kAudioObjectUnknown;
    AudioDeviceIOProcID mProc = nullptr;
    std::atomic<std::int64_t> mClickAt{0};
};

struct ScreenRecorderTest : testing::Test {
    struct Listener : QObject, ZQAVRecorderDelegate {
        void captureDidStartRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &) override { ++started; }
        void captureDidFinishRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &, const media::RecordingCounts &told,
                                                    const std::optional<foundation::Failure> &why) override {
            counts = told;
            failure = why;
            ++ended;
        }
        void AVRecorderDidFinishRecorderWithOutputFilePath(ZQAVRecorder &, const QString &) override { ++files; }
        int started = 0, ended = 0, files = 0;
        media::RecordingCounts counts;
        std::optional<foundation::Failure> failure;
    };

    void SetUp() override {
        ASSERT_TRUE(display.ready());
        qputenv("DISPLAY", display.name().toLocal8Bit());
        recorder = ZQScreenRecorder::init();
        recorder->delegate = &listener;
        recorder->setShowsCursor(false);
    }
    void hear() {
        world = std::make_unique<test::PrivateWorld>();
        ASSERT_TRUE(world->ready());
        auto backend = hal::PipeWireBackend::connect(std::chrono::seconds(10), test::kLoopbackNames);
        ASSERT_TRUE(backend);
        system = std::make_unique<hal::HardwareSystem>(std::move(backend).value(), QDir::homePath());
        const auto heard = media::captureDeviceWithUniqueID(QLatin1String(hal::kOutputMonitorUid));
        ASSERT_TRUE(heard);
        recorder->setCaptureAudioDevices({*heard});
    }
    void start() {
        ASSERT_TRUE(recorder->startRecording(QUrl::fromLocalFile(file)));
        ASSERT_TRUE(eventually([&] { return listener.started == 1; }));
    }
    void stop() {
        recorder->stopRecording();
        ASSERT_TRUE(eventually([&] { return listener.ended == 1; }));
    }
    static void pass(double seconds) {
        const QDeadlineTimer passed(static_cast<qint64>(seconds * 1000));
        (void)eventually([&] { return passed.hasExpired(); });
    }

    const test::PrivateDisplay display{"640x480x24"};
    std::unique_ptr<test::PrivateWorld> world;
    std::unique_ptr<hal::HardwareSystem> system;
    const media::InstalledPictureSources pictures{desktopPictures()};
    Listener listener;
    std::unique_ptr<ZQScreenRecorder> recorder;
    const QString file = QDir::homePath() + "/movie.mp4";
};

} // namespace

TEST_F(ScreenRecorderTest, FlashAndClickStayTogetherAcrossAPauseThatLeavesNoGap) {
    hear();
    FlashAndClick both(display);
    start();
    const auto begin = std::chrono::steady_clock::now();
    pass(0.3);
    both.strike();
    both.strike();
    recorder->pauseRecording();
    EXPECT_TRUE(recorder->isPaused());
    const auto paused = std::chrono::steady_clock::now();
    both.strike(); // not in the movie
    pass(1.5);
    const auto resumed = std::chrono::steady_clock::now();
    recorder->resumeRecording();
    pass(0.3);
    both.strike();
    both.strike();
    const auto end = std::chrono::steady_clock::now();
    stop();
    EXPECT_FALSE(listener.failure) << listener.failure->detail.toStdString();
    EXPECT_EQ(listener.files, 1);
    EXPECT_EQ(listener.counts.droppedPictures, 0);

    const auto flashes = test::flashesOf(test::picturesOf(file));
    const auto clicks = test::clicksOf(file);
    ASSERT_EQ(flashes.size(), 4u);
    ASSERT_EQ(clicks.size(), 4u);
    for (std::size_t i = 0; i < flashes.size(); ++i)
        EXPECT_NEAR(flashes[i], clicks[i], 1.0 / 30) << "strike " << i;
    const double wall = std::chrono::duration<double>((end - begin) - (resumed - paused)).count();
    EXPECT_NEAR(listener.counts.seconds(), wall, 0.2);
    for (const char *stream : {"v", "a"})
        EXPECT_NEAR(test::factOf(file, stream, "stream=duration").toDouble(), listener.counts.seconds(), 0.05)
            << stream;
    EXPECT_EQ(test::factOf(file, "a", "stream=codec_name,sample_rate,channels"), "aac,48000,2");
    EXPECT_EQ(test::factOf(file, "v", "stream=codec_name,width,height"), "h264,640,480");
}

} // namespace cantorel
