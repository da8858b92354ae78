#pragma once

#include "platform/desktop/RemoteControl.h"

#include <memory>

namespace cantorel::desktop {

class OwnConnection;

// Over the session bus: one name, one object, one interface. Refusals are errors of the interface whose message is the
// sentence. Nothing is asked of the bus before it is needed. Main thread.
class DBusRemoteControl : public RemoteControl {
public:
    DBusRemoteControl(const QString &service, const QString &path, const QString &interface);
    ~DBusRemoteControl() override;

    foundation::Result<void> offer(RemoteCommands &commands) override;
    void withdraw() override;
    std::optional<foundation::Result<QVariantMap>> ask(const QString &method, const QStringList &arguments) override;

private:
    class Object;

    const QString mService, mPath, mInterface;
    // While commands are offered.
    std::unique_ptr<OwnConnection> mConnection;
    std::unique_ptr<Object> mObject;
};

} // namespace cantorel::desktop
