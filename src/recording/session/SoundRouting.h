#pragma once

#include "platform/foundation/NotificationCenter.h"

#include <functional>

namespace cantorel {

// Lends system sound to the virtual device while it is recorded. Main thread.
class SoundRouting {
public:
    // heard: told when the sound cannot be heard any more since there is no output, and when it can again.
    void begin(std::function<void(bool isHeard)> heard);
    void end();

private:
    foundation::NotificationCenter::Subscription mHearing;
};

} // namespace cantorel
