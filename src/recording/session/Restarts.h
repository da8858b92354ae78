#pragma once

#include "platform/foundation/Clock.h"

#include <QString>

namespace cantorel {

// Decides when a recording that an error has ended is started again: at most once a second, until three in a row have
// brought less than a second. A value of RecordingSession.
class Restarts {
public:
    using Duration = foundation::Clock::Duration;

    void began(Duration now) { mLastStart = now; }
    // A file is whole, or nothing is recorded any more.
    void reset() { *this = Restarts(); }
    void fileIsWhole() { mFailuresInARow = 0; }
    // file: what the error has left, seconds of it can be played. False: it is given up.
    bool mayFollow(double seconds, const QString &file);
    // Until the next start.
    Duration wait(Duration now) const;
    static Duration interval();
    // The file that the last error left; empty if it left none.
    QString kept() const { return mKept; }

private:
    int mFailuresInARow = 0;
    Duration mLastStart{};
    QString mKept;
};

} // namespace cantorel
