#pragma once

#include "platform/foundation/FileDescriptor.h"

#include <QFile>
#include <QString>

#include <fcntl.h>
#include <sys/stat.h>

namespace cantorel::foundation {

// Whether that very file stands at the path now; a link to it is another one.
inline bool isAt(const FileDescriptor &file, const QString &path) {
    struct stat own {
    }, there{};
    return ::fstat(file.get(), &own) == 0 && ::lstat(QFile::encodeName(path).constData(), &there) == 0
           && own.st_dev == there.st_dev && own.st_ino == there.st_ino;
}

// Remembers which file stood at a path, whatever has become of its name. It keeps the file open, so that no other one
// can be taken for it.
class FileIdentity {
public:
    explicit FileIdentity(const QString &path)
        : mFile(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}

    const FileDescriptor &file() const { return mFile; }
    // False as well when there was none to remember.
    bool isAt(const QString &path) const { return foundation::isAt(mFile, path); }

private:
    FileDescriptor mFile;
};

} // namespace cantorel::foundation
