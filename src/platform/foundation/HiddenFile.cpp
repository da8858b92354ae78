#include "platform/foundation/HiddenFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace cantorel::foundation {

namespace {

// Long enough that nobody else makes such a name.
QString hiddenName(const QString &extension) {
    return QStringLiteral(".cantorel-%1.%2")
        .arg(QRandomGenerator::system()->generate64(), 16, 16, QLatin1Char('0'))
        .arg(extension);
}

bool isHiddenName(const QString &name) {
    static const QRegularExpression pattern(QStringLiteral("\\A\\.cantorel-[0-9a-f]{16}\\.[0-9A-Za-z]+\\z"));
    return pattern.match(name).hasMatch();
}

// True for one that nobody writes: who makes a file holds its lock.
bool lock(const FileDescriptor &file) { return ::flock(file.get(), LOCK_EX | LOCK_NB) == 0; }

} // namespace

HiddenFile::HiddenFile(QString path, FileDescriptor file) : mPath(std::move(path)), mFile(std::move(file)) {}

HiddenFile::HiddenFile(HiddenFile &&other) noexcept
    : mPath(std::exchange(other.mPath, {})), mFile(std::move(other.mFile)) {}

HiddenFile::~HiddenFile() {
    if (!mPath.isEmpty() && isAt(mFile, mPath))
        ::unlink(QFile::encodeName(mPath).constData());
}

std::optional<HiddenFile> HiddenFile::create(const QString &folder, const QString &extension, int &error,
                                             mode_t rights) {
    for (;;) {
        const QString path = QDir(folder).absoluteFilePath(hiddenName(extension));
        FileDescriptor file(
            ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, rights));
        error = file.isOpen() ? 0 : errno;
        if (error == EEXIST)
            continue;
        if (error)
            return {};
        // A sweep may have come between the two; where a file system knows no locks, it sweeps nothing either.
        if (lock(file) && !isAt(file, path))
            continue;
        return HiddenFile(path, std::move(file));
    }
}

int HiddenFile::flush() const {
    if (!isAt(mFile, mPath))
        return EIO;
    return ::fsync(mFile.get()) == 0 ? 0 : errno;
}

int HiddenFile::taken(const QString &path) {
    mPath.clear();
    const FileDescriptor folder(
        ::open(QFile::encodeName(QFileInfo(path).absolutePath()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.isOpen())
        (void)::fsync(folder.get()); // not every file system can; the file itself is safe
    return 0;
}

int HiddenFile::take(const QString &path) {
    const QByteArray from = QFile::encodeName(mPath), to = QFile::encodeName(path);
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return taken(path);
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // This file system can't: the name is reserved by an empty file of our own, which is replaced.
    const FileDescriptor reserved(::open(to.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!reserved.isOpen())
        return errno;
    if (::rename(from.constData(), to.constData()) == 0)
        return taken(path);
    const int error = errno;
    ::unlink(to.constData());
    return error;
}

int HiddenFile::replace(const QString &path, const FileIdentity &old) {
    if (!old.isAt(path))
        return ESTALE;
    if (::rename(QFile::encodeName(mPath).constData(), QFile::encodeName(path).constData()) != 0)
        return errno;
    return taken(path);
}

void HiddenFile::sweep(const QString &folder) {
    const QDir place(folder);
    const auto hidden =
        place.entryList({QStringLiteral(".cantorel-*")}, QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDir::Unsorted);
    for (const QString &name : hidden) {
        const QString path = place.absoluteFilePath(name);
        const FileDescriptor file(
            ::open(QFile::encodeName(path).constData(), O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
        if (isHiddenName(name) && file.isOpen() && lock(file) && isAt(file, path))
            ::unlink(QFile::encodeName(path).constData());
    }
}

} // namespace cantorel::foundation
