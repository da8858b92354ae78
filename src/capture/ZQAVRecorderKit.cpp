#include "capture/ZQAVRecorderKit.h"

namespace cantorel {

ZQAVRecorderKit &ZQAVRecorderKit::sharedInstance() {
    static ZQAVRecorderKit kit;
    return kit;
}

ZQAudioRecorder *ZQAVRecorderKit::getAudioRecorder() {
    if (!mAudioRecorder)
        mAudioRecorder = ZQAudioRecorder::init();
    return mAudioRecorder.get();
}

ZQScreenRecorder *ZQAVRecorderKit::getScreenRecorder() {
    if (!mScreenRecorder)
        mScreenRecorder = ZQScreenRecorder::init();
    return mScreenRecorder.get();
}

ZQCameraRecorder *ZQAVRecorderKit::getCameraRecorder() {
    if (!mCameraRecorder)
        mCameraRecorder = ZQCameraRecorder::init();
    return mCameraRecorder.get();
}

QStringList ZQAVRecorderKit::FPSList() {
    return {QStringLiteral("15"), QStringLiteral("20"), QStringLiteral("23"), QStringLiteral("25"),
            QStringLiteral("30"), QStringLiteral("50"), QStringLiteral("60")};
}

void RecorderRelease(ZQAVRecorder *recorder) {
    ZQAVRecorderKit &kit = ZQAVRecorderKit::sharedInstance();
    if (!recorder)
        return;
    if (kit.mScreenRecorder.get() == recorder) {
        kit.mScreenRecorder.release()->deleteLater();
    } else if (kit.mCameraRecorder.get() == recorder) {
        kit.mCameraRecorder->setCameraDevice({}); // as below
        kit.mCameraRecorder.release()->deleteLater();
    } else if (kit.mAudioRecorder.get() == recorder) {
        // The device is given back at once; the object goes later.
        kit.mAudioRecorder->setAudioDevice({});
        kit.mAudioRecorder.release()->deleteLater();
    }
}

} // namespace cantorel
