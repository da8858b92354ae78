#include "recording/library/NotedRename.h"

#include <QStringList>

#include <sys/stat.h>

namespace cantorel {

namespace {

constexpr qint64 kLongest = 16'384;

QString pathIn(const QString &stateFolder) { return stateFolder + QStringLiteral("/renaming"); }

} // namespace

bool areTwoNames(const QString &one, const QString &other) {
    struct stat first {
    }, second{};
    return ::lstat(QFile::encodeName(one).constData(), &first) == 0
           && ::lstat(QFile::encodeName(other).constData(), &second) == 0 && first.st_dev == second.st_dev
           && first.st_ino == second.st_ino && first.st_nlink > 1;
}

NotedRename::NotedRename(const QString &stateFolder, const QString &before, const QString &after)
    : mFile(pathIn(stateFolder)) {
    if (mFile.open(QIODevice::WriteOnly | QIODevice::Truncate)) // Without it, at worst the file keeps two names.
        mFile.write((before + QLatin1Char('\n') + after).toUtf8());
    mFile.close();
}

void NotedRename::finish(const QString &stateFolder, const std::function<bool(const QString &)> &isListed) {
    QFile file(pathIn(stateFolder));
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QStringList names = QString::fromUtf8(file.read(kLongest)).split(QLatin1Char('\n'));
    if (names.size() == 2 && areTwoNames(names[0], names[1]) && isListed(names[1]) && !isListed(names[0]))
        QFile::remove(names[0]);
}

} // namespace cantorel
