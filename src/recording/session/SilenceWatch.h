#pragma once

#include "platform/foundation/Sentence.h"
#include "settings/RecordingSource.h"

#include <QString>

#include <chrono>
#include <optional>

namespace cantorel {

// Notices that a recording hears nothing but digital silence: three seconds after it should have begun, and once. Fed
// by the session; main thread.
class SilenceWatch {
public:
    using Duration = std::chrono::nanoseconds;

    void begin(Duration now);
    // After a pause: what is left to wait for begins again, a sound that was heard stays heard.
    void resumed(Duration now);
    // A level as the recorder tells it; not a number when there are no channels. True for the first sound after
    // isDue().
    bool level(float level);
    // True once, when the time is over and no sound has been heard.
    bool isDue(Duration now);

private:
    std::optional<Duration> mBegan;
    bool mWasDue = false;
};

// One sentence on why the device may be silent.
foundation::Sentence likelyCauseOfSilence(RecordingSource source, const QString &device);

} // namespace cantorel
