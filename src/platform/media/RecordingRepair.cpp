#include "platform/media/RecordingRepair.h"

#include "platform/foundation/FileDescriptor.h"
#include "platform/media/FragmentedFile.h"
#include "platform/media/MediaFailures.h"
#include "platform/media/MovieBoxes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <numeric>
#include <optional>
#include <vector>

namespace cantorel::media {

using foundation::FileDescriptor;
using foundation::Result;

namespace {

constexpr std::uint64_t kLargestStart = 4096;
constexpr std::uint64_t kLargestFragmentHeader = 1 << 20;
constexpr std::size_t kCopyPiece = 1 << 20;
constexpr std::size_t kTellingFragments = 64;

std::vector<std::uint8_t> readAt(const FileDescriptor &file, std::uint64_t position, std::uint64_t count) {
    std::vector<std::uint8_t> bytes(count);
    std::size_t got = 0;
    while (got < bytes.size()) {
        const ssize_t part =
            ::pread(file.get(), bytes.data() + got, bytes.size() - got, static_cast<off_t>(position + got));
        if (part < 0 && errno == EINTR)
            continue;
        if (part <= 0)
            break; // what cannot be read counts as cut off
        got += static_cast<std::size_t>(part);
    }
    bytes.resize(got);
    return bytes;
}

std::uint32_t bigEndian(const std::vector<std::uint8_t> &bytes, std::size_t position) {
    return static_cast<std::uint32_t>(bytes[position]) << 24 | static_cast<std::uint32_t>(bytes[position + 1]) << 16
           | static_cast<std::uint32_t>(bytes[position + 2]) << 8 | bytes[position + 3];
}

bool isBox(const std::vector<std::uint8_t> &header, std::string_view type) {
    return header.size() == 8 && std::equal(type.begin(), type.end(), header.begin() + 4);
}

struct Found {
    SampleTable table;
    std::uint64_t end = 0; // behind the last whole fragment
};

constexpr std::size_t kAllFragments = SIZE_MAX;

Found wholeFragments(const FileDescriptor &file, std::uint64_t position, std::uint64_t fileSize, std::size_t most) {
    Found found;
    found.end = position;
    for (std::size_t fragments = 0; fragments < most; ++fragments) {
        const auto moofHeader = readAt(file, position, 8);
        if (!isBox(moofHeader, "moof"))
            break;
        const std::uint64_t moofSize = bigEndian(moofHeader, 0);
        if (moofSize > kLargestFragmentHeader)
            break;
        const auto sizes = readFragmentSizes(readAt(file, position, moofSize));
        const auto mdatHeader = readAt(file, position + moofSize, 8);
        if (!sizes || !isBox(mdatHeader, "mdat"))
            break;
        const std::uint64_t payload = position + moofSize + 8;
        const std::uint64_t bytes = std::accumulate(sizes->begin(), sizes->end(), std::uint64_t{0});
        if (bigEndian(mdatHeader, 0) != bytes + 8 || payload + bytes > fileSize)
            break;
        found.table.addChunk(payload, *sizes);
        position = payload + bytes;
        found.end = position;
    }
    return found;
}

// 0 or an errno.
int copyBytes(const FileDescriptor &from, const FileDescriptor &to, std::uint64_t count) {
    std::uint64_t done = 0;
    while (done < count) {
        const auto piece = readAt(from, done, std::min<std::uint64_t>(kCopyPiece, count - done));
        if (piece.empty())
            return EIO;
        for (std::size_t put = 0; put < piece.size();) {
            const ssize_t part =
                ::pwrite(to.get(), piece.data() + put, piece.size() - put, static_cast<off_t>(done + put));
            if (part < 0 && errno == EINTR)
                continue;
            if (part <= 0)
                return part < 0 ? errno : EIO;
            put += static_cast<std::size_t>(part);
        }
        done += piece.size();
    }
    return 0;
}

std::optional<UnfinishedStart> startOf(const FileDescriptor &file) {
    return readMovieStart(readAt(file, 0, kLargestStart));
}

FileDescriptor openToRead(const QString &path) {
    return FileDescriptor(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
}

} // namespace

bool isUnfinished(const QString &path) {
    const FileDescriptor file = openToRead(path);
    return file.isOpen() && startOf(file);
}

double unfinishedSeconds(const QString &path) {
    const FileDescriptor file = openToRead(path);
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0)
        return 0;
    const auto start = startOf(file);
    if (!start)
        return 0;
    const auto size = static_cast<std::uint64_t>(status.st_size);
    const Found first = wholeFragments(file, start->size, size, kTellingFragments);
    const auto frames = static_cast<double>(first.table.packets()) * kFramesPerPacket
                        - static_cast<double>(start->format.primingFrames);
    if (frames <= 0)
        return 0;
    const bool isAll = wholeFragments(file, first.end, size, 1).end == first.end;
    const double told = static_cast<double>(first.end - start->size), all = static_cast<double>(size - start->size);
    return frames / start->format.sampleRate * (isAll ? 1 : all / told);
}

Result<RepairedFile> repairUnfinished(const QString &path, const QString &copyPath) {
    const FileDescriptor file = openToRead(path);
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0)
        return failures::cannotRead(path, errno);
    const auto start = startOf(file);
    if (!start)
        return failures::notUnfinished(path);
    Found found = wholeFragments(file, start->size, static_cast<std::uint64_t>(status.st_size), kAllFragments);
    const std::int64_t frames =
        static_cast<std::int64_t>(found.table.packets()) * kFramesPerPacket - start->format.primingFrames;
    if (frames <= 0)
        return failures::nothingToRepair(path);

    const QFileInfo target(copyPath);
    const QByteArray temporary = QFile::encodeName(
        target.dir().filePath(QStringLiteral(".%1.%2.repair").arg(target.fileName()).arg(::getpid())));
    FileDescriptor copy(::open(temporary.constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!copy.isOpen())
        return failures::cannotCreate(copyPath, errno);
    const auto giveUp = [&](const foundation::Failure &failure) {
        ::unlink(temporary.constData());
        return failure;
    };
    if (const int error = copyBytes(file, copy, found.end))
        return giveUp(failures::writeFailed(copyPath, error));
    const auto whole =
        FragmentedFile::resume(copyPath, std::move(copy), start->format, std::move(found.table), found.end);
    const auto form = whole->finish(frames);
    if (!form)
        return giveUp(form.failure());
    if (form.value() != FileForm::Ordinary)
        return giveUp(failures::writeFailed(copyPath, ENOSPC));
    if (::rename(temporary.constData(), QFile::encodeName(copyPath).constData()) != 0)
        return giveUp(failures::cannotCreate(copyPath, errno));
    const FileDescriptor folder(
        ::open(QFile::encodeName(target.absolutePath()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.isOpen())
        (void)::fsync(folder.get()); // not every file system can; the file itself is safe
    return RepairedFile{static_cast<double>(frames) / start->format.sampleRate, whole->bytes()};
}

} // namespace cantorel::media
