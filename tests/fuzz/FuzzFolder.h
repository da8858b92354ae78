#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>

#include <unistd.h>

#include <cstdint>

namespace cantorel::fuzz {

inline QByteArray bytesOf(const std::uint8_t *data, std::size_t size) {
    return QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
}

// A folder of this process in memory, where settings and state stand, too.
class FuzzFolder {
public:
    FuzzFolder() : mPath(QStringLiteral("/dev/shm/cantorel-fuzz-%1").arg(::getpid())) {
        QDir().mkpath(mPath + QStringLiteral("/lang"));
        for (const char *variable : {"HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"})
            qputenv(variable, mPath.toUtf8());
    }
    ~FuzzFolder() { QDir(mPath).removeRecursively(); }

    QString path() const { return mPath; }
    void put(const char *name, const std::uint8_t *data, std::size_t size) const {
        QFile file(mPath + QLatin1Char('/') + QLatin1String(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytesOf(data, size)) != static_cast<qint64>(size))
            qFatal("the input can't be written");
    }

private:
    const QString mPath;
};

} // namespace cantorel::fuzz
