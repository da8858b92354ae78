#include "platform/media/MediaFailures.h"

#include "platform/foundation/ErrorReason.h"

#include <cerrno>

namespace cantorel::media::failures {

using foundation::Failure;

namespace {

constexpr foundation::SentenceKey kNotCreated("NotCreated", "FileName", "Reason");
constexpr foundation::SentenceKey kNoRoomLeft("NoRoomLeft", "FileName");
constexpr foundation::SentenceKey kNotWritten("NotWritten", "FileName", "Reason");
constexpr foundation::SentenceKey kDiskNearlyFull("DiskNearlyFull", "FileName");
constexpr foundation::SentenceKey kFileRemoved("FileRemoved", "FileName");
constexpr foundation::SentenceKey kNotRescued("NotRescued", "FileName");
constexpr foundation::SentenceKey kNotOpened("NotOpened", "Device");
constexpr foundation::SentenceKey kNoDevice("NoDevice");
constexpr foundation::SentenceKey kFormatChanged("FormatChanged", "Device");

} // namespace

Failure cannotCreate(const QString &path, int error) {
    return {kNotCreated(path, foundation::errorReason(error)),
            QStringLiteral("create %1: errno %2").arg(path).arg(error)};
}

Failure writeFailed(const QString &path, int error) {
    const bool full = error == ENOSPC || error == EDQUOT || error == EFBIG;
    return {full ? kNoRoomLeft(path) : kNotWritten(path, foundation::errorReason(error)),
            QStringLiteral("write %1: errno %2").arg(path).arg(error)};
}

Failure reserveReached(const QString &path) {
    return {kDiskNearlyFull(path), QStringLiteral("disk reserve reached for %1").arg(path)};
}

Failure fileRemoved(const QString &path) { return {kFileRemoved(path), QStringLiteral("%1 was removed").arg(path)}; }

Failure notRescued(const QString &path, const Failure &why) { return {kNotRescued(path), why.detail}; }

Failure notUnfinished(const QString &path) {
    return {QStringLiteral("\"%1\" is no unfinished recording.").arg(path), QStringLiteral("no mark in %1").arg(path)};
}

Failure nothingToRepair(const QString &path) {
    return {QStringLiteral("The unfinished recording \"%1\" holds no sound.").arg(path),
            QStringLiteral("no whole fragment in %1").arg(path)};
}

Failure deviceNotOpened(const QString &name) { return {kNotOpened(name), QStringLiteral("open %1").arg(name)}; }

Failure noDevice() { return {kNoDevice(), QStringLiteral("recording without an input")}; }

Failure formatChanged(const QString &name) { return {kFormatChanged(name), QStringLiteral("format of %1").arg(name)}; }

} // namespace cantorel::media::failures
