#pragma once

#include "platform/desktop/PowerActivity.h"

#include <QDBusUnixFileDescriptor>

namespace cantorel::desktop {

// Holds an inhibitor of the session's power manager; where there is none, login1's for idleness. The desktop drops it
// when the program ends. One thread at a time.
class DBusPowerActivity : public PowerActivity {
public:
    ~DBusPowerActivity() override;

    // Called again, it looks whether the service that holds the inhibitor is still the same one, and renews it if not.
    foundation::Result<void> hold(const QString &reason) override;
    void release() override;

private:
    bool holdWithManager(const QString &reason);

    QString mOwner; // the program that holds the inhibitor for us; empty when none does
    quint32 mCookie = 0;
    QDBusUnixFileDescriptor mLock; // login1's, held while open
};

} // namespace cantorel::desktop
