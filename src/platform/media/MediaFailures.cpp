#include "platform/media/MediaFailures.h"

#include <cerrno>
#include <cstring>

namespace cantorel::media::failures {

using foundation::Failure;

namespace {

QString reason(int error) { return QString::fromLocal8Bit(std::strerror(error)); }

} // namespace

Failure codecsMissing(const QString &detail) {
    return {QStringLiteral("The sound codecs of this program are missing; install it again."), detail};
}

Failure cannotCreate(const QString &path, int error) {
    return {
        QStringLiteral("The recording \"%1\" cannot be created: %2. Choose another folder.").arg(path, reason(error)),
        QStringLiteral("create %1: errno %2").arg(path).arg(error)};
}

Failure cannotRead(const QString &path, int error) {
    return {QStringLiteral("\"%1\" cannot be read: %2.").arg(path, reason(error)),
            QStringLiteral("read %1: errno %2").arg(path).arg(error)};
}

Failure writeFailed(const QString &path, int error) {
    const bool full = error == ENOSPC || error == EDQUOT || error == EFBIG;
    return {full ? QStringLiteral("There is no room left for \"%1\"; what was recorded until now is kept.").arg(path)
                 : QStringLiteral("Writing \"%1\" failed: %2. What was recorded until now is kept.")
                       .arg(path, reason(error)),
            QStringLiteral("write %1: errno %2").arg(path).arg(error)};
}

Failure reserveReached(const QString &path) {
    return {
        QStringLiteral("The disk that holds \"%1\" is nearly full; the recording was ended and is kept. Make room or "
                       "choose another folder.")
            .arg(path),
        QStringLiteral("disk reserve reached for %1").arg(path)};
}

Failure notRescued(const QString &path, const Failure &why) {
    return {QStringLiteral("The folder of \"%1\" was removed while it was recorded to, and what was recorded could not "
                           "be copied to another one; choose a folder that stays.")
                .arg(path),
            why.detail};
}

Failure notUnfinished(const QString &path) {
    return {QStringLiteral("\"%1\" is no unfinished recording.").arg(path), QStringLiteral("no mark in %1").arg(path)};
}

Failure nothingToRepair(const QString &path) {
    return {QStringLiteral("The unfinished recording \"%1\" holds no sound.").arg(path),
            QStringLiteral("no whole fragment in %1").arg(path)};
}

Failure deviceNotOpened(const QString &name) {
    return {QStringLiteral(
                "The device \"%1\" cannot be opened for recording; check that it is connected, or choose another one.")
                .arg(name),
            QStringLiteral("open %1").arg(name)};
}

Failure noDevice() {
    return {QStringLiteral("There is no device to record from; connect one."),
            QStringLiteral("recording without an input")};
}

Failure formatChanged(const QString &name) {
    return {
        QStringLiteral("The device \"%1\" has changed its sample rate or its channels; what was recorded until then "
                       "is kept. Start a new recording.")
            .arg(name),
        QStringLiteral("format of %1").arg(name)};
}

} // namespace cantorel::media::failures
