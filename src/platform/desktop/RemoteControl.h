#pragma once

#include "platform/foundation/Result.h"

#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <optional>
#include <vector>

namespace cantorel::desktop {

// One thing that other programs may ask. All arguments are texts.
struct RemoteMethod {
    QString name;
    QStringList arguments; // their names
};

// What other programs may ask of this one. Main thread.
class RemoteCommands {
public:
    virtual ~RemoteCommands() = default;

    virtual std::vector<RemoteMethod> methods() const = 0;
    // Answers texts, numbers and truths by their names. Called for methods that there are, with the arguments that they
    // have. A refusal is plain English.
    virtual foundation::Result<QVariantMap> call(const QString &method, const QStringList &arguments) = 0;
};

// Lets the programs of one person's session ask each other. Main thread.
class RemoteControl {
public:
    virtual ~RemoteControl() = default;

    // Answers other programs from the event loop, until withdraw(). The commands outlive that. Fails where programs
    // can't be reached, and where another program answers already.
    virtual foundation::Result<void> offer(RemoteCommands &commands) = 0;
    virtual void withdraw() = 0;

    // Waits for the answer of the program that offers commands; nothing if no program does. If that program refuses,
    // the detail of the failure is its sentence. Any other failure happened on the way.
    virtual std::optional<foundation::Result<QVariantMap>> ask(const QString &method, const QStringList &arguments) = 0;
};

} // namespace cantorel::desktop
