#include "tags/TagFailures.h"

#include <QFileInfo>

#include <cerrno>
#include <cstring>

namespace cantorel::tag_failures {

namespace {

QString nameOf(const QString &path) { return QFileInfo(path).fileName(); }

} // namespace

foundation::Failure noFile(const QString &path) {
    return {QStringLiteral("There is no file \"%1\".").arg(path), QStringLiteral("file can not found - %1").arg(path)};
}

foundation::Failure noTagsIn(const QString &path, const QString &extension) {
    return {QStringLiteral("\"%1\" takes no tags; convert it to MP3 or M4A first.").arg(nameOf(path)),
            QStringLiteral("'%1' format not suport id3 edit").arg(extension)}; // Spelling is fixed.
}

foundation::Failure noMovie(const QString &path) {
    return {QStringLiteral("\"%1\" is no M4A whose tags can be changed safely and was left alone; convert it first.")
                .arg(nameOf(path)),
            QStringLiteral(" 'TagLib::MP4::File' audio file is invalid \uFF01")};
}

foundation::Failure noMpeg(const QString &path) {
    return {QStringLiteral("\"%1\" holds no MP3 sound and was left alone; check its name, or convert it first.")
                .arg(nameOf(path)),
            QStringLiteral(" 'TagLib::MPEG::File' audio file is invalid \uFF01")};
}

foundation::Failure stillRecorded(const QString &path) {
    return {QStringLiteral("\"%1\" is a recording that is not finished; wait for its end.").arg(nameOf(path)),
            QStringLiteral("%1 is unfinished").arg(path)};
}

foundation::Failure notAllowed(const QString &path, int error) {
    return {QStringLiteral("\"%1\" may not be changed; check its rights and those of its folder.").arg(nameOf(path)),
            QStringLiteral("no right to change %1: %2").arg(path, QString::fromLocal8Bit(std::strerror(error)))};
}

foundation::Failure notWritten(const QString &path, int error) {
    const QString why = QString::fromLocal8Bit(std::strerror(error));
    return {error == ENOSPC || error == EDQUOT
                ? QStringLiteral("The disk has no room for \"%1\" beside itself; make room and try again.")
                      .arg(nameOf(path))
                : QStringLiteral("\"%1\" could not be written and is as it was: %2.").arg(nameOf(path), why),
            QStringLiteral("tags of %1 not written: %2").arg(path, why)};
}

foundation::Failure notProved(const QString &path) {
    return {QStringLiteral("The tags of \"%1\" could not be changed without harm; the file is as it was.")
                .arg(nameOf(path)),
            QStringLiteral("%1 read back is not what was written").arg(path)};
}

foundation::Failure changedMeanwhile(const QString &path) {
    return {QStringLiteral("\"%1\" was changed by another program meanwhile; try again.").arg(nameOf(path)),
            QStringLiteral("%1 has changed meanwhile").arg(path)};
}

} // namespace cantorel::tag_failures
