#pragma once

#include "capture/MovieRecorder.h"
#include "capture/VideoPreviewLayer.h"
#include "platform/media/movie/PictureSources.h"
#include "platform/media/movie/SharedPictures.h"

#include <QRectF>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace cantorel {

// Records a camera, and an audio device beside it, to an MP4. Handed out by ZQAVRecorderKit; main thread.
class ZQCameraRecorder : public MovieRecorder {
public:
    static std::unique_ptr<ZQCameraRecorder> init();

    // The cameras that are there now; each is logged.
    static std::vector<media::Camera> cameraDevices();

    // Nothing for the camera that it is already. A recording under way keeps its camera; a preview changes at once.
    void setCameraDevice(const std::optional<media::Camera> &camera);
    std::optional<media::Camera> currentCameraDevice() const { return mCamera; }

    // Without a device the movie has no sound.
    void setAudioDevice(const std::optional<media::CaptureDevice> &device) { mAudioDevice = device; }
    std::optional<media::CaptureDevice> currentAudioDevice() const { return mAudioDevice; }

    // A preset of the session: how large the pictures are. Others are passed over.
    void setOutputVideoQuality(const QString &preset);
    QString outputVideoQuality() const override;

    // What the camera sees. The camera runs while somebody holds the layer; whoever asks meanwhile gets the same one.
    std::shared_ptr<VideoPreviewLayer> getVideoPreviewLayerWithCameraRect(const QRectF &rect);

    bool initCaptureSession(QString *error) override;

    // A file of that name is replaced once the movie is whole. False with failure(). A camera that is unplugged ends
    // the movie; what was recorded is kept.
    bool startRecording(const QUrl &url, QString *error) override;

private:
    ZQCameraRecorder() = default;

    // How the camera is run.
    struct Way {
        media::CameraQuality quality = media::CameraQuality::High;
        std::uint32_t picturesPerSecond = 0;
        bool operator==(const Way &) const = default;
    };
    Way wanted() const;

    void changeCamera();
    // The pictures of the camera, for one who takes them.
    foundation::Result<std::unique_ptr<media::PictureSource>> view();
    void show(VideoPreviewLayer &layer);

    std::optional<media::Camera> mCamera;
    std::optional<media::CaptureDevice> mAudioDevice;
    std::shared_ptr<media::SharedPictures> mPictures; // of the camera; null until it is needed
    std::weak_ptr<VideoPreviewLayer> mPreview;
    Way mOpened; // how the pictures were wanted when they were opened
};

} // namespace cantorel
