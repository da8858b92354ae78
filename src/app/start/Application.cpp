#include "app/start/Application.h"

#include "platform/desktop/ShellScriptHost.h"

#include <QCoreApplication>
#include <QProcess>

#include <csignal>

namespace cantorel {

namespace {

constexpr foundation::SentenceKey kNotRelaunched("NotRelaunched");

} // namespace

void Application::terminate() {
    if (mIsTerminating || !delegate->applicationShouldTerminate())
        return;
    mIsTerminating = true;
    if (willEnd)
        willEnd();
    quit();
}

foundation::Result<void> Application::relaunchAfterDelay(float seconds) {
    if (auto started = startShell(relaunchCommand(seconds, bundlePath())); !started)
        return started;
    terminate();
    return {};
}

QString Application::relaunchCommand(float delay, const QString &path) {
    QString quoted;
    for (const QChar character : path) {
        if (QStringLiteral("\\\"$`").contains(character)) // what a shell sees in a quoted text
            quoted += QLatin1Char('\\');
        quoted += character;
    }
    return QStringLiteral("sleep %1; open \"%2\"").arg(QString::asprintf("%f", static_cast<double>(delay)), quoted);
}

QString Application::bundlePath() const { return QCoreApplication::applicationFilePath(); }

foundation::Result<void> Application::startShell(const QString &command) {
    QProcess shell;
    shell.setProgram(QStringLiteral("/bin/sh"));
    shell.setArguments({QStringLiteral("-c"), command});
    auto environment = QProcessEnvironment::systemEnvironment();
    for (const QString &entry : desktop::ShellScriptHost::environment())
        environment.insert(entry.section(QLatin1Char('='), 0, 0), entry.section(QLatin1Char('='), 1));
    shell.setProcessEnvironment(environment);
    shell.setStandardInputFile(QProcess::nullDevice());
    shell.setChildProcessModifier([] { // Signals that wait for the event loop here interrupt there.
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
    });
    if (!shell.startDetached())
        return foundation::Failure{kNotRelaunched(), QStringLiteral("relaunch: %1").arg(shell.errorString())};
    return {};
}

void Application::quit() { QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection); }

} // namespace cantorel
