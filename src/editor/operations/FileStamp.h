#pragma once

#include <QFile>
#include <QString>

#include <sys/stat.h>

namespace cantorel {

// Which file stood at a path, and in which state. A value; unlike an open file it costs nothing to keep.
class FileStamp {
public:
    explicit FileStamp(const QString &path) { mIsThere = ::lstat(QFile::encodeName(path).constData(), &mState) == 0; }

    // Whether that very file stands there, and nobody has written to it.
    bool isAt(const QString &path) const {
        const FileStamp there(path);
        const auto &one = mState, &other = there.mState;
        return mIsThere && there.mIsThere && one.st_dev == other.st_dev && one.st_ino == other.st_ino
               && one.st_size == other.st_size && one.st_mtim.tv_sec == other.st_mtim.tv_sec
               && one.st_mtim.tv_nsec == other.st_mtim.tv_nsec;
    }

private:
    struct stat mState {};
    bool mIsThere = false;
};

} // namespace cantorel
