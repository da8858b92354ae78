#pragma once

namespace cantorel {

// Who has paused a recording.
enum class PausedBy { Nobody, Person, Silence };

// Decides when silence pauses, resumes or splits a recording. Fed by the session with levels and the time that passes;
// main thread.
class SilenceRules {
public:
    struct Settings {
        bool skips = false;
        bool splits = false;          // only together with skipping
        double splitMilliseconds = 0; // of silence in all
    };
    enum class Action { None, Pause, Resume };

    // The first frames of a file have come.
    void begin() { hasSound = true; }
    // A level as the recorder tells it.
    void level(float level);
    bool hearsSound() const { return hasSound; }

    // Whether to pause or resume; asked five times a second.
    Action skip(PausedBy paused, const Settings &settings) const;
    // Counts 0.1 s of the recording; true when it shall be split. showsTime: the recording shows a whole second at
    // least. canSplit: a next file could begin now.
    bool count(PausedBy paused, const Settings &settings, bool showsTime, bool canSplit);

private:
    void plusSilenceDuration(const Settings &settings, bool showsTime);

    bool hasSound = true;
    double silenceDuration = 0; // milliseconds
};

} // namespace cantorel
