#pragma once

#include "platform/desktop/ScriptHost.h"
#include "platform/foundation/Clock.h"

#include <QStringList>

namespace cantorel::desktop {

// Runs scripts with /bin/sh. A prelude of ours teaches the shell the words that scripts use ("tell"), and the
// product's helper folder, with an "open", stands first in PATH. Any worker thread.
class ShellScriptHost : public ScriptHost {
public:
    // limit: after which a script that still runs is ended, with all that it started.
    explicit ShellScriptHost(foundation::Clock::Duration limit = std::chrono::minutes(5)) : mLimit(limit) {}

    foundation::Result<void> compile(const QString &source) override;
    foundation::Result<QString> execute(const QString &source) override;

    // What a shell for a fixed command finds in its environment, as ChildProcess::Command takes it.
    static QStringList environment();

private:
    foundation::Result<QString> shell(const QStringList &arguments) const;

    const foundation::Clock::Duration mLimit;
};

} // namespace cantorel::desktop
