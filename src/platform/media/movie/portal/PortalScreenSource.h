#pragma once

#include "platform/media/movie/PictureSource.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QPoint>
#include <QString>
#include <QVariantMap>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace cantorel::media {

// The screen, or a window, as the desktop's portal shares it; which one is chosen by the person, whom the desktop asks.
// start() only begins to ask: a refusal is told to the sink, on the main thread. Main thread, with an event loop.
class PortalScreenSource : public QObject, public PictureSource, private PictureSink {
    Q_OBJECT

public:
    struct Options {
        bool showsCursor = true;
        // What the desktop remembers a choice by, so that it need not ask again: kept by the owner, for one use each.
        std::function<QString()> restoreToken = {};
        std::function<void(const QString &token)> keepRestoreToken = {};
    };

    // The bus is made when it is needed.
    PortalScreenSource(std::function<QDBusConnection()> bus, Options options);
    ~PortalScreenSource() override;

    // 0 x 0 until the desktop has answered.
    PictureSize size() const override;
    // Where it lies on the desktop, in the desktop's points; nothing for a window.
    std::optional<QPoint> position() const { return mPosition; }

    foundation::Result<void> start(PictureSink &sink, int picturesPerSecond) override;
    void stop() override;

private Q_SLOTS:
    void requestDidRespond(const QDBusMessage &signal);
    void sessionDidClose(const QDBusMessage &signal);

private:
    // What follows the results of a request.
    using Answer = void (PortalScreenSource::*)(const QVariantMap &results);

    void takePicture(const Picture &picture) override { mSink->takePicture(picture); }
    void pictureSourceEnded(const foundation::Failure &why) override;

    // Calls a method; what comes after a stop() is dropped.
    void call(const QDBusMessage &message, std::function<void(const QDBusMessage &reply)> answered);
    // arguments: without the options, which get the token.
    void request(const QString &method, QVariantList arguments, QVariantMap options, Answer answer);
    void createSession();
    void sessionIsOpen(const QVariantMap &results);
    void sourcesAreSelected(const QVariantMap &results);
    void sharingBegins(const QVariantMap &results);
    void openRemote(std::uint32_t node);
    void giveUp(const foundation::Failure &why);

    const std::function<QDBusConnection()> mBus;
    const Options mOptions;
    PictureSize mSize;
    std::optional<QPoint> mPosition;
    PictureSink *mSink = nullptr; // while started
    std::atomic<bool> mHasEnded = false;
    int mPicturesPerSecond = 0;
    int mConversation = 0; // counts them
    QVariantMap mPortal;   // its properties
    QString mSession;
    QString mRequest;                         // the path that the answer comes from
    Answer mAnswer = nullptr;                 // while it is waited for
    std::unique_ptr<PictureSource> mPictures; // once they are shared
    std::unique_ptr<QObject> mWatch;          // of the portal, while started
};

} // namespace cantorel::media
