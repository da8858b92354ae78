#include "platform/media/DiskSpace.h"

#include "platform/media/Codecs.h"

#include <QFile>
#include <QFileInfo>

#include <sys/statvfs.h>

#include <cerrno>
#include <cmath>
#include <cstring>

namespace cantorel::media {

namespace {

// Of a packet, in the tables of the file and its fragments.
constexpr double kIndexBytesPerPacket = 14;

constexpr foundation::SentenceKey kConvertFolder("ConvertFolder", "Folder");

} // namespace

std::optional<std::uint64_t> freeBytes(const QString &path) {
    struct statvfs space {};
    QString place = QFileInfo(path).absoluteFilePath();
    while (::statvfs(QFile::encodeName(place).constData(), &space) != 0) {
        const QString parent = QFileInfo(place).absolutePath();
        if ((errno != ENOENT && errno != ENOTDIR) || parent == place)
            return {};
        place = parent;
    }
    return std::uint64_t{space.f_bavail} * space.f_frsize;
}

foundation::Failure folderFailed(const QString &folder, int error) {
    const bool full = error == ENOSPC || error == EDQUOT || error == EFBIG;
    return {full ? kDiskFull(folder) : kConvertFolder(folder), QStringLiteral("a file in %1: errno %2, %3")
                                                                   .arg(folder)
                                                                   .arg(error)
                                                                   .arg(QString::fromLocal8Bit(std::strerror(error)))};
}

double recordingBytesPerSecond(double sampleRate) {
    return defaultAacBitRate(static_cast<int>(std::lround(sampleRate))) / 8.0
           + sampleRate / kFramesPerPacket * kIndexBytesPerPacket;
}

} // namespace cantorel::media
