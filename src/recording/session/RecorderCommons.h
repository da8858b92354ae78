#pragma once

#include "platform/foundation/Clock.h"
#include "recording/session/RecordingJournal.h"
#include "recording/session/SleepGuard.h"

namespace cantorel {

// What all recorders of one program share. Outlives them; main thread.
struct RecorderCommons {
    // stateFolder: holds the journal. delay: null where the desktop has none. Clock and delay outlive this.
    RecorderCommons(const QString &stateFolder, foundation::Clock &time, desktop::SleepDelay *delay)
        : clock(time), journal(stateFolder), sleep(delay) {}

    foundation::Clock &clock;
    RecordingJournal journal;
    SleepGuard sleep;
};

} // namespace cantorel
