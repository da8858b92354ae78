#include "capture/ZQCameraRecorder.h"

#include "log/Log.h"
#include "platform/media/movie/CameraFailures.h"
#include "tests/support/HandCameras.h"
#include "tests/support/PrivateWorld.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

namespace cantorel {
namespace {

using test::eventually;

class ZQCameraRecorderTest : public testing::Test, public QObject, public ZQAVRecorderDelegate {
protected:
    ZQCameraRecorderTest() {
        auto made = std::make_unique<test::HandCameras>();
        cameras = made.get();
        sources.emplace(std::move(made));
        recorder->delegate = this;
        recorder->setCameraDevice(cameras->all.front());
    }

    void captureDidStartRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &) override { ++begun; }
    void captureDidFinishRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &url, const media::RecordingCounts &counts,
                                                const std::optional<foundation::Failure> &failure) override {
        finished << url.toLocalFile() + ' '
                        + (failure ? QString::fromLatin1(failure->sentence.key().data(),
                                                         qsizetype(failure->sentence.key().size()))
                                   : QString("whole"));
        bytes = counts.bytes;
    }

    // Shows pictures until that is so.
    bool showUntil(const std::function<bool()> &condition) {
        return eventually([&] {
            cameras->show(20, 200, 90);
            return condition();
        });
    }

    test::HandCameras *cameras = nullptr;
    std::optional<media::InstalledPictureSources> sources;
    std::unique_ptr<ZQCameraRecorder> recorder = ZQCameraRecorder::init();
    const QString file = QDir::homePath() + "/camera.mp4";
    int begun = 0;
    QStringList finished;
    std::int64_t bytes = 0;
};

TEST_F(ZQCameraRecorderTest, OneCameraIsSeenAndRecorded) {
    const QRectF frame(0, 0, 80, 80);
    auto layer = recorder->getVideoPreviewLayerWithCameraRect(frame);
    EXPECT_EQ(recorder->getVideoPreviewLayerWithCameraRect(frame), layer);
    ASSERT_TRUE(showUntil([&] { return layer->picture() != nullptr; }));
    const auto seen = layer->picture();
    EXPECT_EQ(seen->size, (media::PictureSize{107, 80})) << "no larger than what fills the frame";
    for (const std::size_t pixel : {0, 106, 79 * seen->stride / 4 + 106}) {
        EXPECT_NEAR(seen->pixels[pixel * 4], 20, 6);
        EXPECT_NEAR(seen->pixels[pixel * 4 + 1], 200, 6);
        EXPECT_NEAR(seen->pixels[pixel * 4 + 2], 90, 6);
    }
    cameras->show(1, 2, 3);
    const auto undrawn = layer->picture();
    cameras->show(4, 5, 6);
    EXPECT_EQ(layer->picture(), undrawn) << "what nobody has drawn yet is not made anew";
    ASSERT_TRUE(recorder->startRecording(QUrl::fromLocalFile(file), nullptr));
    ASSERT_TRUE(showUntil([&] { return begun == 1 && recorder->recordingCounts().bytes > 0; }));
    EXPECT_EQ(cameras->asked["front"].starts, 1) << "a camera can be opened once";
    EXPECT_NE(layer->picture(), seen) << "the preview goes on";
    recorder->stopRecording();
    ASSERT_TRUE(eventually([&] { return !finished.isEmpty(); }));
    EXPECT_EQ(finished, QStringList(file + " whole"));
    EXPECT_EQ(QFile(file).size(), bytes);
    EXPECT_EQ(cameras->asked["front"].running, 1);
    layer.reset();
    EXPECT_EQ(cameras->asked["front"].running, 0) << "nobody looks, nobody records";
}

TEST_F(ZQCameraRecorderTest, AnUnpluggedCameraEndsTheMovieWhichIsKept) {
    const auto layer = recorder->getVideoPreviewLayerWithCameraRect({0, 0, 80, 80});
    ASSERT_TRUE(recorder->startRecording(QUrl::fromLocalFile(file), nullptr));
    ASSERT_TRUE(showUntil([&] { return begun == 1 && layer->picture(); }));
    cameras->unplug(media::failures::cameraGone("Front camera", "unplugged"));
    ASSERT_TRUE(eventually([&] { return !finished.isEmpty(); }));
    EXPECT_EQ(finished, QStringList(file + " CameraGone"));
    EXPECT_GT(QFile(file).size(), 1000);
    EXPECT_FALSE(recorder->isRecording());
    EXPECT_FALSE(layer->picture());
    ASSERT_TRUE(layer->failure());
    EXPECT_EQ(layer->failure()->sentence.key(), "CameraGone");
    const QString second = QDir::homePath() + "/second.mp4";
    ASSERT_TRUE(recorder->startRecording(QUrl::fromLocalFile(second), nullptr)) << "it was plugged in again";
    ASSERT_TRUE(showUntil([&] { return begun == 2; }));
    recorder->stopRecording();
    ASSERT_TRUE(eventually([&] { return finished.size() == 2; }));
    EXPECT_EQ(finished.last(), second + " whole");
}

TEST_F(ZQCameraRecorderTest, ACameraThatCannotBeUsedLeavesWhatIsThere) {
    QFile before(file);
    ASSERT_TRUE(before.open(QIODevice::WriteOnly) && before.write("mine") == 4);
    before.close();
    const auto refused = [&](const std::optional<media::Camera> &camera) {
        recorder->setCameraDevice(camera);
        QString error;
        EXPECT_FALSE(recorder->startRecording(QUrl::fromLocalFile(file), &error));
        EXPECT_FALSE(error.isEmpty());
        EXPECT_FALSE(recorder->isRecording());
        return std::string(recorder->failure()->sentence.key());
    };
    EXPECT_EQ(refused({}), "CameraMissing");
    EXPECT_EQ(refused(media::Camera{"none", "None"}), "CameraMissing");
    const auto layer = recorder->getVideoPreviewLayerWithCameraRect({0, 0, 80, 80});
    cameras->refusal = media::failures::cameraBusy("Front camera", "busy");
    EXPECT_EQ(refused(cameras->all.front()), "CameraBusy");
    EXPECT_EQ(layer->failure()->sentence.key(), "CameraBusy");
    ASSERT_TRUE(before.open(QIODevice::ReadOnly));
    EXPECT_EQ(before.readAll(), "mine");
    EXPECT_EQ(cameras->asked["front"].running, 0);
}

TEST_F(ZQCameraRecorderTest, WhatIsChosenReachesTheCamera) {
    const auto layer = recorder->getVideoPreviewLayerWithCameraRect({0, 0, 80, 80});
    recorder->setOutputVideoQuality("AVCaptureSessionPresetLow");
    EXPECT_EQ(cameras->asked["front"].quality, media::CameraQuality::Low);
    recorder->setOutputVideoQuality("AVCaptureSessionPresetOfAnotherKind");
    EXPECT_EQ(recorder->outputVideoQuality(), "AVCaptureSessionPresetLow");
    recorder->setCameraDevice(cameras->all.back());
    EXPECT_EQ(cameras->asked["front"].running, 0) << "a preview changes at once";
    EXPECT_EQ(cameras->asked["back"].running, 1);
    recorder->setOutputFrameRate(15);
    ASSERT_TRUE(recorder->startRecording(QUrl::fromLocalFile(file), nullptr));
    EXPECT_EQ(cameras->asked["back"].picturesPerSecond, 15);
    recorder->setOutputVideoQuality("AVCaptureSessionPresetMedium");
    EXPECT_EQ(cameras->asked["back"].starts, 2) << "a recording goes on as it began";
    recorder->stopRecording();
    ASSERT_TRUE(recorder->startRecording(QUrl::fromLocalFile(file), nullptr));
    EXPECT_EQ(cameras->asked["back"].quality, media::CameraQuality::Medium);
    recorder->setCameraDevice(cameras->all.front());
    EXPECT_EQ(cameras->asked["back"].running, 1) << "a recording keeps its camera";
    EXPECT_EQ(cameras->asked["front"].running, 1) << "and the preview shows the new one";
}

TEST_F(ZQCameraRecorderTest, EachCameraIsLogged) {
    LogFileCheck("cameras.log");
    EXPECT_EQ(ZQCameraRecorder::cameraDevices(), cameras->all);
    QFile log(GetLogFilePath());
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    EXPECT_TRUE(log.readAll().contains("camera device name : Back camera"));
}

TEST(VideoPreviewLayer, ThePictureFillsTheFrameFromItsMiddle) {
    const struct {
        QSizeF picture, frame;
        QRectF part;
    } cases[] = {{{640, 480}, {320, 240}, {0, 0, 640, 480}},
                 {{640, 480}, {100, 100}, {80, 0, 480, 480}},
                 {{640, 480}, {200, 50}, {0, 160, 640, 160}},
                 {{100, 100}, {1600, 900}, {0, 21.875, 100, 56.25}},
                 {{640, 480}, {0, 0}, {0, 0, 640, 480}}};
    for (const auto &c : cases)
        EXPECT_EQ(VideoPreviewLayer::aspectFill(c.picture, c.frame), c.part) << c.frame.width();
}

} // namespace
} // namespace cantorel
