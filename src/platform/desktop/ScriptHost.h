#pragma once

#include "platform/foundation/Result.h"

namespace cantorel::desktop {

// Compiles and executes scripts. Calls block until the script ends, so they belong on a worker thread.
class ScriptHost {
public:
    virtual ~ScriptHost() = default;

    // Whether the text is a script at all; the failure's detail is what the compiler said.
    virtual foundation::Result<void> compile(const QString &source) = 0;

    // Runs the script and answers what it printed; the failure's sentence is the last line that it printed, the detail
    // all that it printed and how it ended.
    virtual foundation::Result<QString> execute(const QString &source) = 0;
};

} // namespace cantorel::desktop
