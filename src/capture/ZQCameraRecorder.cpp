#include "capture/ZQCameraRecorder.h"

#include "log/Log.h"
#include "platform/media/movie/MovieFailures.h"

#include <utility>

namespace cantorel {

using media::CameraQuality;

namespace {

CameraQuality qualityOf(const QString &preset) {
    if (preset == QLatin1String(media::kSessionPresetMedium))
        return CameraQuality::Medium;
    return preset == QLatin1String(media::kSessionPresetLow) ? CameraQuality::Low : CameraQuality::High;
}

} // namespace

std::unique_ptr<ZQCameraRecorder> ZQCameraRecorder::init() {
    std::unique_ptr<ZQCameraRecorder> recorder(new ZQCameraRecorder);
    return recorder->initCaptureSession(nullptr) ? std::move(recorder) : nullptr;
}

std::vector<media::Camera> ZQCameraRecorder::cameraDevices() {
    std::vector<media::Camera> cameras = media::InstalledPictureSources::current().cameras();
    for (const media::Camera &camera : cameras)
        Log(QStringLiteral("camera device name : %1").arg(camera.localizedName));
    return cameras;
}

bool ZQCameraRecorder::initCaptureSession(QString *error) { return ZQAVRecorder::initCaptureSession(error); }

void ZQCameraRecorder::setCameraDevice(const std::optional<media::Camera> &camera) {
    if (mCamera == camera)
        return;
    mCamera = camera;
    changeCamera();
}

void ZQCameraRecorder::setOutputVideoQuality(const QString &preset) {
    if (!mCaptureSession->canSetSessionPreset(preset) || preset == mCaptureSession->sessionPreset())
        return;
    mCaptureSession->beginConfiguration();
    mCaptureSession->setSessionPreset(preset);
    mCaptureSession->commitConfiguration();
    if (!isRecording()) // which goes on as it began
        changeCamera();
}

QString ZQCameraRecorder::outputVideoQuality() const { return mCaptureSession->sessionPreset(); }

void ZQCameraRecorder::changeCamera() {
    mPictures.reset();
    if (const auto preview = mPreview.lock())
        show(*preview);
}

ZQCameraRecorder::Way ZQCameraRecorder::wanted() const {
    return {qualityOf(mCaptureSession->sessionPreset()), outputFrameRate()};
}

foundation::Result<std::unique_ptr<media::PictureSource>> ZQCameraRecorder::view() {
    if (!mCamera)
        return media::failures::cameraMissing(QStringLiteral("no camera was chosen"));
    if (!mPictures) {
        mOpened = wanted();
        auto opened = media::InstalledPictureSources::current().openCamera(mCamera->uniqueID, mOpened.quality);
        if (!opened)
            return opened.failure();
        mPictures = std::make_shared<media::SharedPictures>(std::move(opened).value());
    }
    return mPictures->view();
}

void ZQCameraRecorder::show(VideoPreviewLayer &layer) { layer.show(view(), static_cast<int>(outputFrameRate())); }

std::shared_ptr<VideoPreviewLayer> ZQCameraRecorder::getVideoPreviewLayerWithCameraRect(const QRectF &rect) {
    auto layer = mPreview.lock();
    if (layer) {
        layer->setFrame(rect);
        return layer;
    }
    layer = std::make_shared<VideoPreviewLayer>(rect);
    mPreview = layer;
    show(*layer);
    return layer;
}

bool ZQCameraRecorder::startRecording(const QUrl &url, QString *error) {
    // It runs in one way for all who take its pictures.
    if (mOpened != wanted() && !isRecording())
        changeCamera();
    auto seen = view();
    if (!seen)
        return fail(seen.failure(), error);
    Begin recording;
    recording.url = url;
    recording.source = std::move(seen).value();
    recording.isFromCamera = true;
    if (mAudioDevice)
        recording.devices.push_back(*mAudioDevice);
    return begin(std::move(recording), error);
}

} // namespace cantorel
