#include "tags/SplicedFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace cantorel {

namespace {

constexpr std::int64_t kShort = 4096, kWindow = 2 * kShort;

} // namespace

std::int64_t readAll(const foundation::FileDescriptor &file, char *to, std::int64_t at, std::int64_t count) {
    constexpr std::int64_t kShortOnlyAtTheEnd = 2 * kShort; // a read so short is not interrupted half-way
    std::int64_t done = 0;
    while (done < count) {
        const ssize_t got = ::pread(file.get(), to + done, static_cast<std::size_t>(count - done), at + done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        done += got;
        if (count <= kShortOnlyAtTheEnd)
            break;
    }
    return done;
}

SplicedFile::SplicedFile(const foundation::FileDescriptor &file) : mFile(file) {
    struct stat status {};
    mHasFailed = ::fstat(file.get(), &status) != 0;
    mSize = mHasFailed ? 0 : status.st_size;
    if (mSize > 0)
        mPieces.push_back({0, mSize, {}});
}

SplicedFile SplicedFile::original() const {
    SplicedFile original(mFile);
    original.mWindows = mWindows;
    return original;
}

std::int64_t SplicedFile::readOld(char *to, std::int64_t at, std::int64_t count) const {
    if (count <= kShort) {
        const auto holds = [&](const Window &one) { return at >= one.at && at + count <= one.at + one.bytes.size(); };
        if (!holds(mWindows[0]))
            std::swap(mWindows[0], mWindows[1]);
        Window &window = mWindows[0];
        if (!holds(window)) {
            window.at = at / kShort * kShort;
            window.bytes.resize(kWindow);
            window.bytes.truncate(readAll(mFile, window.bytes.data(), window.at, kWindow));
        }
        count = std::clamp<std::int64_t>(window.at + window.bytes.size() - at, 0, count);
        std::memcpy(to, window.bytes.constData() + (at - window.at), static_cast<std::size_t>(count));
        return count;
    }
    return readAll(mFile, to, at, count);
}

std::int64_t SplicedFile::readTo(char *to, std::int64_t at, std::int64_t count) const {
    std::int64_t done = 0, begin = 0;
    for (const FilePiece &piece : mPieces) {
        const std::int64_t skipped = std::max<std::int64_t>(at + done - begin, 0);
        begin += piece.length;
        if (done == count || skipped >= piece.length)
            continue;
        const std::int64_t wanted = std::min(piece.length - skipped, count - done);
        if (piece.at < 0) {
            std::memcpy(to + done, piece.bytes.constData() + skipped, static_cast<std::size_t>(wanted));
            done += wanted;
            continue;
        }
        const std::int64_t got = readOld(to + done, piece.at + skipped, wanted);
        done += got;
        if (got < wanted) { // a fault of the disk, or it has become shorter meanwhile
            mHasFailed = true;
            break;
        }
    }
    return done;
}

QByteArray SplicedFile::read(std::int64_t at, std::int64_t count) const {
    if (at < 0 || at >= mSize || count <= 0)
        return {};
    QByteArray bytes(std::min(count, mSize - at), Qt::Uninitialized);
    bytes.truncate(readTo(bytes.data(), at, bytes.size()));
    return bytes;
}

// The first piece behind that place, at which no piece goes on afterwards.
std::size_t SplicedFile::cutAt(std::int64_t at) {
    std::size_t index = 0;
    for (std::int64_t begin = 0; index < mPieces.size() && begin < at; ++index) {
        const std::int64_t inside = at - begin;
        FilePiece &piece = mPieces[index];
        begin += piece.length;
        if (inside >= piece.length)
            continue;
        const bool isOld = piece.at >= 0;
        FilePiece rest{isOld ? piece.at + inside : -1, piece.length - inside,
                       isOld ? QByteArray() : piece.bytes.mid(inside)};
        piece.length = inside;
        piece.bytes.truncate(isOld ? 0 : inside);
        mPieces.insert(mPieces.begin() + static_cast<std::ptrdiff_t>(index) + 1, std::move(rest));
        return index + 1;
    }
    return index;
}

void SplicedFile::splice(std::int64_t at, std::int64_t replaced, const QByteArray &bytes) {
    at = std::clamp<std::int64_t>(at, 0, mSize);
    replaced = std::clamp<std::int64_t>(replaced, 0, mSize - at);
    if (replaced == 0 && bytes.isEmpty())
        return;
    const auto first = static_cast<std::ptrdiff_t>(cutAt(at)), last = static_cast<std::ptrdiff_t>(cutAt(at + replaced));
    mPieces.erase(mPieces.begin() + first, mPieces.begin() + last);
    mSize += bytes.size() - replaced;
    if (bytes.isEmpty())
        return;
    // Many small numbers that are written one behind the other are one piece.
    if (first > 0 && mPieces[static_cast<std::size_t>(first) - 1].at < 0) {
        FilePiece &before = mPieces[static_cast<std::size_t>(first) - 1];
        before.bytes += bytes;
        before.length += bytes.size();
    } else
        mPieces.insert(mPieces.begin() + first, {-1, bytes.size(), bytes});
}

// Where in the file a stretch stands as it is; below 0 when it was put together.
std::int64_t SplicedFile::oldPlace(std::int64_t at, std::int64_t count) const {
    std::int64_t begin = 0;
    for (const FilePiece &piece : mPieces) {
        if (piece.at >= 0 && begin <= at && at + count <= begin + piece.length)
            return piece.at + at - begin;
        begin += piece.length;
    }
    return -1;
}

bool haveSameBytes(const SplicedFile &one, std::int64_t oneAt, const SplicedFile &other, std::int64_t otherAt,
                   std::int64_t count) {
    const std::int64_t place = &one.mFile == &other.mFile ? one.oldPlace(oneAt, count) : -1;
    if (place >= 0 && place == other.oldPlace(otherAt, count))
        return true;
    constexpr std::int64_t kAtOnce = 32 << 10; // what a processor keeps at hand
    std::array<char, kAtOnce> bytes, others;
    for (std::int64_t done = 0; done < count; done += kAtOnce) {
        const std::int64_t length = std::min(kAtOnce, count - done);
        if (one.readTo(bytes.data(), oneAt + done, length) != length
            || other.readTo(others.data(), otherAt + done, length) != length
            || std::memcmp(bytes.data(), others.data(), static_cast<std::size_t>(length)) != 0)
            return false;
    }
    return true;
}

std::vector<FilePiece> inversePieces(const std::vector<FilePiece> &pieces, const SplicedFile &before) {
    std::vector<FilePiece> inverse;
    std::int64_t at = 0, known = 0; // of the new file, of the one before
    const auto lost = [&](std::int64_t end) {
        if (end > known)
            inverse.push_back({-1, end - known, before.read(known, end - known)});
    };
    for (const FilePiece &piece : pieces) {
        if (piece.at >= 0) { // They stand in the order in which they stood.
            lost(piece.at);
            inverse.push_back({at, piece.length, {}});
            known = piece.at + piece.length;
        }
        at += piece.length;
    }
    lost(before.size());
    return inverse;
}

} // namespace cantorel
