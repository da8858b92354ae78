#pragma once

#include "platform/foundation/Result.h"
#include "recording/session/FileUnderWay.h"
#include "recording/session/SessionPhase.h"

namespace cantorel {

inline constexpr foundation::SentenceKey kAnotherRecorder("AnotherRecorder");
inline constexpr foundation::SentenceKey kNoSystemSound("NoSystemSound");

class RecordingJournal;
class RecordingSessionView;

// Why nothing can be recorded to the folder, which is made where it is missing; nothing if it can.
std::optional<foundation::Failure> recordingFolderTrouble(const QString &folder);
// The same for the devices of a source, which are made ready; for both, they are joined.
std::optional<foundation::Failure> recordingDeviceTrouble(RecordingSource source);

// What must hold before a recording begins: this process is the recorder, the output folder has room, the source's
// devices are there, and the file has a name. Owned by RecordingSession; main thread.
class StartConditions {
public:
    // Both outlive it.
    StartConditions(RecordingJournal &journal, RecordingSessionView &view) : mJournal(journal), mView(view) {}

    // Fills in the source and returns a free path for the file. While the person is asked for a name, phase is Naming;
    // if it has another value afterwards, this start is given up. The failure's sentence is empty if the person has
    // changed their mind.
    foundation::Result<QString> meet(FileUnderWay &file, SessionPhase &phase);

    // The last failure was for a device, which may come back.
    bool lackedDevice() const { return mLackedDevice; }

private:
    foundation::Result<void> check(RecordingSource source);

    RecordingJournal &mJournal;
    RecordingSessionView &mView;
    bool mLackedDevice = false;
};

} // namespace cantorel
