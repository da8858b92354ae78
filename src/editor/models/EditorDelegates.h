#pragma once

#include "editor/models/CutList.h"
#include "editor/models/ZQAudioTools.h"

#include <QPointF>
#include <QSizeF>

namespace cantorel {

// What the editor's views ask and tell their owner, who holds the selections and plays. All outlive the views.

class AudioCutRequestDelegate {
public:
    virtual ~AudioCutRequestDelegate() = default;
    // A press; the selection that it has taken gets the focus.
    virtual CutHit AudioCutRequestDelegate_MouseDown(QPointF point, ZQAudioCutEntity *&selectedCutEntity) = 0;
    virtual CutHit AudioCutRequestDelegate_MouseMove(QPointF point) = 0;
    virtual ZQAudioTools::Entities AudioCutRequestDelegate_GetExistCutEntitysRect() const = 0;
    // An edge is led to x; and then let go of.
    virtual void dragEdge(ZQAudioCutEntity &entity, CutHit edge, double x) = 0;
    virtual void dragDidEnd() = 0;
    virtual void waveSizeDidChange(QSizeF size) = 0;
};

class AudioPlayingPointDelegate {
public:
    virtual ~AudioPlayingPointDelegate() = default;
    // The head is to go to the time of that point.
    virtual void AudioPlayingPointDelegate_updateThePlayingPoint(QPointF point) = 0;
    virtual const ZQAudioCutEntity *AudioPlayingPointDelegate_GetFocusOnCutEntity() const = 0;
};

// Hears of times that were typed; the ids are fixed.
inline constexpr const char *kStartTimeControl = "startTime", *kEndTimeControl = "endTime";
class AudioCutInfoDelegate {
public:
    virtual ~AudioCutInfoDelegate() = default;
    virtual void AudioCutInfoDelegate_UpdateSelectedCutEntityStartTime(double startTime, double endTime,
                                                                       const char *timeControlID) = 0;
};

} // namespace cantorel
