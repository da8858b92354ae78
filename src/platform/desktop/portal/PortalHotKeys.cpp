#include "platform/desktop/portal/PortalHotKeys.h"

#include "platform/desktop/HotKeyTable.h"
#include "platform/desktop/portal/PortalCall.h"
#include "platform/desktop/portal/PortalShortcut.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

#include <algorithm>
#include <utility>

namespace cantorel::desktop {

using foundation::Failure;
using namespace portal;

namespace {

constexpr foundation::SentenceKey kKeysRefused("KeysRefused");

const QString kRegistry = QStringLiteral("org.freedesktop.host.portal.Registry");
const QString kShortcuts = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
const QString kSession = QStringLiteral("org.freedesktop.portal.Session");

} // namespace

PortalHotKeys::PortalHotKeys(const QDBusConnection &bus, const QString &applicationId,
                             std::vector<HotKeyPurpose> purposes)
    : mBus(bus), mApplicationId(applicationId), mPurposes(std::move(purposes)) {
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
    mBus.connect(kService, kPath, kShortcuts, QStringLiteral("Activated"), this, SLOT(portalDidActivate(QDBusMessage)));
    mBus.connect(kService, kPath, kShortcuts, QStringLiteral("ShortcutsChanged"), this,
                 SLOT(portalDidChange(QDBusMessage)));
    auto *watcher = new QDBusServiceWatcher(kService, mBus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &newOwner) { portalDidMove(newOwner); });
}

PortalHotKeys::~PortalHotKeys() { closeSession(); }

EventHotKeyRef PortalHotKeys::RegisterEventHotKey(const HotKeyCombination &combination, const EventHotKeyID &identity,
                                                  HotKeyTarget &target) {
    const EventHotKeyRef reference = mBook.add(combination, identity, target);
    bindSoon();
    return reference;
}

void PortalHotKeys::UnregisterEventHotKey(EventHotKeyRef reference) { mBook.remove(reference); }

QString PortalHotKeys::triggerOf(EventHotKeyRef reference) const {
    const auto *registration = mBook.find(reference);
    return registration != nullptr ? mTriggers.value(purposeOf(registration->identity)) : QString();
}

QString PortalHotKeys::purposeOf(const EventHotKeyID &identity) const {
    return identity.id >= 1 && identity.id <= mPurposes.size() ? mPurposes[identity.id - 1].id : QString();
}

QSet<QString> PortalHotKeys::wanted() const {
    QSet<QString> purposes;
    for (const auto &registration : mBook.all())
        purposes << purposeOf(registration.identity);
    purposes.remove({});
    return purposes;
}

void PortalHotKeys::portalDidMove(const QString &newOwner) {
    // A first portal that comes while it is asked for is the one that answers.
    if (mState == State::Asked && !newOwner.isEmpty() && mSession.isEmpty())
        return;
    // Its sessions are gone with it, and it does not know us any more.
    mAnswer = nullptr;
    mState = State::Idle;
    mSession.clear();
    mAskedFor.clear();
    mBound.clear();
    mTriggers.clear();
    mIsIntroduced = false;
    if (triggersDidChange)
        triggersDidChange();
    if (!newOwner.isEmpty() && !wanted().isEmpty())
        bindSoon();
}

// Asking.

void PortalHotKeys::bindSoon() {
    if (std::exchange(mIsBindingDue, true))
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            mIsBindingDue = false;
            if (mState == State::Asked || mAskedFor.contains(wanted()))
                return; // Looked at again when the answer is there.
            closeSession();
            introduce();
        },
        Qt::QueuedConnection);
}

// Says who the program is, before anything else is asked; older portals don't need to know.
void PortalHotKeys::introduce() {
    mState = State::Asked;
    if (std::exchange(mIsIntroduced, true)) {
        createSession();
        return;
    }
    auto *watcher = new QDBusPendingCallWatcher(
        mBus.asyncCall(callTo(kRegistry, QStringLiteral("Register"), {mApplicationId, QVariantMap()})), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        createSession();
    });
}

void PortalHotKeys::createSession() {
    request(QStringLiteral("CreateSession"), {},
            {{QStringLiteral("session_handle_token"), QStringLiteral("cantorel_session_%1").arg(++mTokens)}},
            &PortalHotKeys::sessionDidOpen);
}

void PortalHotKeys::sessionDidOpen(const std::optional<QVariantMap> &results) {
    mSession = results ? results->value(QStringLiteral("session_handle")).toString() : QString();
    if (mSession.isEmpty()) {
        giveUp(QStringLiteral("CreateSession was refused"));
        return;
    }
    mBus.connect(kService, mSession, kSession, QStringLiteral("Closed"), this, SLOT(portalDidClose(QDBusMessage)));
    mAskedFor = wanted();
    QList<PortalShortcut> shortcuts;
    for (const HotKeyPurpose &purpose : mPurposes) {
        const auto *newest = mBook.newest([&](const auto &other) { return purposeOf(other.identity) == purpose.id; });
        if (newest == nullptr)
            continue;
        QVariantMap details{{QStringLiteral("description"), purpose.description}};
        if (isHotKey(newest->combination))
            details.insert(QStringLiteral("preferred_trigger"), portalTrigger(newest->combination));
        shortcuts.append({purpose.id, details});
    }
    request(QStringLiteral("BindShortcuts"),
            {QVariant::fromValue(QDBusObjectPath(mSession)), QVariant::fromValue(shortcuts), QString()}, {},
            &PortalHotKeys::shortcutsAreBound);
}

void PortalHotKeys::shortcutsAreBound(const std::optional<QVariantMap> &results) {
    if (!results) {
        giveUp(QStringLiteral("BindShortcuts was refused"));
        return;
    }
    mState = State::Open;
    // What this answer grants is in force; a list without them, as some desktops send, denies nothing.
    mBound = mAskedFor;
    take(results->value(QStringLiteral("shortcuts")));
    bindSoon();
}

void PortalHotKeys::closeSession() {
    if (mSession.isEmpty())
        return;
    mBus.disconnect(kService, mSession, kSession, QStringLiteral("Closed"), this, SLOT(portalDidClose(QDBusMessage)));
    mBus.send(callTo(kSession, QStringLiteral("Close"), {}, mSession));
    mSession.clear();
    mAskedFor.clear();
    mBound.clear();
    mTriggers.clear();
    mState = State::Idle;
}

void PortalHotKeys::request(const QString &method, QVariantList arguments, QVariantMap options, Answer answer) {
    const QString token = QStringLiteral("cantorel_%1").arg(++mTokens);
    options.insert(QStringLiteral("handle_token"), token);
    arguments << options;
    mRequest = requestPath(mBus, token);
    mAnswer = answer;
    mBus.connect(kService, mRequest, kRequest, QStringLiteral("Response"), this, SLOT(requestDidRespond(QDBusMessage)));
    auto *watcher = new QDBusPendingCallWatcher(mBus.asyncCall(callTo(kShortcuts, method, arguments)), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, method] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusObjectPath> reply = *watcher;
        if (reply.isError() && mAnswer != nullptr) {
            mAnswer = nullptr;
            giveUp(QStringLiteral("%1: %2").arg(method, reply.error().message()));
        }
    });
}

void PortalHotKeys::giveUp(const QString &detail) {
    mState = State::Idle;
    closeSession();
    mAskedFor = wanted(); // Not asked for again until there is something new.
    if (std::exchange(mHasTold, true) || !trouble)
        return;
    trouble(Failure{kKeysRefused(), QStringLiteral("no global shortcuts: %1").arg(detail)});
}

// Listening.

void PortalHotKeys::requestDidRespond(const QDBusMessage &signal) {
    if (signal.path() != mRequest || mAnswer == nullptr)
        return;
    mBus.disconnect(kService, mRequest, kRequest, QStringLiteral("Response"), this,
                    SLOT(requestDidRespond(QDBusMessage)));
    const QVariantList arguments = signal.arguments();
    const bool isGranted = arguments.size() >= 2 && arguments[0].toUInt() == 0;
    const Answer answer = std::exchange(mAnswer, nullptr);
    (this->*answer)(isGranted ? std::optional(qdbus_cast<QVariantMap>(arguments[1])) : std::nullopt);
}

void PortalHotKeys::portalDidActivate(const QDBusMessage &signal) {
    const QVariantList arguments = signal.arguments();
    if (arguments.size() < 2 || qdbus_cast<QDBusObjectPath>(arguments[0]).path() != mSession)
        return;
    const QString id = arguments[1].toString();
    if (mBound.contains(id))
        mBook.press([&](const HotKeyBook::Registration &other) { return purposeOf(other.identity) == id; });
}

void PortalHotKeys::portalDidChange(const QDBusMessage &signal) {
    const QVariantList arguments = signal.arguments();
    if (arguments.size() >= 2 && qdbus_cast<QDBusObjectPath>(arguments[0]).path() == mSession)
        take(arguments[1]);
}

void PortalHotKeys::portalDidClose(const QDBusMessage &signal) {
    if (signal.path() != mSession)
        return;
    closeSession();
    mAskedFor = wanted();
    if (triggersDidChange)
        triggersDidChange();
}

void PortalHotKeys::take(const QVariant &shortcuts) {
    for (const PortalShortcut &shortcut : qdbus_cast<QList<PortalShortcut>>(shortcuts))
        mTriggers.insert(shortcut.id, shortcut.details.value(QStringLiteral("trigger_description")).toString());
    if (triggersDidChange)
        triggersDidChange();
}

} // namespace cantorel::desktop
