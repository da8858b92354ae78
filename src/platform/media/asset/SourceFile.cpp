#include "platform/media/asset/SourceFile.h"

#include "platform/media/asset/AssetFailures.h"

#include <QFile>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace cantorel::media {

using foundation::Result;

Result<std::shared_ptr<const SourceFile>> SourceFile::open(const QString &path) {
    const std::shared_ptr<SourceFile> file(new SourceFile); // Its constructor is private.
    file->mPath = path;
    // A pipe would wait for somebody who writes.
    file->mFile =
        foundation::FileDescriptor(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file->mFile.isOpen() || ::fstat(file->mFile.get(), &file->mWas) != 0)
        return failures::cannotRead(path, errno);
    if (!S_ISREG(file->mWas.st_mode))
        return failures::notSound(path, QStringLiteral("no regular file"));
    return std::shared_ptr<const SourceFile>(file);
}

Result<std::size_t> SourceFile::read(std::int64_t position, std::span<std::uint8_t> into) const {
    std::size_t got = 0;
    while (got < into.size()) {
        const ssize_t count =
            ::pread(mFile.get(), into.data() + got, into.size() - got, position + static_cast<std::int64_t>(got));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return failures::cannotRead(mPath, errno);
        if (count == 0)
            break;
        got += static_cast<std::size_t>(count);
    }
    struct stat now {};
    const bool isSame = ::fstat(mFile.get(), &now) == 0 && now.st_size == mWas.st_size
                        && now.st_mtim.tv_sec == mWas.st_mtim.tv_sec && now.st_mtim.tv_nsec == mWas.st_mtim.tv_nsec;
    if (!isSame)
        return failures::changedWhileRead(mPath);
    return got;
}

} // namespace cantorel::media
