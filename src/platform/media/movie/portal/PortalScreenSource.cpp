#include "platform/media/movie/portal/PortalScreenSource.h"

#include "platform/desktop/portal/PortalCall.h"
#include "platform/media/movie/pipewire/PipeWirePictureSource.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusUnixFileDescriptor>

#include <fcntl.h>

#include <utility>

namespace cantorel::media {

using foundation::Failure;
using foundation::Result;
using namespace desktop::portal;

namespace {

constexpr foundation::SentenceKey kScreenDenied("ScreenDenied");
constexpr foundation::SentenceKey kScreenNotShared("ScreenNotShared");
constexpr foundation::SentenceKey kScreenShareEnded("ScreenShareEnded");
constexpr foundation::SentenceKey kNoScreenPortal("NoScreenPortal");
constexpr foundation::SentenceKey kNoDesktopBus("NoDesktopBus");

const QString kScreenCast = QStringLiteral("org.freedesktop.portal.ScreenCast");
const QString kSessionInterface = QStringLiteral("org.freedesktop.portal.Session");
const QString kProperties = QStringLiteral("org.freedesktop.DBus.Properties");

// Bits and numbers of the interface.
constexpr uint kMonitor = 1, kWindow = 2;
constexpr uint kCursorHidden = 1, kCursorEmbedded = 2;
constexpr uint kUntilRevoked = 2;
enum Response : uint { kGranted = 0, kCancelled = 1 };

// The first of the streams, "a(ua{sv})".
struct SharedStream {
    uint node = 0;
    QVariantMap properties;
};

std::optional<SharedStream> firstStream(const QVariant &streams) {
    const auto list = streams.value<QDBusArgument>();
    if (list.currentSignature() != QStringLiteral("a(ua{sv})"))
        return {};
    std::optional<SharedStream> first;
    list.beginArray();
    if (!list.atEnd()) {
        first.emplace();
        list.beginStructure();
        list >> first->node >> first->properties;
        list.endStructure();
    }
    list.endArray();
    return first;
}

std::optional<QPoint> pairIn(const QVariant &value) {
    const auto pair = value.value<QDBusArgument>();
    if (pair.currentSignature() != QStringLiteral("(ii)"))
        return {};
    QPoint point;
    pair.beginStructure();
    pair >> point.rx() >> point.ry();
    pair.endStructure();
    return point;
}

// An error in place of a reply: nobody there, or somebody who can't.
Failure refusal(const QDBusMessage &error, const QString &method) {
    const QString detail = QStringLiteral("%1: %2 %3").arg(method, error.errorName(), error.errorMessage());
    switch (QDBusError(error).type()) {
    case QDBusError::ServiceUnknown:
    case QDBusError::UnknownMethod:
    case QDBusError::UnknownInterface:
    case QDBusError::UnknownObject:
        return {kNoScreenPortal(), detail};
    default: // An old portal answers so for an interface that it does not know.
        return {method == QStringLiteral("GetAll") ? kNoScreenPortal() : kScreenNotShared(), detail};
    }
}

} // namespace

PortalScreenSource::PortalScreenSource(std::function<QDBusConnection()> bus, Options options)
    : mBus(std::move(bus)), mOptions(std::move(options)) {}

PortalScreenSource::~PortalScreenSource() { stop(); }

PictureSize PortalScreenSource::size() const { return mPictures ? mPictures->size() : mSize; }

Result<void> PortalScreenSource::start(PictureSink &sink, int picturesPerSecond) {
    stop();
    const QDBusConnection bus = mBus();
    if (!bus.isConnected())
        return Failure{kNoDesktopBus(), QStringLiteral("no session bus: ") + bus.lastError().message()};
    mSink = &sink;
    mHasEnded = false;
    mPicturesPerSecond = picturesPerSecond;
    auto watch =
        std::make_unique<QDBusServiceWatcher>(kService, bus, QDBusServiceWatcher::WatchForUnregistration, nullptr);
    connect(watch.get(), &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        giveUp({mPictures ? kScreenShareEnded() : kScreenNotShared(), QStringLiteral("the portal has gone")});
    });
    mWatch = std::move(watch);
    call(callTo(kProperties, QStringLiteral("GetAll"), {kScreenCast}), [this](const QDBusMessage &reply) {
        mPortal = qdbus_cast<QVariantMap>(reply.arguments().value(0));
        createSession();
    });
    return {};
}

void PortalScreenSource::stop() {
    if (!mSink)
        return;
    ++mConversation;
    mHasEnded = true;
    mPictures.reset();
    mWatch.release()->deleteLater(); // It may be what calls.
    QDBusConnection bus = mBus();
    if (!mRequest.isEmpty())
        bus.disconnect(kService, mRequest, kRequest, QStringLiteral("Response"), this,
                       SLOT(requestDidRespond(QDBusMessage)));
    // Takes back what is asked, the question to the person too.
    if (std::exchange(mAnswer, nullptr))
        bus.send(callTo(kRequest, QStringLiteral("Close"), {}, mRequest));
    if (!mSession.isEmpty()) {
        bus.disconnect(kService, mSession, kSessionInterface, QStringLiteral("Closed"), this,
                       SLOT(sessionDidClose(QDBusMessage)));
        bus.send(callTo(kSessionInterface, QStringLiteral("Close"), {}, mSession));
    }
    mRequest.clear();
    mSession.clear();
    mSink = nullptr;
}

void PortalScreenSource::call(const QDBusMessage &message, std::function<void(const QDBusMessage &)> answered) {
    auto *watcher = new QDBusPendingCallWatcher(mBus().asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, watcher, answered = std::move(answered), method = message.member(), asked = mConversation] {
                watcher->deleteLater();
                if (asked != mConversation)
                    return;
                if (const QDBusMessage reply = watcher->reply(); reply.type() == QDBusMessage::ReplyMessage)
                    answered(reply);
                else
                    giveUp(refusal(reply, method));
            });
}

void PortalScreenSource::request(const QString &method, QVariantList arguments, QVariantMap options, Answer answer) {
    static int tokens = 0;
    const QString token = QStringLiteral("cantorel_screen_%1").arg(++tokens);
    options.insert(QStringLiteral("handle_token"), token);
    arguments << options;
    mAnswer = answer;
    QDBusConnection bus = mBus();
    mRequest = requestPath(bus, token);
    bus.connect(kService, mRequest, kRequest, QStringLiteral("Response"), this, SLOT(requestDidRespond(QDBusMessage)));
    call(callTo(kScreenCast, method, arguments), [](const QDBusMessage &) {}); // The answer is a signal.
}

void PortalScreenSource::requestDidRespond(const QDBusMessage &signal) {
    if (!mAnswer || signal.path() != mRequest || signal.signature() != QStringLiteral("ua{sv}"))
        return;
    const Answer answer = std::exchange(mAnswer, nullptr);
    mBus().disconnect(kService, mRequest, kRequest, QStringLiteral("Response"), this,
                      SLOT(requestDidRespond(QDBusMessage)));
    const uint code = signal.arguments()[0].toUInt();
    if (code == kGranted)
        (this->*answer)(qdbus_cast<QVariantMap>(signal.arguments()[1]));
    else
        giveUp({code == kCancelled ? kScreenDenied() : kScreenNotShared(),
                QStringLiteral("the portal answered %1").arg(code)});
}

void PortalScreenSource::createSession() {
    static int sessions = 0;
    const QString token = QStringLiteral("cantorel_cast_%1").arg(++sessions);
    mSession = sessionPath(mBus(), token); // so that it is closed also where its answer comes too late
    request(QStringLiteral("CreateSession"), {}, {{QStringLiteral("session_handle_token"), token}},
            &PortalScreenSource::sessionIsOpen);
}

void PortalScreenSource::sessionIsOpen(const QVariantMap &results) {
    mSession = results.value(QStringLiteral("session_handle")).toString();
    if (mSession.isEmpty())
        return giveUp({kScreenNotShared(), QStringLiteral("CreateSession named no session")});
    mBus().connect(kService, mSession, kSessionInterface, QStringLiteral("Closed"), this,
                   SLOT(sessionDidClose(QDBusMessage)));
    // What is not on offer is not asked for: the whole request would fail.
    const auto offered = [this](const char *property, uint otherwise) {
        return mPortal.value(QString::fromLatin1(property), otherwise).toUInt();
    };
    QVariantMap options{
        {QStringLiteral("types"), (kMonitor | kWindow) & offered("AvailableSourceTypes", kMonitor | kWindow)},
        {QStringLiteral("multiple"), false},
        {QStringLiteral("persist_mode"), kUntilRevoked},
    };
    if (const uint cursor = mOptions.showsCursor ? kCursorEmbedded : kCursorHidden;
        (offered("AvailableCursorModes", 0) & cursor) != 0)
        options.insert(QStringLiteral("cursor_mode"), cursor);
    if (const QString token = mOptions.restoreToken ? mOptions.restoreToken() : QString(); !token.isEmpty())
        options.insert(QStringLiteral("restore_token"), token);
    request(QStringLiteral("SelectSources"), {QVariant::fromValue(QDBusObjectPath(mSession))}, options,
            &PortalScreenSource::sourcesAreSelected);
}

void PortalScreenSource::sourcesAreSelected(const QVariantMap &) {
    request(QStringLiteral("Start"), {QVariant::fromValue(QDBusObjectPath(mSession)), QString()}, {},
            &PortalScreenSource::sharingBegins);
}

void PortalScreenSource::sharingBegins(const QVariantMap &results) {
    if (mOptions.keepRestoreToken)
        mOptions.keepRestoreToken(results.value(QStringLiteral("restore_token")).toString());
    const auto stream = firstStream(results.value(QStringLiteral("streams")));
    if (!stream)
        return giveUp({kScreenNotShared(), QStringLiteral("Start named no stream")});
    if (const auto size = pairIn(stream->properties.value(QStringLiteral("size"))))
        mSize = {size->x(), size->y()};
    mPosition = pairIn(stream->properties.value(QStringLiteral("position")));
    openRemote(stream->node);
}

void PortalScreenSource::openRemote(std::uint32_t node) {
    call(callTo(kScreenCast, QStringLiteral("OpenPipeWireRemote"),
                {QVariant::fromValue(QDBusObjectPath(mSession)), QVariantMap()}),
         [this, node](const QDBusMessage &reply) {
             const auto remote = qdbus_cast<QDBusUnixFileDescriptor>(reply.arguments().value(0));
             if (!remote.isValid())
                 return giveUp({kScreenNotShared(), QStringLiteral("OpenPipeWireRemote gave no connection")});
             PictureNode shared;
             shared.id = node;
             shared.remote = foundation::FileDescriptor(::fcntl(remote.fileDescriptor(), F_DUPFD_CLOEXEC, 3));
             shared.size = mSize;
             shared.whenGone = {kScreenShareEnded(), QStringLiteral("the shared screen")};
             mPictures = std::make_unique<PipeWirePictureSource>(std::move(shared));
             if (const auto started = mPictures->start(*this, mPicturesPerSecond); !started)
                 giveUp(started.failure());
         });
}

void PortalScreenSource::sessionDidClose(const QDBusMessage &signal) {
    if (signal.path() == mSession) // One on its way may be of the session before.
        giveUp({kScreenShareEnded(), QStringLiteral("the portal has closed the session")});
}

// On the thread of the pictures, or on ours.
void PortalScreenSource::pictureSourceEnded(const Failure &why) {
    if (!mHasEnded.exchange(true))
        mSink->pictureSourceEnded(why);
}

void PortalScreenSource::giveUp(const Failure &why) {
    PictureSink *sink = mSink;
    const bool isNews = !mHasEnded.exchange(true);
    stop();
    if (isNews)
        sink->pictureSourceEnded(why);
}

} // namespace cantorel::media
