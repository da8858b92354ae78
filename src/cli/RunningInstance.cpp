#include "cli/RunningInstance.h"

#include "app/start/Hardware.h"
#include "platform/desktop/Services.h"
#include "recording/control/RecordingControl.h"
#include "recording/session/RecordingJournal.h"
#include "recording/session/StartConditions.h"

#include <chrono>
#include <thread>

namespace cantorel {

namespace {

constexpr std::chrono::seconds kPatience(3);
constexpr std::chrono::milliseconds kInterval(20);

} // namespace

std::optional<foundation::Result<QVariantMap>> askRunningInstance(const char *method, const QStringList &arguments) {
    const auto &remote = desktop::InstalledServices::current().remote;
    return remote ? remote->ask(QString::fromLatin1(method), arguments) : std::nullopt;
}

Outcome refusedByOwner() {
    const QString state = QStringLiteral("state");
    const auto status = askRunningInstance(control::kStatus);
    if (status && *status && status->value()[state] == RecordingControl::stoppedStatus()[state])
        return Outcome::failed(QStringLiteral("Cantorel is open already and records nothing; record there, which "
                                              "\"cantorel-cli start\" does from here, or close it."));
    return Outcome::failed(kAnotherRecorder());
}

Outcome changeOwnedList(const QString &what, const std::function<Outcome()> &action, const char *method,
                        const QStringList &arguments, const std::function<void(const QVariantMap &)> &shown) {
    RecordingJournal owner(Hardware::stateFolder());
    std::optional<foundation::Result<QVariantMap>> answer;
    // A holder of the lock that does not answer may be another command, which ends soon.
    const auto end = std::chrono::steady_clock::now() + kPatience;
    for (;; std::this_thread::sleep_for(kInterval)) {
        if (owner.claim())
            return action();
        answer = askRunningInstance(method, arguments);
        const bool isAnswered = answer && (*answer || answer->failure().detail == answer->failure().sentence);
        if (isAnswered || std::chrono::steady_clock::now() > end)
            break;
    }
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
