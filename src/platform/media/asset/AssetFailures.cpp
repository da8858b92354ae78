#include "platform/media/asset/AssetFailures.h"

#include "platform/foundation/ErrorReason.h"

namespace cantorel::media::failures {

using foundation::Failure;

namespace {

constexpr foundation::SentenceKey kCodecsMissing("CodecsMissing");
constexpr foundation::SentenceKey kNotRead("NotRead", "FileName", "Reason");
constexpr foundation::SentenceKey kNotSound("NotSound", "FileName");
constexpr foundation::SentenceKey kChangedWhileRead("ChangedWhileRead", "FileName");

} // namespace

Failure codecsMissing(const QString &detail) { return {kCodecsMissing(), detail}; }

Failure cannotRead(const QString &path, int error) {
    return {kNotRead(path, foundation::errorReason(error)), QStringLiteral("read %1: errno %2").arg(path).arg(error)};
}

Failure notSound(const QString &path, const QString &detail) {
    return {kNotSound(path), QStringLiteral("%1: %2").arg(path, detail)};
}

Failure changedWhileRead(const QString &path) {
    return {kChangedWhileRead(path), QStringLiteral("size or time of %1 changed").arg(path)};
}

} // namespace cantorel::media::failures
