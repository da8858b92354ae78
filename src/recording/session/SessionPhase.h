#pragma once

namespace cantorel {

// Where a recording session is.
enum class SessionPhase {
    Idle,
    Naming,           // the person is asked for a name
    Starting,         // until the first frames
    Writing,          // paused or not
    Refused,          // deliberately shown as a recording though its start has failed, until it is stopped
    Closing,          // the file is being finished
    Following,        // it is, and what follows begins in a moment
    WaitingToRestart, // after an error, or for a device
    Asleep,           // goes on when the machine is awake
};

constexpr bool isShownAsRecording(SessionPhase phase) {
    return phase == SessionPhase::Starting || phase == SessionPhase::Writing || phase == SessionPhase::Refused
           || phase == SessionPhase::WaitingToRestart;
}

constexpr bool hasOpenFile(SessionPhase phase) {
    return phase == SessionPhase::Starting || phase == SessionPhase::Writing;
}

// What the recorder is doing, as a person sees it at a glance.
enum class RecorderState { Idle, Preparing, Recording, Paused, WaitingForSound, DeviceLost, Finishing };

// What follows the file that is being finished.
enum class AfterFile { Nothing, SplitBySilence, Split, Start, AfterSleep };

} // namespace cantorel
