#pragma once

#include "platform/foundation/Sentence.h"

#include <QString>

#include <optional>
#include <utility>
#include <variant>

namespace cantorel::foundation {

// Why an operation failed: one sentence for a person (what was wrong and what to do), one line for the log.
struct Failure {
    Sentence sentence;
    QString detail;
};

// A value or the reason why there is none. Ignoring one needs a (void) and a reason beside it.
template <class T> class [[nodiscard]] Result {
public:
    Result(T value) : mState(std::move(value)) {}
    Result(Failure failure) : mState(std::move(failure)) {}

    bool ok() const { return mState.index() == 0; }
    explicit operator bool() const { return ok(); }

    // Only when ok().
    T &value() & { return std::get<0>(mState); }
    const T &value() const & { return std::get<0>(mState); }
    T &&value() && { return std::get<0>(std::move(mState)); }

    // Only when not ok().
    const Failure &failure() const { return std::get<1>(mState); }

private:
    std::variant<T, Failure> mState;
};

// The same for an operation that yields nothing.
template <> class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Failure failure) : mFailure(std::move(failure)) {}

    bool ok() const { return !mFailure; }
    explicit operator bool() const { return ok(); }
    const Failure &failure() const { return *mFailure; }

private:
    std::optional<Failure> mFailure;
};

} // namespace cantorel::foundation
