#include "editor/models/ZQAudioCutEntity.h"

namespace cantorel {

void ZQAudioCutEntity::AudioCutDelegate_UpdateCutAudioWithStartTime(double startTime, double endTime,
                                                                    const QRectF &cutRect) {
    mStartTime = startTime;
    mEndTime = endTime;
    mCutRect = cutRect;
    foundation::NotificationCenter::defaultCenter().post<const ZQAudioCutEntity *>(
        kNotificationCutEntityRectDidChangeRegister, this);
}

void ZQAudioCutEntity::setFocusOn(bool isFocusOn) {
    mIsFocusOn = isFocusOn;
    mRectColor = isFocusOn ? ZQAudioTools::focusOnRectColor() : ZQAudioTools::existedRectColor();
}

} // namespace cantorel
