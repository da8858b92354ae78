#include "platform/desktop/dbus/MprisObject.h"

#include <cmath>

namespace cantorel::desktop {

namespace {

constexpr double kMicroseconds = 1e6; // in a second

qlonglong microseconds(double seconds) { return std::llround(seconds * kMicroseconds); }

} // namespace

MprisObject::MprisObject(MediaCommands &commands, QString identity, QString applicationId)
    : commands(commands), identity(std::move(identity)), applicationId(std::move(applicationId)) {}

QDBusObjectPath MprisObject::trackId() const {
    const QString owner = QString(applicationId).replace(QLatin1Char('.'), QLatin1Char('/'));
    return QDBusObjectPath(QStringLiteral("/%1/track/%2").arg(owner).arg(trackNumber));
}

QString MprisPlayer::playbackStatus() const {
    switch (mObject.state.playback) {
    case MediaState::Playback::Playing:
        return QStringLiteral("Playing");
    case MediaState::Playback::Paused:
        return QStringLiteral("Paused");
    case MediaState::Playback::Stopped:
        break;
    }
    return QStringLiteral("Stopped");
}

QVariantMap MprisPlayer::metadata() const {
    if (!hasTrack())
        return {};
    const MediaState &state = mObject.state;
    QVariantMap metadata{{QStringLiteral("mpris:trackid"), QVariant::fromValue(mObject.trackId())},
                         {QStringLiteral("mpris:length"), microseconds(state.seconds)},
                         {QStringLiteral("xesam:title"), state.title},
                         {QStringLiteral("xesam:url"), state.track.toString(QUrl::FullyEncoded)}};
    if (!state.artist.isEmpty())
        metadata.insert(QStringLiteral("xesam:artist"), QStringList{state.artist});
    if (!state.album.isEmpty())
        metadata.insert(QStringLiteral("xesam:album"), state.album);
    return metadata;
}

qlonglong MprisPlayer::position() const { return microseconds(mObject.commands.position()); }

QVariantMap MprisPlayer::changing() const {
    return {{QStringLiteral("PlaybackStatus"), playbackStatus()},
            {QStringLiteral("Metadata"), metadata()},
            {QStringLiteral("CanGoNext"), canGoNext()},
            {QStringLiteral("CanGoPrevious"), canGoPrevious()},
            {QStringLiteral("CanPlay"), canPlay()},
            {QStringLiteral("CanPause"), canPause()},
            {QStringLiteral("CanSeek"), canSeek()}};
}

void MprisPlayer::Seek(qlonglong Offset) {
    if (!hasTrack())
        return;
    const double target = mObject.commands.position() + static_cast<double>(Offset) / kMicroseconds;
    if (target > mObject.state.seconds)
        mObject.commands.next();
    else
        mObject.commands.seek(std::max(0.0, target));
}

void MprisPlayer::SetPosition(const QDBusObjectPath &TrackId, qlonglong Position) {
    if (hasTrack() && TrackId == mObject.trackId() && Position >= 0 && Position <= microseconds(mObject.state.seconds))
        mObject.commands.seek(static_cast<double>(Position) / kMicroseconds);
}

} // namespace cantorel::desktop
