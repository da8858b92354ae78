#include "platform/foundation/Clock.h"

#include <QTimer>

#include <thread>

namespace cantorel::foundation {

namespace {

class EventLoopTimer : public Timer {
public:
    EventLoopTimer(Clock::Duration interval, bool repeats, std::function<void()> action) {
        mTimer.setTimerType(Qt::PreciseTimer);
        mTimer.setSingleShot(!repeats);
        QObject::connect(&mTimer, &QTimer::timeout, [action = std::move(action)] {
            const std::function<void()> kept = action; // The action may end this timer.
            kept();
        });
        mTimer.start(std::chrono::ceil<std::chrono::milliseconds>(interval));
    }

private:
    QTimer mTimer;
};

} // namespace

std::unique_ptr<Timer> Clock::timer(Duration interval, bool repeats, std::function<void()> action) {
    return std::make_unique<EventLoopTimer>(interval, repeats, std::move(action));
}

Clock::Duration WallClock::now() const { return std::chrono::steady_clock::now().time_since_epoch(); }

void WallClock::sleepFor(Duration duration) { std::this_thread::sleep_for(duration); }

} // namespace cantorel::foundation
