#include "tags/TagFailures.h"

#include "platform/foundation/ErrorReason.h"

#include <QFileInfo>

#include <cerrno>
#include <cstring>

namespace cantorel::tag_failures {

namespace {

using foundation::SentenceKey;

constexpr SentenceKey kNoFile("ConvertGone", "FileName"); // the converter says the same
constexpr SentenceKey kTagNone("TagNone", "FileName");
constexpr SentenceKey kTagNoMovie("TagNoMovie", "FileName");
constexpr SentenceKey kTagNoMpeg("TagNoMpeg", "FileName");
constexpr SentenceKey kTagStillRecorded("TagStillRecorded", "FileName");
constexpr SentenceKey kTagNotAllowed("TagNotAllowed", "FileName");
constexpr SentenceKey kTagNoRoom("TagNoRoom", "FileName");
constexpr SentenceKey kTagNotWritten("TagNotWritten", "FileName", "Reason");
constexpr SentenceKey kTagNotProved("TagNotProved", "FileName");
constexpr SentenceKey kTagChanged("TagChanged", "FileName");

QString nameOf(const QString &path) { return QFileInfo(path).fileName(); }

} // namespace

foundation::Failure noFile(const QString &path) {
    return {kNoFile(nameOf(path)), QStringLiteral("file can not found - %1").arg(path)};
}

foundation::Failure noTagsIn(const QString &path, const QString &extension) {
    return {kTagNone(nameOf(path)),
            QStringLiteral("'%1' format not suport id3 edit").arg(extension)}; // Spelling is fixed.
}

foundation::Failure noMovie(const QString &path) {
    return {kTagNoMovie(nameOf(path)), QStringLiteral(" 'TagLib::MP4::File' audio file is invalid \uFF01")};
}

foundation::Failure noMpeg(const QString &path) {
    return {kTagNoMpeg(nameOf(path)), QStringLiteral(" 'TagLib::MPEG::File' audio file is invalid \uFF01")};
}

foundation::Failure stillRecorded(const QString &path) {
    return {kTagStillRecorded(nameOf(path)), QStringLiteral("%1 is unfinished").arg(path)};
}

foundation::Failure notAllowed(const QString &path, int error) {
    return {kTagNotAllowed(nameOf(path)),
            QStringLiteral("no right to change %1: %2").arg(path, QString::fromLocal8Bit(std::strerror(error)))};
}

foundation::Failure notWritten(const QString &path, int error) {
    const QString why = QString::fromLocal8Bit(std::strerror(error));
    return {error == ENOSPC || error == EDQUOT ? kTagNoRoom(nameOf(path))
                                               : kTagNotWritten(nameOf(path), foundation::errorReason(error)),
            QStringLiteral("tags of %1 not written: %2").arg(path, why)};
}

foundation::Failure notProved(const QString &path) {
    return {kTagNotProved(nameOf(path)), QStringLiteral("%1 read back is not what was written").arg(path)};
}

foundation::Failure changedMeanwhile(const QString &path) {
    return {kTagChanged(nameOf(path)), QStringLiteral("%1 has changed meanwhile").arg(path)};
}

} // namespace cantorel::tag_failures
