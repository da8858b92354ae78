#pragma once

#include "platform/desktop/MediaControls.h"

#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>
#include <QStringList>
#include <QVariantMap>

namespace cantorel::desktop {

// The player as others find it on the bus: two interfaces of one object, with the names that MPRIS gives them. Owned by
// DBusMediaControls; main thread.
class MprisObject : public QObject {
public:
    // applicationId: the program's launcher.
    MprisObject(MediaCommands &commands, QString identity, QString applicationId);

    MediaCommands &commands;
    const QString identity, applicationId;
    MediaState state;
    int trackNumber = 0;

    QDBusObjectPath trackId() const;
};

class MprisRoot : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2")
    Q_PROPERTY(bool CanQuit READ yes CONSTANT)
    Q_PROPERTY(bool CanRaise READ yes CONSTANT)
    Q_PROPERTY(bool HasTrackList READ no CONSTANT)
    Q_PROPERTY(QString Identity READ identity CONSTANT)
    Q_PROPERTY(QString DesktopEntry READ desktopEntry CONSTANT)
    Q_PROPERTY(QStringList SupportedUriSchemes READ nothing CONSTANT)
    Q_PROPERTY(QStringList SupportedMimeTypes READ nothing CONSTANT)

public:
    explicit MprisRoot(MprisObject &object) : QDBusAbstractAdaptor(&object), mObject(object) {}

    bool yes() const { return true; }
    bool no() const { return false; }
    QString identity() const { return mObject.identity; }
    QString desktopEntry() const { return mObject.applicationId; }
    QStringList nothing() const { return {}; }

public Q_SLOTS:
    void Raise() { mObject.commands.showWindow(); }
    void Quit() { mObject.commands.quit(); }

private:
    MprisObject &mObject;
};

class MprisPlayer : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2.Player")
    Q_PROPERTY(QString PlaybackStatus READ playbackStatus)
    Q_PROPERTY(double Rate READ one CONSTANT)
    Q_PROPERTY(double MinimumRate READ one CONSTANT)
    Q_PROPERTY(double MaximumRate READ one CONSTANT)
    Q_PROPERTY(double Volume READ one CONSTANT)
    Q_PROPERTY(QVariantMap Metadata READ metadata)
    Q_PROPERTY(qlonglong Position READ position)
    Q_PROPERTY(bool CanGoNext READ canGoNext)
    Q_PROPERTY(bool CanGoPrevious READ canGoPrevious)
    Q_PROPERTY(bool CanPlay READ canPlay)
    Q_PROPERTY(bool CanPause READ canPause)
    Q_PROPERTY(bool CanSeek READ canSeek)
    Q_PROPERTY(bool CanControl READ yes CONSTANT)

public:
    explicit MprisPlayer(MprisObject &object) : QDBusAbstractAdaptor(&object), mObject(object) {}

    // The properties whose changes are told.
    QVariantMap changing() const;

    QString playbackStatus() const;
    QVariantMap metadata() const;
    qlonglong position() const; // microseconds
    double one() const { return 1; }
    bool canGoNext() const { return mObject.state.canGoNext; }
    bool canGoPrevious() const { return mObject.state.canGoPrevious; }
    bool canPlay() const { return mObject.state.canPlay; }
    bool canPause() const { return hasTrack(); }
    bool canSeek() const { return hasTrack(); }
    bool yes() const { return true; }

public Q_SLOTS:
    void Play() { mObject.commands.play(); }
    void Pause() { mObject.commands.pause(); }
    void PlayPause() { mObject.commands.playOrPause(); }
    void Stop() { mObject.commands.stop(); }
    void Next() { mObject.commands.next(); }
    void Previous() { mObject.commands.previous(); }
    // Microseconds from where it is; behind the end lies the next track.
    void Seek(qlonglong Offset);
    // Microseconds from the beginning; for another track than the present one, or outside of it, nothing happens.
    void SetPosition(const QDBusObjectPath &TrackId, qlonglong Position);
    // No addresses are offered, so none is opened.
    void OpenUri(const QString & /*Uri*/) {}

Q_SIGNALS:
    void Seeked(qlonglong Position);

private:
    bool hasTrack() const { return !mObject.state.track.isEmpty(); }

    MprisObject &mObject;
};

} // namespace cantorel::desktop
