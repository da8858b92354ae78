#include "platform/foundation/SearchPaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace cantorel::foundation {

namespace {

QString folderFromEnvironment(const char *variable, const QString &belowHome) {
    const QString value = QFile::decodeName(qgetenv(variable));
    return QDir::isAbsolutePath(value) ? QDir::cleanPath(value) : QDir::homePath() + QLatin1Char('/') + belowHome;
}

} // namespace

QString searchPath(SearchPath kind) {
    const auto writable = [](QStandardPaths::StandardLocation location) {
        return QDir::cleanPath(QStandardPaths::writableLocation(location));
    };
    switch (kind) {
    case SearchPath::Applications:
        return writable(QStandardPaths::ApplicationsLocation);
    case SearchPath::Caches:
        return writable(QStandardPaths::GenericCacheLocation);
    case SearchPath::Music:
        return writable(QStandardPaths::MusicLocation);
    case SearchPath::Pictures:
        return writable(QStandardPaths::PicturesLocation);
    }
    return {};
}

QString configurationFolder() { return folderFromEnvironment("XDG_CONFIG_HOME", QStringLiteral(".config")); }

QString stateFolder() { return folderFromEnvironment("XDG_STATE_HOME", QStringLiteral(".local/state")); }

QString resourcePath(const QString &name) {
    const QString chosen = QFile::decodeName(qgetenv("CANTOREL_RESOURCES"));
    if (!chosen.isEmpty())
        return QDir::cleanPath(chosen + QLatin1Char('/') + name);
    const QString program = QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
    return QDir::cleanPath(QFileInfo(program).path() + QStringLiteral("/../share/cantorel/") + name);
}

} // namespace cantorel::foundation
