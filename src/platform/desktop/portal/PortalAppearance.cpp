#include "platform/desktop/portal/PortalAppearance.h"

#include "platform/desktop/portal/PortalCall.h"

#include <QDBusArgument>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QVariantMap>

#include <utility>

namespace cantorel::desktop {

using namespace portal;

namespace {

const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString kAppearance = QStringLiteral("org.freedesktop.appearance");
const QString kGnome = QStringLiteral("org.gnome.desktop.interface"); // where the switch for animations stands

using Groups = QMap<QString, QVariantMap>;

} // namespace

void PortalAppearance::listen(Listener listener) {
    mListener = std::move(listener);
    if (!mListener || std::exchange(mIsListening, true))
        return;
    QDBusConnection bus = mBus();
    if (!bus.isConnected())
        return;
    bus.connect(kService, kPath, kInterface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QDBusMessage)));
    ask();
}

void PortalAppearance::ask() {
    const QDBusMessage call = callTo(kInterface, QStringLiteral("ReadAll"), {QStringList{kAppearance, kGnome}});
    auto *watcher = new QDBusPendingCallWatcher(mBus().asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusMessage reply = watcher->reply();
        if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != QStringLiteral("a{sa{sv}}"))
            return; // no portal: the window looks as it did at its start
        const auto groups = qdbus_cast<Groups>(reply.arguments().constFirst());
        for (auto group = groups.begin(); group != groups.end(); ++group)
            for (auto value = group->begin(); value != group->end(); ++value)
                take(group.key(), value.key(), value.value());
        tell();
    });
}

bool PortalAppearance::take(const QString &group, const QString &key, const QVariant &value) {
    if (group == kGnome && key == QStringLiteral("enable-animations"))
        mState.isMotionReduced = !value.toBool();
    else if (group != kAppearance)
        return false;
    else if (key == QStringLiteral("color-scheme"))
        mState.scheme = value.toUInt() == 1   ? AppearanceState::Scheme::Dark
                        : value.toUInt() == 2 ? AppearanceState::Scheme::Light
                                              : AppearanceState::Scheme::Unknown;
    else if (key == QStringLiteral("contrast"))
        mState.isContrastHigh = value.toUInt() == 1;
    else if (key == QStringLiteral("reduced-motion"))
        mState.isMotionReduced = value.toUInt() == 1;
    else
        return false;
    return true;
}

void PortalAppearance::settingChanged(const QDBusMessage &signal) {
    if (signal.signature() != QStringLiteral("ssv"))
        return;
    const QVariantList told = signal.arguments();
    const AppearanceState before = mState;
    if (take(told[0].toString(), told[1].toString(), told[2].value<QDBusVariant>().variant()) && mState != before)
        tell();
}

void PortalAppearance::tell() {
    if (mListener)
        mListener(mState);
}

} // namespace cantorel::desktop
