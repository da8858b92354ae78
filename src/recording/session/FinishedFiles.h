#pragma once

#include "recording/library/RecordedConversions.h"
#include "recording/session/FileUnderWay.h"
#include "recording/session/RecordingSessionView.h"

#include <functional>

namespace cantorel {

class RecordedList;
class RecordingJournal;

// What a file has become by its end.
struct EndedFile {
    enum class Became {
        Whole,       // and is settled
        Empty,       // not a frame came
        Lost,        // removed meanwhile
        Interrupted, // by an error
    };
    Became became = Became::Whole;
    bool isElsewhere = false;   // its folder was removed meanwhile
    double playableSeconds = 0; // of what an error has left
    RecordingTrouble trouble;   // of one that is not whole
};

// What becomes of a file that has ended: it is completed and converted, filtered, kept after an error, or thrown away.
// Owned by RecordingSession; main thread.
class FinishedFiles {
public:
    // All outlive it. settled: called when a conversion has ended, whatever became of it.
    FinishedFiles(RecordingSessionView &view, RecordedList &list, RecordingJournal &journal,
                  std::function<void()> settled);

    int pendingConversions() const { return mConversions.pending(); }

    // isGone: the recording was stopped since its file was removed.
    EndedFile take(FileUnderWay &file, const FinishedRecording &recording,
                   const std::optional<foundation::Failure> &failure, bool isGone);

private:
    EndedFile drop(const FileUnderWay &file, const FinishedRecording &recording,
                   const std::optional<foundation::Failure> &failure, bool isRemoved);
    double keep(const FileUnderWay &file, const QString &path);
    void moved(FileUnderWay &file, const QString &path);
    bool filter(const FileUnderWay &file, const FinishedRecording &recording);
    void complete(RecordedAudioInfo &item, const FinishedRecording &recording);
    void convert(RecordedAudioInfo &item, const FinishedRecording &recording);

    RecordingSessionView &mView;
    RecordedList &mList;
    RecordingJournal &mJournal;
    const std::function<void()> mSettled;
    RecordedConversions mConversions;
};

} // namespace cantorel
