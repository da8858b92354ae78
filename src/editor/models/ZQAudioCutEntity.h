#pragma once

#include "editor/models/ZQAudioTools.h"
#include "platform/foundation/NotificationCenter.h"

#include <QRectF>

namespace cantorel {

// One selection: a stretch of the sound that is kept. Owned by the list; main thread.
class ZQAudioCutEntity {
public:
    double startTime() const { return mStartTime; } // in seconds
    double endTime() const { return mEndTime; }
    // In the coordinates of the wave.
    const QRectF &cutRect() const { return mCutRect; }
    QPointF leftPoint() const { return {mCutRect.x(), 0}; }
    QPointF rightPoint() const { return {mCutRect.x() + mCutRect.width(), 0}; }
    // Where a press takes hold of it: as far to each side as a handle is wide.
    QRectF trackRect() const { return mCutRect.adjusted(-kGrip, 0, kGrip, 0); }

    // Sets all three and tells of it.
    void AudioCutDelegate_UpdateCutAudioWithStartTime(double startTime, double endTime, const QRectF &cutRect);
    // The wave has another size: the times stay, and nobody is told.
    void setCutRect(const QRectF &cutRect) { mCutRect = cutRect; }

    void setFocusOn(bool isFocusOn);
    bool isFocusOn() const { return mIsFocusOn; }
    const WaveColour &rectColor() const { return mRectColor; }

    static constexpr double kGrip = 5;

private:
    double mStartTime = 0, mEndTime = 0;
    QRectF mCutRect;
    WaveColour mRectColor = ZQAudioTools::existedRectColor();
    bool mIsFocusOn = false;
};

// Posted with the selection whose times and rectangle have been set.
inline constexpr foundation::NotificationName<const ZQAudioCutEntity *> kNotificationCutEntityRectDidChangeRegister{
    "notificationCutEntityRectDidChangeRegister"};

} // namespace cantorel
