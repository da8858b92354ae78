#include "platform/media/FragmentedFile.h"

#include "platform/media/MediaFailures.h"
#include "platform/media/MovieBoxes.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

namespace cantorel::media {

using foundation::Result;

namespace {

// The kernel has every fragment at once; this is how much a power cut may take.
constexpr int kSecondsBetweenSyncs = 5;

// 0 or an errno.
int writeAll(int file, std::uint64_t position, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(position));
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return errno;
        }
        // A short write is followed by the error that explains it.
        position += static_cast<std::uint64_t>(written);
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return 0;
}

int copyAll(int from, int to) {
    std::array<std::uint8_t, 1 << 16> bytes;
    for (std::uint64_t position = 0;;) {
        const ssize_t got = ::pread(from, bytes.data(), bytes.size(), static_cast<off_t>(position));
        if (got == 0)
            return ::fsync(to) == 0 ? 0 : errno;
        if (got < 0 && errno != EINTR)
            return errno;
        if (got < 0)
            continue;
        if (const int error = writeAll(to, position, std::span(bytes).first(static_cast<std::size_t>(got))))
            return error;
        position += static_cast<std::uint64_t>(got);
    }
}

} // namespace

FragmentedFile::FragmentedFile(QString path, foundation::FileDescriptor file, const MovieFormat &format)
    : mPath(std::move(path)), mFile(std::move(file)), mFormat(format) {}

Result<std::unique_ptr<FragmentedFile>> FragmentedFile::create(const QString &path, const MovieFormat &format,
                                                               Taken taken) {
    foundation::FileDescriptor file(::open(QFile::encodeName(path).constData(),
                                           O_RDWR | O_CREAT | O_CLOEXEC | (taken == Taken::Fails ? O_EXCL : O_TRUNC),
                                           0666));
    if (!file.isOpen())
        return failures::cannotCreate(path, errno);
    std::unique_ptr<FragmentedFile> made(new FragmentedFile(path, std::move(file), format));
    const BoxBuffer start = movieStart(format);
    if (const int error = made->writeAt(0, start.data())) {
        QFile::remove(path); // nothing of it could be played
        return failures::writeFailed(path, error);
    }
    made->mEnd = start.size();
    return made;
}

std::unique_ptr<FragmentedFile> FragmentedFile::resume(const QString &path, foundation::FileDescriptor file,
                                                       const MovieFormat &format, MovieTable table, std::uint64_t end) {
    std::unique_ptr<FragmentedFile> made(new FragmentedFile(path, std::move(file), format));
    made->mTable = std::move(table);
    made->mEnd = end;
    return made;
}

int FragmentedFile::writeAt(std::uint64_t position, std::span<const std::uint8_t> bytes) {
    return writeAll(mFile.get(), position, bytes);
}

bool FragmentedFile::isLost() const {
    struct stat state {};
    return ::fstat(mFile.get(), &state) == 0 && state.st_nlink == 0 && !QFileInfo(QFileInfo(mPath).path()).isDir();
}

QString FragmentedFile::place() const {
    if (QFileInfo::exists(mPath))
        return mPath;
    const QString now = QFile::symLinkTarget(QStringLiteral("/proc/self/fd/%1").arg(mFile.get()));
    return QFileInfo::exists(now) ? now : QString();
}

Result<void> FragmentedFile::copyTo(const QString &path) const {
    const foundation::FileDescriptor copy(
        ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!copy.isOpen())
        return failures::cannotCreate(path, errno);
    if (const int error = copyAll(mFile.get(), copy.get())) {
        QFile::remove(path);
        return failures::cannotCreate(path, error);
    }
    return {};
}

void FragmentedFile::cutBack() {
    // Where even this fails, the torn piece stays and readers stop in front of it.
    if (::ftruncate(mFile.get(), static_cast<off_t>(mEnd)) != 0)
        return;
}

double FragmentedFile::seconds() const {
    if (mFormat.pictures)
        return static_cast<double>(mTable.pictures.duration()) / kPictureTimescale;
    return static_cast<double>(mTable.sound.packets()) * kFramesPerPacket / mFormat.sound->sampleRate;
}

Result<void> FragmentedFile::append(const PacketRun &packets, const PictureRun &pictures) {
    if (packets.sizes.empty() && pictures.entries.empty())
        return {};
    if (mError)
        return failures::writeFailed(mPath, mError);
    BoxBuffer fragment = fragmentStart(mFragments + 1, mTable.sound.packets() * kFramesPerPacket, packets,
                                       mTable.pictures.duration(), pictures);
    const std::uint64_t payload = mEnd + fragment.size();
    fragment.bytes(pictures.bytes);
    fragment.bytes(packets.bytes);
    mError = writeAt(mEnd, fragment.data());
    if (mError) {
        cutBack();
        return failures::writeFailed(mPath, mError);
    }
    ++mFragments;
    if (!pictures.entries.empty())
        mTable.pictures.addChunk(payload, pictures.entries);
    if (!packets.sizes.empty())
        mTable.sound.addChunk(payload + pictures.bytes.size(), packets.sizes);
    mEnd += fragment.size();

    if (seconds() - mSyncedSeconds >= kSecondsBetweenSyncs) {
        mSyncedSeconds = seconds();
        if (::fdatasync(mFile.get()) != 0 && errno != EINVAL) {
            mError = errno;
            return failures::writeFailed(mPath, mError);
        }
    }
    return {};
}

Result<FileForm> FragmentedFile::finish(std::int64_t validFrames) {
    std::uint64_t position = mEnd;
    const bool whole = writeMovie(mFormat, mTable, validFrames, [&](std::span<const std::uint8_t> piece) {
        const bool written = writeAt(position, piece) == 0;
        position += piece.size();
        return written;
    });
    // The index is on the disk before anything points at it.
    if (!whole || ::fdatasync(mFile.get()) != 0) {
        cutBack();
        (void)::fdatasync(mFile.get()); // the fragments play in any case
        return FileForm::Fragments;
    }
    if (const int error = writeAt(kPlaceholderPosition, swallowingHeader(mEnd).data()))
        return failures::writeFailed(mPath, error);
    mEnd = position;
    if (::fsync(mFile.get()) != 0)
        return failures::writeFailed(mPath, errno);
    return FileForm::Ordinary;
}

} // namespace cantorel::media
