#include "recording/session/MovieSession.h"

// What a movie does when the machine sleeps: the same as a recording.

namespace cantorel {

void MovieSession::machineWillSleep(bool shutsDown) {
    if (mState == State::Paused && !shutsDown)
        mSleep.release();
    else if (isOpen())
        close(State::FallingAsleep);
}

void MovieSession::machineDidWake() {
    if (mState == State::Paused) {
        mSleep.hold();
    } else if (mState == State::Asleep && !mSleep.isAsleep()) {
        mState = State::Idle;
        if (const auto started = start(); !started)
            end({started.failure().sentence, {}});
    }
}

} // namespace cantorel
