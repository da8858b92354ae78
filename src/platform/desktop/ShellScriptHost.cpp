#include "platform/desktop/ShellScriptHost.h"

#include "platform/foundation/ChildProcess.h"
#include "platform/foundation/SearchPaths.h"

namespace cantorel::desktop {

QStringList ShellScriptHost::environment() {
    return {QStringLiteral("PATH=%1:%2")
                .arg(foundation::resourcePath(QStringLiteral("helpers")), QString::fromLocal8Bit(qgetenv("PATH")))};
}

foundation::Result<QString> ShellScriptHost::shell(const QStringList &arguments) const {
    const auto finished =
        foundation::ChildProcess::run({QStringLiteral("/bin/sh"), arguments, {}, environment()}, mLimit);
    if (!finished)
        return finished.failure();
    const auto &ending = finished.value().ending;
    const QString output = QString::fromUtf8(finished.value().output);
    if (ending.succeeded())
        return output;
    const QString how = ending.timedOut      ? QStringLiteral("it took too long")
                        : ending.signal != 0 ? QStringLiteral("signal %1").arg(ending.signal)
                                             : QStringLiteral("status %1").arg(ending.exitStatus);
    // A script that knows why it failed says so in its last line.
    const QString said = output.trimmed().section(QLatin1Char('\n'), -1);
    return foundation::Failure{said.isEmpty() ? QStringLiteral("A script failed: %1.").arg(how) : said,
                               QStringLiteral("%1(%2)").arg(output, how)};
}

foundation::Result<void> ShellScriptHost::compile(const QString &source) {
    if (auto checked = shell({QStringLiteral("-n"), QStringLiteral("-c"), source}); !checked)
        return checked.failure();
    return {};
}

foundation::Result<QString> ShellScriptHost::execute(const QString &source) {
    // The prelude's path is the script's first argument, so that no name in it can be taken for a command.
    return shell({QStringLiteral("-c"), QStringLiteral(". \"$1\" && shift\n") + source, QStringLiteral("sh"),
                  foundation::resourcePath(QStringLiteral("script-prelude.sh"))});
}

} // namespace cantorel::desktop
