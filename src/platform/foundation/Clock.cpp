#include "platform/foundation/Clock.h"

#include <thread>

namespace cantorel::foundation {

Clock::Duration WallClock::now() const { return std::chrono::steady_clock::now().time_since_epoch(); }

void WallClock::sleepFor(Duration duration) { std::this_thread::sleep_for(duration); }

} // namespace cantorel::foundation
