#pragma once

#include <mutex>
#include <utility>

namespace cantorel::foundation {

// Data that cannot be reached without its lock. Never used on a real-time thread.
template <class T> class Guarded {
public:
    Guarded() = default;
    explicit Guarded(T value) : mValue(std::move(value)) {}

    // Runs action with the value locked and answers what it answers. The action must not call out.
    template <class Action> auto with(Action &&action) {
        const std::lock_guard lock(mMutex);
        return std::forward<Action>(action)(mValue);
    }
    template <class Action> auto with(Action &&action) const {
        const std::lock_guard lock(mMutex);
        return std::forward<Action>(action)(mValue);
    }

private:
    mutable std::mutex mMutex;
    T mValue{};
};

} // namespace cantorel::foundation
