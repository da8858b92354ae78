#pragma once

#include "recording/session/FileUnderWay.h"
#include "recording/session/RecordingSessionView.h"

namespace cantorel {

// What is shown of a recording while it runs, in the session's view and in the list. A value of RecordingSession.
class RunningDisplay {
public:
    const RecordingDisplay &shown() const { return mShown; }
    // Whole seconds that stand in the display.
    bool showsTime() const;

    void update(const FileUnderWay &file, double seconds, qint64 bytes);
    void blink(const FileUnderWay &file, bool waitsForSound);
    // Nothing is recorded.
    void clear();
    // The next of the seven pictures of a note, or none.
    int nextNote(bool isHeard);

private:
    RecordingDisplay mShown;
    int mNote = 0;
};

} // namespace cantorel
