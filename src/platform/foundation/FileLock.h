#pragma once

#include "platform/foundation/FileDescriptor.h"

#include <QFile>
#include <QString>

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

namespace cantorel::foundation {

// Takes the lock of a file, which is made where it is missing. The one that is answered holds the lock for as long as
// it is open, and the end of its process lets go as well. Not open: errno is EWOULDBLOCK where another one holds it,
// and says else why there is no such file. Nothing is written, so nothing waits for the disk.
inline FileDescriptor lockFile(const QString &path) {
    FileDescriptor file(::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (file.isOpen() && ::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        file.reset();
        errno = error;
    }
    return file;
}

} // namespace cantorel::foundation
