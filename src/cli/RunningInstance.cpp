#include "cli/RunningInstance.h"

#include "app/start/Hardware.h"
#include "platform/desktop/Services.h"
#include "recording/session/RecordingJournal.h"

namespace cantorel {

std::optional<foundation::Result<QVariantMap>> askRunningInstance(const char *method, const QStringList &arguments) {
    const auto &remote = desktop::InstalledServices::current().remote;
    return remote ? remote->ask(QString::fromLatin1(method), arguments) : std::nullopt;
}

Outcome changeOwnedList(const QString &what, const std::function<Outcome()> &action, const char *method,
                        const QStringList &arguments, const std::function<void(const QVariantMap &)> &shown) {
    RecordingJournal owner(Hardware::stateFolder());
    if (owner.claim())
        return action();
    const auto answer = askRunningInstance(method, arguments);
    if (!answer)
        return Outcome::failed(
            QStringLiteral("Another Cantorel is running and owns %1, but can't be asked; stop that one first.")
                .arg(what));
    if (!*answer)
        return Outcome::failed(answer->failure().sentence);
    shown(answer->value());
    return Outcome::done();
}

} // namespace cantorel
