#pragma once

#include "platform/desktop/HotKeyBook.h"
#include "platform/desktop/HotKeys.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QMap>
#include <QObject>
#include <QSet>
#include <QVariantMap>

#include <vector>

namespace cantorel::desktop {

// What a key is for: desktops remember its id for ever, and show the description.
struct HotKeyPurpose {
    QString id;
    QString description;
};

// Asks the desktop's portal for keys. The desktop, not the program, decides on the keys in the end; what it has decided
// is known from triggerOf. Registrations of one turn of the event loop go together, since a session of the portal binds
// once; more purposes later take a new session. Main thread.
class PortalHotKeys : public QObject, public HotKeys {
    Q_OBJECT

public:
    // applicationId: the name of the installed desktop file, without its extension. purposes: of the identities 1, 2,
    // ...; other identities are not asked for.
    PortalHotKeys(const QDBusConnection &bus, const QString &applicationId, std::vector<HotKeyPurpose> purposes);
    ~PortalHotKeys() override;

    EventHotKeyRef RegisterEventHotKey(const HotKeyCombination &combination, const EventHotKeyID &identity,
                                       HotKeyTarget &target) override;
    void UnregisterEventHotKey(EventHotKeyRef reference) override;
    QString triggerOf(EventHotKeyRef reference) const override;

private Q_SLOTS:
    void portalDidActivate(const QDBusMessage &signal);
    void portalDidChange(const QDBusMessage &signal);
    void portalDidClose(const QDBusMessage &signal);
    void requestDidRespond(const QDBusMessage &signal);

private:
    // What follows the answer of a request: its results, or nothing when it was refused.
    using Answer = void (PortalHotKeys::*)(const std::optional<QVariantMap> &);
    enum class State { Idle, Asked, Open };

    void bindSoon();
    void introduce();
    void createSession();
    void sessionDidOpen(const std::optional<QVariantMap> &results);
    void shortcutsAreBound(const std::optional<QVariantMap> &results);
    void closeSession();
    // The portal has come, gone, or begun anew.
    void portalDidMove(const QString &newOwner);
    // arguments: without the options, which get the token.
    void request(const QString &method, QVariantList arguments, QVariantMap options, Answer answer);
    void take(const QVariant &shortcuts);
    void giveUp(const QString &detail);
    QString purposeOf(const EventHotKeyID &identity) const;
    QSet<QString> wanted() const;

    QDBusConnection mBus;
    const QString mApplicationId;
    const std::vector<HotKeyPurpose> mPurposes;
    HotKeyBook mBook;
    State mState = State::Idle;
    bool mIsIntroduced = false;
    bool mIsBindingDue = false;
    bool mHasTold = false;
    QString mSession;
    QSet<QString> mAskedFor;          // by the session
    QSet<QString> mBound;             // in force
    QMap<QString, QString> mTriggers; // by purpose
    QString mRequest;                 // the path that the answer comes from
    Answer mAnswer = nullptr;
    int mTokens = 0;
};

} // namespace cantorel::desktop
