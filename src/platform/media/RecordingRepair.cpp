#include "platform/media/RecordingRepair.h"

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/FileIdentity.h"
#include "platform/foundation/HiddenFile.h"
#include "platform/media/FragmentedFile.h"
#include "platform/media/MediaFailures.h"
#include "platform/media/MovieReading.h"
#include "platform/media/asset/MediaTime.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <numeric>
#include <optional>
#include <vector>

namespace cantorel::media {

using foundation::FileDescriptor;
using foundation::FileIdentity;
using foundation::HiddenFile;
using foundation::Result;

namespace {

constexpr std::uint64_t kLargestStart = 4096;
constexpr std::uint64_t kLargestFragmentHeader = 1 << 16;
constexpr std::uint64_t kLargestFragment = 1 << 17; // as a recording is written, a second at most
constexpr std::uint64_t kPiece = 1 << 20;
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
    MovieTable table;
    std::size_t fragments = 0;
    std::uint64_t end = 0; // behind the last whole fragment
    // What would come next if nothing was lost.
    std::uint64_t nextPicture = 0;
    std::uint64_t nextFrame = 0;
};

constexpr std::size_t kAllFragments = SIZE_MAX;
enum class Damage { Ends, IsPassedOver };

std::uint64_t lengthOf(const std::vector<PictureRun::Entry> &pictures) {
    return std::accumulate(pictures.begin(), pictures.end(), std::uint64_t{0},
                           [](std::uint64_t sum, const PictureRun::Entry &entry) { return sum + entry.length; });
}

// Adds the fragment at the position; nothing when none is whole there.
std::optional<std::uint64_t> takeFragment(const FileDescriptor &file, std::uint64_t position, std::uint64_t fileSize,
                                          const MovieFormat &format, Found &found) {
    const auto moofHeader = readAt(file, position, 8);
    if (!isBox(moofHeader, "moof"))
        return {};
    const std::uint64_t moofSize = bigEndian(moofHeader, 0);
    if (moofSize > kLargestFragmentHeader)
        return {};
    const auto runs = readFragment(readAt(file, position, moofSize));
    const auto mdatHeader = readAt(file, position + moofSize, 8);
    if (!runs || !isBox(mdatHeader, "mdat"))
        return {};
    const std::uint64_t payload = position + moofSize + 8;
    const std::uint64_t pictures = runs->pictureBytes(), bytes = pictures + runs->packetBytes();
    if (bigEndian(mdatHeader, 0) != bytes + 8 || payload + bytes > fileSize)
        return {};
    MovieTable &table = found.table;
    if (format.pictures && format.sound && !runs->pictures.empty() && !runs->packetSizes.empty()) {
        // What is lost of both is not lost at the same moment; the picture in front of it makes up for that.
        const auto pictures = static_cast<std::int64_t>(runs->firstPicture - found.nextPicture);
        const MediaTime frames{static_cast<std::int64_t>(runs->firstFrame - found.nextFrame), format.sound->sampleRate};
        if (pictures != 0)
            table.pictures.prolongLast(pictures - frames.in(kPictureTimescale).value);
    }
    if (!runs->pictures.empty())
        found.nextPicture = runs->firstPicture + lengthOf(runs->pictures);
    found.nextFrame =
        runs->packetSizes.empty() ? found.nextFrame : runs->firstFrame + runs->packetSizes.size() * kFramesPerPacket;
    if (!runs->pictures.empty())
        table.pictures.addChunk(payload, runs->pictures);
    if (!runs->packetSizes.empty())
        table.sound.addChunk(payload + pictures, runs->packetSizes);
    return payload + bytes;
}

// Where the next fragment may begin.
std::optional<std::uint64_t> findFragment(const FileDescriptor &file, std::uint64_t position) {
    constexpr std::string_view kType = "moof";
    for (;;) {
        const auto piece = readAt(file, position + 4, kPiece);
        const auto found = std::search(piece.begin(), piece.end(), kType.begin(), kType.end());
        if (found != piece.end())
            return position + static_cast<std::uint64_t>(found - piece.begin());
        if (piece.size() < kPiece)
            return {};
        position += piece.size() - (kType.size() - 1);
    }
}

Found wholeFragments(const FileDescriptor &file, const UnfinishedStart &start, std::uint64_t fileSize, std::size_t most,
                     Damage damage) {
    std::uint64_t position = start.size;
    Found found;
    found.end = position;
    while (found.fragments < most && position < fileSize) {
        if (const auto end = takeFragment(file, position, fileSize, start.format, found)) {
            ++found.fragments;
            found.end = position = *end;
            continue;
        }
        const auto next = damage == Damage::IsPassedOver ? findFragment(file, position + 1) : std::nullopt;
        if (!next)
            break;
        position = *next;
    }
    return found;
}

std::int64_t heardFrames(const Found &found, const MovieFormat &format) {
    if (!format.sound)
        return 0;
    return static_cast<std::int64_t>(found.table.sound.packets()) * kFramesPerPacket - format.sound->primingFrames;
}

// What it plays for: a movie as long as there are pictures, else sound.
double seconds(const Found &found, const MovieFormat &format) {
    if (format.pictures)
        return static_cast<double>(found.table.pictures.duration()) / kPictureTimescale;
    return std::max(0.0, static_cast<double>(heardFrames(found, format))) / format.sound->sampleRate;
}

int bitRate(const MovieFormat &format) {
    return (format.pictures ? format.pictures->bitRate : 0) + (format.sound ? format.sound->bitRate : 0);
}

// 0 or an errno.
int copyBytes(const FileDescriptor &from, const FileDescriptor &to, std::uint64_t count) {
    std::uint64_t done = 0;
    while (done < count) {
        const auto piece = readAt(from, done, std::min(kPiece, count - done));
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

std::uint64_t sizeOf(const FileDescriptor &file) {
    struct stat status {};
    return ::fstat(file.get(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

} // namespace

bool isUnfinished(const FileDescriptor &file) { return file.isOpen() && startOf(file); }

bool isUnfinished(const QString &path) { return isUnfinished(openToRead(path)); }

UnfinishedSound unfinishedSound(const QString &path) {
    const FileDescriptor file = openToRead(path);
    const auto start = file.isOpen() ? startOf(file) : std::nullopt;
    if (!start)
        return UnfinishedSound::None;
    const std::uint64_t size = sizeOf(file);
    const auto fragments = [&](Damage damage) { return wholeFragments(file, *start, size, kTellingFragments, damage); };
    if (seconds(fragments(Damage::IsPassedOver), start->format) > 0)
        return UnfinishedSound::Whole;
    // The coder's priming alone is no sound.
    return fragments(Damage::Ends).end >= size ? UnfinishedSound::None : UnfinishedSound::Lost;
}

double unfinishedSeconds(const QString &path) {
    const FileDescriptor file = openToRead(path);
    const auto start = file.isOpen() ? startOf(file) : std::nullopt;
    if (!start)
        return 0;
    const std::uint64_t size = sizeOf(file);
    const Found first = wholeFragments(file, *start, size, kTellingFragments, Damage::Ends);
    const double known = seconds(first, start->format);
    if (first.fragments < kTellingFragments && size - first.end < kLargestFragment)
        return known;
    const auto told = static_cast<double>(first.end - start->size), all = static_cast<double>(size - start->size);
    return known > 0 ? known * all / told : all * 8 / std::max(bitRate(start->format), 1);
}

std::optional<double> movieSeconds(const QString &path) {
    const FileDescriptor file = openToRead(path);
    if (!file.isOpen())
        return {};
    return finishedMovieSeconds(
        [&](std::uint64_t position, std::uint64_t count) { return readAt(file, position, count); });
}

Result<RepairedFile> repairUnfinished(const QString &path, const QString &copyPath) {
    const FileDescriptor file = openToRead(path);
    if (!file.isOpen())
        return failures::cannotRead(path, errno);
    const auto start = startOf(file);
    if (!start)
        return failures::notUnfinished(path);
    const FileIdentity replaced(copyPath);
    const std::uint64_t size = sizeOf(file);
    Found found = wholeFragments(file, *start, size, kAllFragments, Damage::IsPassedOver);
    const double length = seconds(found, start->format);
    if (length <= 0)
        return failures::nothingToRepair(path);

    const QFileInfo target(copyPath);
    int error = 0;
    auto copy = HiddenFile::create(target.absolutePath(),
                                   start->format.pictures ? QStringLiteral("mp4") : QStringLiteral("m4a"), error);
    if (!copy)
        return failures::cannotCreate(copyPath, error);
    error = copyBytes(file, copy->descriptor(), size);
    if (error)
        return failures::writeFailed(copyPath, error);
    const auto whole =
        FragmentedFile::resume(copyPath, copy->descriptor().duplicate(), start->format, found.table, size);
    const auto form = whole->finish(std::max<std::int64_t>(heardFrames(found, start->format), 0));
    if (!form)
        return form.failure();
    if (form.value() != FileForm::Ordinary)
        return failures::writeFailed(copyPath, ENOSPC);
    error = copy->flush();
    if (!error && (isUnfinished(copy->path()) || sizeOf(copy->descriptor()) != whole->bytes()))
        error = EIO;
    if (!error)
        error = replaced.isAt(copyPath) ? copy->replace(copyPath, replaced) : copy->take(copyPath);
    if (error)
        return failures::cannotCreate(copyPath, error);
    return RepairedFile{length, whole->bytes()};
}

} // namespace cantorel::media
