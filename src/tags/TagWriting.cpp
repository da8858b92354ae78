#include "tags/TagWriting.h"

#include "log/CommLog.h"
#include "log/GuardedAction.h"
#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/FileIdentity.h"
#include "platform/foundation/HiddenFile.h"
#include "platform/media/RecordingRepair.h"
#include "tags/SameSound.h"
#include "tags/TagFailures.h"
#include "tags/TagFormats.h"
#include "tags/TagReading.h"
#include "util/ToolFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

namespace cantorel {

namespace {

using foundation::Failure;
using foundation::FileDescriptor;
using foundation::Result;

// The folders that hold nothing any more of what a program of ours that was killed has left.
using Swept = QSet<QString>;

TagUndo::Version versionOf(const struct stat &status) {
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim};
}

// The file that is to be changed, open for reading.
class OldFile {
public:
    static Result<OldFile> open(const QString &path) {
        const QFileInfo info(path);
        OldFile file(info.isAbsolute() && !info.isSymLink() ? path : info.canonicalFilePath());
        if (!file.descriptor().isOpen() && !info.exists())
            return tag_failures::noFile(path);
        const QByteArray name = QFile::encodeName(file.mPath);
        if (::faccessat(AT_FDCWD, name.constData(), R_OK | W_OK, AT_EACCESS) != 0)
            return tag_failures::notAllowed(path, errno);
        if (!file.descriptor().isOpen() || ::fstat(file.descriptor().get(), &file.mStatus) != 0)
            return tag_failures::noFile(path);
        if (!S_ISREG(file.mStatus.st_mode))
            return isMovieName(path) ? tag_failures::noMovie(path) : tag_failures::noMpeg(path);
        if (media::isUnfinished(file.descriptor()))
            return tag_failures::stillRecorded(path);
        return file;
    }

    const QString &path() const { return mPath; }
    const FileDescriptor &descriptor() const { return mIdentity.file(); }
    const struct stat &status() const { return mStatus; }

    bool isStillTheSame() const {
        struct stat now {};
        return ::fstat(descriptor().get(), &now) == 0 && versionOf(now) == versionOf(mStatus);
    }
    const foundation::FileIdentity &identity() const { return mIdentity; }

private:
    explicit OldFile(const QString &path) : mPath(path), mIdentity(path) {}

    QString mPath;
    foundation::FileIdentity mIdentity;
    struct stat mStatus {};
};

int writeAll(const FileDescriptor &file, const char *bytes, std::int64_t at, std::int64_t count) {
    while (count > 0) {
        const ssize_t written = ::pwrite(file.get(), bytes, static_cast<std::size_t>(count), at);
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return errno;
        bytes += written;
        at += written;
        count -= written;
    }
    return 0;
}

constexpr std::int64_t kAtOnce = 128 << 10; // what a processor keeps at hand
constexpr int kNotProved = EBADMSG;

// Writes a part of a piece and reads it back.
int writePart(const FilePiece &piece, std::int64_t part, std::int64_t count, const FileDescriptor &from,
              const FileDescriptor &to, std::int64_t at) {
    std::array<char, kAtOnce> old, written;
    const char *bytes = piece.at >= 0 ? old.data() : piece.bytes.constData() + part;
    if (piece.at >= 0 && readAll(from, old.data(), piece.at + part, count) != count)
        return EIO; // It has become shorter meanwhile.
    if (const int error = writeAll(to, bytes, at, count))
        return error;
    return readAll(to, written.data(), at, count) == count
                   && std::memcmp(bytes, written.data(), static_cast<std::size_t>(count)) == 0
               ? 0
               : kNotProved;
}

int writePieces(const std::vector<FilePiece> &pieces, const FileDescriptor &from, const FileDescriptor &to) {
    std::int64_t at = 0;
    for (const FilePiece &piece : pieces)
        at += piece.length;
    (void)::fallocate(to.get(), 0, 0, at); // saves time; where it can't be done, writing tells why
    at = 0;
    for (const FilePiece &piece : pieces)
        for (std::int64_t part = 0, count = 0; part < piece.length; part += count, at += count) {
            count = std::min(kAtOnce - at % kAtOnce, piece.length - part); // whole pages are written quicker
            if (const int error = writePart(piece, part, count, from, to, at))
                return error;
        }
    return 0;
}

int copyAttributes(int from, int to) {
    const ssize_t size = ::flistxattr(from, nullptr, 0);
    if (size <= 0)
        return 0;
    QByteArray names(size, '\0');
    names.truncate(std::max<ssize_t>(::flistxattr(from, names.data(), static_cast<std::size_t>(size)), 0));
    for (const QByteArray &name : names.split('\0')) {
        const ssize_t length = name.isEmpty() ? -1 : ::fgetxattr(from, name.constData(), nullptr, 0);
        if (length < 0)
            continue;
        QByteArray value(length, '\0');
        if (::fgetxattr(from, name.constData(), value.data(), static_cast<std::size_t>(length)) != length
            || ::fsetxattr(to, name.constData(), value.constData(), static_cast<std::size_t>(length), 0) == 0)
            continue;
        // The system gives those of its own to every file; only those of people have to be kept.
        if (name.startsWith("user.") || name.startsWith("system.posix_acl"))
            return errno;
    }
    return 0;
}

int makeAlike(const struct stat &status, int from, int to) {
    (void)::fremovexattr(to, "system.posix_acl_access"); // what the folder gives to all its new files
    struct stat made {};
    if (::fstat(to, &made) != 0)
        return errno;
    if ((made.st_uid != status.st_uid || made.st_gid != status.st_gid)
        && ::fchown(to, status.st_uid, status.st_gid) != 0)
        return errno;
    if (const int error = copyAttributes(from, to))
        return error;
    return made.st_mode == status.st_mode || ::fchmod(to, status.st_mode & 07777) == 0 ? 0 : errno;
}

// Replaces the file by what the pieces of it make, each of which is read back. Answers which file that is.
Result<TagUndo::Version> replaceBy(const OldFile &old, const std::vector<FilePiece> &pieces, const timespec *modified,
                                   Swept &swept) {
    const QString folder = QFileInfo(old.path()).path();
    if (!swept.contains(folder))
        foundation::HiddenFile::sweep(folder);
    swept.insert(folder);
    int error = 0;
    const auto refused = [&] {
        return error == EACCES || error == EPERM || error == EROFS ? tag_failures::notAllowed(old.path(), error)
                                                                   : tag_failures::notWritten(old.path(), error);
    };
    // Nobody reads in it what the old one keeps from them: it is ours alone until it has the rights of that.
    auto made = foundation::HiddenFile::create(folder, QStringLiteral("tags"), error, S_IRUSR | S_IWUSR);
    if (!made)
        return refused();
    const FileDescriptor &file = made->descriptor();
    error = makeAlike(old.status(), old.descriptor().get(), file.get());
    if (error)
        return refused();
    error = writePieces(pieces, old.descriptor(), file);
    if (error)
        return error == kNotProved ? tag_failures::notProved(old.path()) : tag_failures::notWritten(old.path(), error);
    if (modified != nullptr) {
        const timespec times[] = {old.status().st_atim, *modified};
        (void)::futimens(file.get(), times); // a time is no reason to fail
    }
    error = made->flush();
    if (error)
        return tag_failures::notWritten(old.path(), error);
    struct stat status {};
    if (!old.isStillTheSame() || ::fstat(file.get(), &status) != 0)
        return tag_failures::changedMeanwhile(old.path());
    error = made->replace(old.path(), old.identity());
    if (error)
        return error == ESTALE ? tag_failures::changedMeanwhile(old.path()) : refused();
    if (old.status().st_nlink > 1)
        CommLog::W(QStringLiteral("%1 had other names, which keep the tags of before").arg(old.path()));
    return versionOf(status);
}

// Whether reading gives what is to be written; a genre may be a number, and a year may not be written.
bool givesBack(const TagFormats &formats, SplicedFile made, bool isMovie, const id3Tag &wanted) {
    const auto read = formats.read(made, isMovie);
    const auto isSame = [&](const QString &text, const QString &meant) { return text == formats.kept(meant); };
    return read && isSame(read->id3Title, wanted.id3Title) && isSame(read->id3Artist, wanted.id3Artist)
           && isSame(read->id3Album, wanted.id3Album) && read->id3Genre.isEmpty() == wanted.id3Genre.isEmpty()
           && yearToWrite(read->id3Year).value_or(0)
                  == yearToWrite(wanted.id3Year).value_or(yearToWrite(read->id3Year).value_or(0));
}

Result<std::optional<TagUndo::File>> writeTagsOf(const TagsOfFile &wanted, Swept &swept) {
    const QString extension = ToolFile::fileExtensionAtPath(wanted.path).toLower();
    if ((extension == QLatin1String("wav") || extension == QLatin1String("aac"))
        && ToolFile::isFileExistsAtPath(wanted.path))
        return tag_failures::noTagsIn(wanted.path, extension);
    const auto old = OldFile::open(wanted.path);
    if (!old)
        return old.failure();
    const auto formats = loadTagFormats();
    if (!formats)
        return formats.failure();
    const bool isMovie = isMovieName(wanted.path);
    SplicedFile content(old.value().descriptor());
    const auto edited = formats.value()->edit(content, isMovie, wanted.edit, wanted.path);
    if (!edited)
        return edited.failure();
    if (content.hasFailed())
        return tag_failures::notWritten(wanted.path, EIO);
    if (!edited.value())
        return std::optional<TagUndo::File>();
    const SplicedFile before = content.original();
    const bool isProved = (isMovie ? haveSameMovieSound(before, content) : haveSameMpegSound(before, content))
                          && givesBack(*formats.value(), content, isMovie, *edited.value());
    TagUndo::File undo{old.value().path(), inversePieces(content.pieces(), before), {}, old.value().status().st_mtim};
    if (!isProved || content.hasFailed() || before.hasFailed())
        return tag_failures::notProved(wanted.path);
    const auto version = replaceBy(old.value(), content.pieces(), nullptr, swept);
    if (!version)
        return version.failure();
    undo.written = version.value();
    return std::optional(std::move(undo));
}

Result<void> undoTagsOf(const TagUndo::File &undo, Swept &swept) {
    const auto now = OldFile::open(undo.path);
    if (!now)
        return now.failure();
    if (!(versionOf(now.value().status()) == undo.written))
        return tag_failures::changedMeanwhile(undo.path);
    const auto version = replaceBy(now.value(), undo.pieces, &undo.modified, swept);
    if (!version)
        return version.failure();
    return {};
}

// Runs the action for one file; a failure is logged and kept.
template <class Action> void attempt(const QString &path, std::vector<TagsWritten::Failed> &failures, Action &&action) {
    std::optional<Failure> failure;
    if (!guarded("writeTags", [&] { failure = action(); })) // what is thrown is logged
        failure = tag_failures::notWritten(path, EIO);
    if (!failure)
        return;
    CommLog::E(failure->detail);
    failures.push_back({path, *failure});
}

} // namespace

bool TagUndo::Version::operator==(const Version &other) const {
    return device == other.device && number == other.number && size == other.size
           && modified.tv_sec == other.modified.tv_sec && modified.tv_nsec == other.modified.tv_nsec;
}

TagsWritten writeTags(const std::vector<TagsOfFile> &files) {
    Swept swept;
    TagsWritten written;
    for (const TagsOfFile &file : files)
        attempt(file.path, written.failures, [&]() -> std::optional<Failure> {
            auto done = writeTagsOf(file, swept);
            if (!done)
                return done.failure();
            if (done.value())
                written.undo.files.push_back(std::move(*done.value()));
            return {};
        });
    return written;
}

bool hasSoundOf(const foundation::FileDescriptor &before, const QString &path) {
    const auto now = OldFile::open(path);
    if (!now || !before.isOpen())
        return false;
    const SplicedFile one(before), other(now.value().descriptor());
    const bool isSame = isMovieName(path) ? haveSameMovieSound(one, other) : haveSameMpegSound(one, other);
    return isSame && !one.hasFailed() && !other.hasFailed();
}

std::vector<TagsWritten::Failed> undoTags(const TagUndo &undo) {
    Swept swept;
    std::vector<TagsWritten::Failed> failures;
    for (const TagUndo::File &file : undo.files)
        attempt(file.path, failures, [&]() -> std::optional<Failure> {
            const auto done = undoTagsOf(file, swept);
            return done ? std::nullopt : std::optional(done.failure());
        });
    return failures;
}

} // namespace cantorel
