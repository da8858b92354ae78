#include "platform/desktop/dbus/DBusNotifications.h"

#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>

#include <algorithm>
#include <utility>

namespace cantorel::desktop {

namespace {

const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");

constexpr int kAsTheServerLikes = -1, kNever = 0; // when a message goes by itself
constexpr uchar kNormalUrgency = 1;

QDBusMessage callTo(const char *method, const QVariantList &arguments) {
    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kService, QString::fromLatin1(method));
    call.setArguments(arguments);
    return call;
}

template <class Answer> void ask(QObject *asker, const QDBusConnection &bus, const QDBusMessage &call, Answer answer) {
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), asker);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, asker, [watcher, answer] {
        watcher->deleteLater();
        answer(watcher->reply());
    });
}

} // namespace

DBusNotifications::DBusNotifications(QString applicationName, QString applicationId)
    : mApplicationName(std::move(applicationName)), mApplicationId(std::move(applicationId)) {}

void DBusNotifications::show(const QString &tag, const Notification &notification) {
    const auto message = mMessages.try_emplace(tag).first;
    message->second.notification = notification;
    message->second.isDue = message->second.isWanted = true;
    if (!listen())
        finish(message, &Notification::refused);
    else if (mCapabilities)
        send(message);
    else
        askCapabilities();
}

void DBusNotifications::close(const QString &tag) {
    const auto message = mMessages.find(tag);
    if (message == mMessages.end())
        return;
    if (message->second.isAsked) { // Closed once its number is known.
        message->second.isWanted = false;
        return;
    }
    if (const quint32 id = message->second.id; id != 0)
        closeOnDesktop(id);
    mMessages.erase(message);
}

// Asking.

bool DBusNotifications::listen() {
    if (mBus)
        return mBus->isConnected();
    mBus = QDBusConnection::sessionBus();
    // Without the sender's name, which the bus would be asked for; whose signal it is is looked at when it comes.
    mBus->connect({}, kPath, kService, QStringLiteral("ActionInvoked"), this, SLOT(actionInvoked(QDBusMessage)));
    mBus->connect({}, kPath, kService, QStringLiteral("ActivationToken"), this, SLOT(activationToken(QDBusMessage)));
    mBus->connect({}, kPath, kService, QStringLiteral("NotificationClosed"), this,
                  SLOT(notificationClosed(QDBusMessage)));
    auto *watcher = new QDBusServiceWatcher(kService, *mBus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &oldOwner, const QString &) {
                if (!oldOwner.isEmpty())
                    serverWent();
            });
    return mBus->isConnected();
}

void DBusNotifications::askCapabilities() {
    if (std::exchange(mIsAsking, true))
        return;
    ask(this, *mBus, callTo("GetCapabilities", {}), [this](const QDBusMessage &reply) { capabilitiesCame(reply); });
}

void DBusNotifications::capabilitiesCame(const QDBusMessage &reply) {
    mIsAsking = false;
    QStringList tags;
    for (const auto &message : mMessages)
        tags << message.first;
    if (reply.type() == QDBusMessage::ReplyMessage) {
        mCapabilities = reply.arguments().value(0).toStringList();
        mServer = reply.service();
    }
    for (const QString &tag : tags) { // What is told may show and close others.
        const auto message = mMessages.find(tag);
        if (message == mMessages.end())
            continue;
        if (mCapabilities)
            send(message);
        else if (!message->second.isAsked)
            finish(message, &Notification::refused);
    }
}

void DBusNotifications::send(Messages::iterator message) {
    auto &[tag, state] = *message;
    if (state.isAsked || !std::exchange(state.isDue, false))
        return;
    const Notification &notification = state.notification;
    const bool hasActions = mCapabilities->contains(QStringLiteral("actions"));
    if (notification.isLasting && !hasActions) {
        if (state.id != 0)
            closeOnDesktop(state.id);
        finish(message, &Notification::refused);
        return;
    }
    QStringList actions;
    if (hasActions)
        for (const auto &action : notification.actions)
            actions << action.id << action.label;
    const QString text =
        mCapabilities->contains(QStringLiteral("body-markup")) ? notification.text.toHtmlEscaped() : notification.text;
    QVariantMap hints{{QStringLiteral("desktop-entry"), mApplicationId},
                      {QStringLiteral("urgency"), QVariant::fromValue(kNormalUrgency)}};
    if (notification.isLasting)
        hints.insert(QStringLiteral("resident"), true);
    state.isAsked = true;
    ask(this, *mBus,
        callTo("Notify", {mApplicationName, state.id, mApplicationId, notification.title, text, actions, hints,
                          notification.isLasting ? kNever : kAsTheServerLikes}),
        [this, tag = tag](const QDBusMessage &reply) { answered(tag, reply); });
}

void DBusNotifications::answered(const QString &tag, const QDBusMessage &reply) {
    const auto message = mMessages.find(tag);
    auto &state = message->second; // What is asked for is not forgotten.
    state.isAsked = false;
    if (reply.type() != QDBusMessage::ReplyMessage) {
        finish(message, state.isWanted ? &Notification::refused : nullptr);
        return;
    }
    state.id = reply.arguments().value(0).toUInt();
    mServer = reply.service();
    if (!state.isWanted) {
        closeOnDesktop(state.id);
        finish(message, nullptr);
    } else if (!state.isDue) {
        if (const auto shown = state.notification.shown)
            shown();
    } else if (mCapabilities) {
        send(message);
    } else {
        askCapabilities();
    }
}

void DBusNotifications::finish(Messages::iterator message, std::function<void()> Notification::*told) {
    const Notification notification = std::move(message->second.notification);
    mMessages.erase(message);
    if (told != nullptr && notification.*told)
        (notification.*told)();
}

void DBusNotifications::closeOnDesktop(quint32 id) { mBus->send(callTo("CloseNotification", {id})); }

// Listening.

DBusNotifications::Messages::iterator DBusNotifications::find(const QDBusMessage &signal) {
    const quint32 id = signal.arguments().value(0).toUInt();
    if (signal.service() != mServer || id == 0)
        return mMessages.end();
    return std::find_if(mMessages.begin(), mMessages.end(),
                        [id](const auto &message) { return message.second.id == id && message.second.isWanted; });
}

void DBusNotifications::actionInvoked(const QDBusMessage &signal) {
    const auto message = find(signal);
    if (message == mMessages.end())
        return;
    if (const auto pressed = message->second.notification.pressed)
        pressed(signal.arguments().value(1).toString());
}

// Under Wayland, who comes to the front must show what the person has pressed for it.
void DBusNotifications::activationToken(const QDBusMessage &signal) {
    if (find(signal) != mMessages.end() && !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        qputenv("XDG_ACTIVATION_TOKEN", signal.arguments().value(1).toString().toUtf8());
}

void DBusNotifications::notificationClosed(const QDBusMessage &signal) {
    const auto message = find(signal);
    if (message != mMessages.end() && !message->second.isAsked) // else another one is about to take its place
        finish(message, &Notification::ended);
}

void DBusNotifications::serverWent() {
    mCapabilities.reset();
    mServer.clear();
    QStringList tags;
    for (const auto &[tag, state] : mMessages)
        if (state.id != 0 && !state.isAsked)
            tags << tag;
    for (const QString &tag : tags)
        if (const auto message = mMessages.find(tag); message != mMessages.end())
            finish(message, &Notification::ended);
}

} // namespace cantorel::desktop
