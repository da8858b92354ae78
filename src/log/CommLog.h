#pragma once

#include <QString>

namespace cantorel {

// The logger of the utility framework: one finished line each, marked as information, warning or error. Lines go where
// those of the application's log go. Any thread.
class CommLog {
public:
    CommLog() = delete;

    static void I(const QString &text); // information
    static void W(const QString &text); // warning
    static void E(const QString &text); // error
};

} // namespace cantorel
