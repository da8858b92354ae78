#pragma once

#include "platform/desktop/PowerActivity.h"

#include <QDBusUnixFileDescriptor>

namespace cantorel::desktop {

// Holds an inhibitor of the screen saver; where there is none, of the power manager, else of login1. The desktop drops
// it when the program ends. One thread at a time.
class DBusPowerActivity : public PowerActivity {
public:
    ~DBusPowerActivity() override;

    // Called again, it looks whether the service that holds the inhibitor is still the same one, and renews it if not.
    foundation::Result<void> hold(const QString &reason) override;
    void release() override;
    void reportUserActivity() override;

private:
    bool holdWith(int service, const QString &reason);

    int mService = -1; // which of the session's services holds the inhibitor
    QString mOwner;    // the program behind its name
    quint32 mCookie = 0;
    QDBusUnixFileDescriptor mLock; // login1's, held while open
    bool mCanSimulate = true;
};

} // namespace cantorel::desktop
