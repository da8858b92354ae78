#pragma once

#include "platform/media/RecordingCounts.h"
#include "recording/library/RecordedAudioInfo.h"
#include "settings/RecordingSource.h"

#include <QString>

#include <optional>
#include <utility>

namespace cantorel {

// The scheduled task that a recording is made for.
struct ExecutedTask {
    QString name;
    bool repeats = false;
    int loopedCount = 0;
    double seconds = 0; // how long it records
};

// The file being written, from its start until it is settled: what it records, what it has lost, and its task and list
// item. A value of RecordingSession.
struct FileUnderWay {
    QString path;   // empty before the first frames
    QString device; // the one that is recorded
    RecordingSource source = RecordingSource::SystemSound;
    RecordedItemPointer item; // from the first frames on, while it is listed
    std::optional<ExecutedTask> task;
    double taskSecondsBefore = 0; // in the task's files before this one

    media::RecordingCounts counted; // at the last count
    qint64 lostFrames = 0;          // dropped, or filled with silence though the device was there
    bool fillsAbsence = false;      // the next filled silence stands for the device's absence
    bool deviceIsAway = false;

    // Frames lost since the last count.
    qint64 countLost(const media::RecordingCounts &counts) {
        const media::RecordingCounts before = std::exchange(counted, counts);
        qint64 lost = counts.droppedFrames - before.droppedFrames;
        if (const qint64 silence = counts.filledFrames - before.filledFrames; silence > 0)
            lost += std::exchange(fillsAbsence, false) ? 0 : silence;
        lostFrames += lost;
        return lost;
    }
};

} // namespace cantorel
