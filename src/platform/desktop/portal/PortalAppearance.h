#pragma once

#include "platform/desktop/Appearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

namespace cantorel::desktop {

// Over the Settings interface of the desktop portal, which is first asked by listen(). Main thread.
class PortalAppearance : public QObject, public Appearance {
    Q_OBJECT

public:
    // The bus is made when it is needed.
    explicit PortalAppearance(std::function<QDBusConnection()> bus) : mBus(std::move(bus)) {}

    void listen(Listener listener) override;

private Q_SLOTS:
    void settingChanged(const QDBusMessage &signal);

private:
    void ask();
    // Whether it is one of the settings that are followed.
    bool take(const QString &group, const QString &key, const QVariant &value);
    void tell();

    const std::function<QDBusConnection()> mBus;
    Listener mListener;
    AppearanceState mState;
    bool mIsListening = false;
};

} // namespace cantorel::desktop
