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

QStringList ZQAVRecorderKit::FPSList() {
    return {QStringLiteral("15"), QStringLiteral("20"), QStringLiteral("23"), QStringLiteral("25"),
            QStringLiteral("30"), QStringLiteral("50"), QStringLiteral("60")};
}

void RecorderRelease(ZQAVRecorder *recorder) {
    auto &slot = ZQAVRecorderKit::sharedInstance().mAudioRecorder;
    if (!recorder || slot.get() != recorder)
        return;
    // The device is given back at once; the object goes later.
    slot->setAudioDevice({});
    slot.release()->deleteLater();
}

} // namespace cantorel
