#pragma once

#include "platform/desktop/SleepDelay.h"

#include <QDBusUnixFileDescriptor>
#include <QObject>

namespace cantorel::desktop {

// A delay inhibitor of login1, on the system bus: held while a descriptor is open, so that it ends with the program.
class DBusSleepDelay : public QObject, public SleepDelay {
    Q_OBJECT

public:
    void hold(const QString &reason) override;
    void release() override;

private Q_SLOTS:
    void prepareForSleep(bool begins) { prepareFor(begins, false); }
    void prepareForShutdown(bool begins) { prepareFor(begins, true); }

private:
    void prepareFor(bool begins, bool shutsDown);

    bool mIsListening = false;
    bool mIsHolding = false;       // or about to
    int mAsked = 0;                // the answer to an older call is not wanted any more
    QDBusUnixFileDescriptor mLock; // held while open
};

} // namespace cantorel::desktop
