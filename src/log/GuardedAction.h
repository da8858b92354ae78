#pragma once

#include "log/Log.h"

#include <utility>

namespace cantorel {

// Runs a user action, timer tick or background task to its end or to its first exception, which is logged under the
// action's name and goes no further. Answers whether it reached its end.
template <class Action> bool guarded(const char *name, Action &&action) noexcept {
    try {
        std::forward<Action>(action)();
        return true;
    } catch (const std::exception &exception) {
        LogException(exception);
    } catch (...) {
        LogException(QString::fromUtf8(name), QStringLiteral("unknown exception"));
    }
    return false;
}

} // namespace cantorel
