#include "platform/desktop/dbus/DBusLauncherEntry.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariantMap>

#include <algorithm>
#include <utility>

namespace cantorel::desktop {

DBusLauncherEntry::DBusLauncherEntry(const QString &desktopFile)
    : mApplication(QStringLiteral("application://%1.desktop").arg(desktopFile)) {}

void DBusLauncherEntry::showProgress(double progress) {
    const int hundredths = std::clamp(static_cast<int>(progress * 100), 0, 100);
    if (std::exchange(mShown, hundredths) != hundredths)
        tell(hundredths / 100.0, true);
}

void DBusLauncherEntry::hideProgress() {
    if (std::exchange(mShown, -1) >= 0)
        tell(0, false);
}

void DBusLauncherEntry::tell(double progress, bool isVisible) {
    QDBusMessage update =
        QDBusMessage::createSignal(QStringLiteral("/com/tessolar/Cantorel/Launcher"),
                                   QStringLiteral("com.canonical.Unity.LauncherEntry"), QStringLiteral("Update"));
    update << mApplication
           << QVariantMap{{QStringLiteral("progress"), progress}, {QStringLiteral("progress-visible"), isVisible}};
    QDBusConnection::sessionBus().send(update);
}

} // namespace cantorel::desktop
