#pragma once

#include "platform/desktop/Notifications.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QStringList>

#include <map>
#include <optional>

namespace cantorel::desktop {

// Over org.freedesktop.Notifications of the session bus, which is first touched with the first message. When a server
// exits, its messages are gone; the next message looks for a server again. Main thread.
class DBusNotifications : public QObject, public Notifications {
    Q_OBJECT

public:
    // applicationId: the program's launcher and icon.
    DBusNotifications(QString applicationName, QString applicationId);

    void show(const QString &tag, const Notification &notification) override;
    void close(const QString &tag) override;

private Q_SLOTS:
    void actionInvoked(const QDBusMessage &signal);
    void activationToken(const QDBusMessage &signal);
    void notificationClosed(const QDBusMessage &signal);

private:
    struct Message {
        Notification notification;
        quint32 id = 0;        // the server's; 0: none yet
        bool isDue = false;    // to be sent
        bool isAsked = false;  // sent, and not answered yet
        bool isWanted = false; // not closed meanwhile
    };
    using Messages = std::map<QString, Message>;

    bool listen();
    void askCapabilities();
    void capabilitiesCame(const QDBusMessage &reply);
    void serverWent();
    void send(Messages::iterator message);
    void answered(const QString &tag, const QDBusMessage &reply);
    // The message is forgotten, and then told so.
    void finish(Messages::iterator message, std::function<void()> Notification::*told);
    void closeOnDesktop(quint32 id);
    Messages::iterator find(const QDBusMessage &signal);

    const QString mApplicationName, mApplicationId;
    std::optional<QDBusConnection> mBus; // from the first message on
    std::optional<QStringList> mCapabilities;
    bool mIsAsking = false; // for the capabilities
    QString mServer;        // who has answered
    Messages mMessages;
};

} // namespace cantorel::desktop
