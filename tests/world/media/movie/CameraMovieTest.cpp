// A camera of PipeWire, recorded with a microphone: the movie as other programs read it.

#include "capture/ZQCameraRecorder.h"
#include "platform/hal/HardwareSystem.h"
#include "platform/hal/pipewire/PipeWireBackend.h"
#include "platform/media/movie/camera/CameraSources.h"
#include "tests/support/FakeCamera.h"
#include "tests/support/LoopbackNames.h"
#include "tests/support/MovieFacts.h"
#include "tests/support/PrivateWorld.h"
#include "tests/support/VideoNode.h"

#include <QDir>

#include <gtest/gtest.h>

namespace cantorel {
namespace {

using test::eventually;
using test::VideoNode;

class CameraMovieTest : public testing::Test, public QObject, public ZQAVRecorderDelegate {
protected:
    CameraMovieTest() {
        noDevices.cameras.clear();
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
    test::FakeVideoDevices noDevices;
    hal::HardwareSystem system{hal::PipeWireBackend::connect(std::chrono::seconds(10), test::kLoopbackNames).value(),
                               QDir::homePath() + "/state"};
    media::InstalledPictureSources sources{std::make_unique<media::CameraSources>(noDevices)};
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
    const test::MovieFacts facts = test::movieFacts(file);
    EXPECT_EQ(facts.pictures, "h264 640x360");
    EXPECT_EQ(facts.sound, "aac 48000");
    EXPECT_NEAR(facts.seconds, recorder->recordingCounts().seconds(), 0.1);
    const std::vector<int> numbers = test::numbersIn(file, 640);
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
    const test::MovieFacts facts = test::movieFacts(file);
    EXPECT_EQ(facts.pictures, "h264 640x360");
    EXPECT_GE(facts.seconds, 1.4);
}

} // namespace
} // namespace cantorel
