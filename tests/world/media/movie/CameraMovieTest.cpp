// A camera of PipeWire, recorded with a microphone: the movie as other programs read it.

#include "capture/ZQCameraRecorder.h"
#include "platform/hal/HardwareSystem.h"
#include "platform/hal/pipewire/PipeWireBackend.h"
#include "platform/media/movie/camera/CameraSources.h"
#include "tests/support/FakeCamera.h"
#include "tests/support/LoopbackNames.h"
#include "tests/support/Movie.h"
#include "tests/support/PrivateWorld.h"
#include "tests/support/VideoNode.h"

#include <QDir>

#include <gtest/gtest.h>

namespace cantorel {
namespace {

using test::eventually;
using test::VideoNode;

// The numbers of the camera's pictures, in the order in which they are shown.
std::vector<int> numbersIn(const QString &file, int width) {
    const QByteArray lines =
        test::outputOf("ffmpeg", {"-v", "error", "-i", file, "-vf", "format=bgr0,crop=iw:1:0:8", "-f", "rawvideo",
                                  "-pix_fmt", "bgr0", "-vsync", "passthrough", "-"});
    std::vector<int> numbers;
    for (qsizetype at = 0; at + width * 4 <= lines.size(); at += width * 4)
        numbers.push_back(VideoNode::numberOf(reinterpret_cast<const std::uint8_t *>(lines.constData() + at)));
    return numbers;
}

class CameraMovieTest : public testing::Test, public QObject, public ZQAVRecorderDelegate {
protected:
    CameraMovieTest() {
        devices.cameras.clear();
        recorder->delegate = this;
        EXPECT_TRUE(eventually([] { return ZQCameraRecorder::cameraDevices().size() == 1; }));
        recorder->setCameraDevice(ZQCameraRecorder::cameraDevices().front());
        for (const media::CaptureDevice &device : recorder->audioDevices())
            if (device.localizedName == "Built-in Microphone")
                recorder->setAudioDevice(device);
    }
    void captureDidFinishRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &, const media::RecordingCounts &,
                                                const std::optional<foundation::Failure> &failure) override {
        finished << (failure ? QString::fromLatin1(failure->sentence.key().data(),
                                                   qsizetype(failure->sentence.key().size()))
                             : QString("whole"));
    }
    bool recordsFor(double seconds) {
        return recorder->startRecording(QUrl::fromLocalFile(file), nullptr)
               && eventually([&] { return recorder->recordingCounts().seconds() >= seconds; });
    }

    test::PrivateWorld world;
    std::unique_ptr<VideoNode> camera =
        std::make_unique<VideoNode>("camera", "Front camera", media::PictureSize{640, 360}, 30);
    test::FakeVideoDevices devices;
    hal::HardwareSystem system{hal::PipeWireBackend::connect(std::chrono::seconds(10), test::kLoopbackNames).value(),
                               QDir::homePath() + "/state"};
    media::InstalledPictureSources sources{std::make_unique<media::CameraSources>(devices)};
    std::unique_ptr<ZQCameraRecorder> recorder = ZQCameraRecorder::init();
    const QString file = QDir::homePath() + "/camera.mp4";
    QStringList finished;
};

TEST_F(CameraMovieTest, PicturesAndSoundAreInTheMovieWhileTheyAreSeen) {
    const auto layer = recorder->getVideoPreviewLayerWithCameraRect({0, 0, 320, 180});
    ASSERT_TRUE(recordsFor(2.5));
    const auto seen = layer->picture();
    ASSERT_TRUE(seen);
    EXPECT_EQ(seen->size, (media::PictureSize{320, 180}));
    EXPECT_TRUE(eventually([&] { return layer->picture() != seen; }));
    recorder->stopRecording();
    ASSERT_TRUE(eventually([&] { return !finished.isEmpty(); }));
    EXPECT_EQ(finished, QStringList("whole"));
    EXPECT_EQ(test::factOf(file, "v", "stream=codec_name,width,height"), "h264,640,360");
    EXPECT_EQ(test::factOf(file, "a", "stream=codec_name,sample_rate"), "aac,48000");
    EXPECT_NEAR(test::factOf(file, {}, "format=duration").toDouble(), recorder->recordingCounts().seconds(), 0.1);
    const std::vector<int> numbers = numbersIn(file, 640);
    ASSERT_GT(numbers.size(), 40U) << "about 30 a second";
    for (std::size_t i = 1; i < numbers.size(); ++i)
        EXPECT_GE(numbers[i], numbers[i - 1]) << i;
    EXPECT_GT(numbers.back() - numbers.front(), 40);
}

TEST_F(CameraMovieTest, AnUnpluggedCameraLeavesAMovieThatPlays) {
    ASSERT_TRUE(recordsFor(1.5));
    camera.reset();
    ASSERT_TRUE(eventually([&] { return !finished.isEmpty(); }));
    EXPECT_EQ(finished, QStringList("CameraGone"));
    EXPECT_EQ(test::factOf(file, "v", "stream=codec_name,width,height"), "h264,640,360");
    EXPECT_GE(test::factOf(file, {}, "format=duration").toDouble(), 1.4);
}

TEST_F(CameraMovieTest, ACameraThatPacksItsPicturesIsReadLikeAnyOther) {
    test::FakeCamera packed;
    packed.formats = {{V4L2_PIX_FMT_MJPEG, 320, 240, 30}};
    devices.cameras["/dev/video0"] = packed;
    const QByteArray red = test::outputOf(
        "ffmpeg", {"-v", "error", "-f", "lavfi", "-i", "color=c=red:s=320x240", "-frames:v", "1", "-f", "mjpeg", "-"});
    ASSERT_GT(red.size(), 100);
    recorder->setCameraDevice(ZQCameraRecorder::cameraDevices().front());
    recorder->setAudioDevice({});
    const auto layer = recorder->getVideoPreviewLayerWithCameraRect({0, 0, 320, 240});
    ASSERT_TRUE(recorder->startRecording(QUrl::fromLocalFile(file), nullptr));
    int brought = 0;
    ASSERT_TRUE(eventually([&] {
        // A torn one now and then, as cameras give them.
        devices.bring(++brought % 5 == 0 ? red.first(red.size() / 3) : red);
        return recorder->recordingCounts().seconds() >= 1;
    }));
    recorder->stopRecording();
    ASSERT_TRUE(eventually([&] { return !finished.isEmpty(); }));
    EXPECT_EQ(finished, QStringList("whole"));
    EXPECT_EQ(test::factOf(file, "v", "stream=codec_name,width,height"), "h264,320,240");
    const QByteArray colour = test::outputOf("ffmpeg", {"-v", "error", "-i", file, "-frames:v", "1", "-vf", "scale=1:1",
                                                        "-f", "rawvideo", "-pix_fmt", "rgb24", "-"});
    ASSERT_EQ(colour.size(), 3);
    EXPECT_GT(std::uint8_t(colour[0]), 240);
    EXPECT_LT(std::uint8_t(colour[1]), 20);
    ASSERT_TRUE(layer->picture());
    EXPECT_GT(layer->picture()->pixels[2], 240);
    EXPECT_LT(layer->picture()->pixels[0], 20);
}

} // namespace
} // namespace cantorel
