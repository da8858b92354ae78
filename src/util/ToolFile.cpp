#include "util/ToolFile.h"

#include "platform/desktop/Services.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

namespace cantorel {

namespace {

constexpr QFile::Permissions kPrivate = QFile::ReadOwner | QFile::WriteOwner; // of logs and copies of settings
constexpr qsizetype kLongestBaseName = 200;                                   // bytes; names of files may have 255

void report(QString *error, const QString &text) {
    if (error != nullptr)
        *error = text;
}

bool reportMissing(QString *error, const QString &path) {
    report(error, QStringLiteral("\"%1\" does not exist.").arg(path));
    return false;
}

// Where the extension's full stop stands in a name, or -1.
qsizetype extensionDot(const QString &name) {
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot > 0 && dot + 1 < name.size() ? dot : -1;
}

QString lastComponent(const QString &path) {
    QString trimmed = path;
    while (trimmed.size() > 1 && trimmed.endsWith(QLatin1Char('/')))
        trimmed.chop(1);
    return trimmed.size() > 1 ? trimmed.mid(trimmed.lastIndexOf(QLatin1Char('/')) + 1) : trimmed;
}

} // namespace

bool ToolFile::isFileExistsAtPath(const QString &path) { return !path.isEmpty() && QFileInfo::exists(path); }

bool ToolFile::isFolderExistsAtPath(const QString &path) { return !path.isEmpty() && QFileInfo(path).isDir(); }

bool ToolFile::createFileAtPath(const QString &path) {
    QFile file(path);
    return !path.isEmpty() && file.open(QIODevice::WriteOnly | QIODevice::Truncate, kPrivate);
}

bool ToolFile::createFolderAtPath(const QString &path) { return !path.isEmpty() && QDir().mkpath(path); }

bool ToolFile::moveFileFromPath(const QString &path, const QString &toPath, QString *error) {
    if (!isFileExistsAtPath(path))
        return reportMissing(error, path);
    QFile file(path);
    if (isFolderExistsAtPath(path) ? QDir().rename(path, toPath) : file.rename(toPath))
        return true;
    report(error, QStringLiteral("\"%1\" cannot be moved to \"%2\": %3").arg(path, toPath, file.errorString()));
    return false;
}

bool ToolFile::copyFileFormPath(const QString &path, const QString &toPath, QString *error) {
    if (!isFileExistsAtPath(path))
        return reportMissing(error, path);
    QFile file(path);
    if (file.copy(toPath))
        return true;
    report(error, QStringLiteral("\"%1\" cannot be copied to \"%2\": %3").arg(path, toPath, file.errorString()));
    return false;
}

bool ToolFile::removeFileAtPath(const QString &path, QString *error) {
    const QFileInfo info(path);
    if (path.isEmpty() || (!info.exists() && !info.isSymLink()))
        return reportMissing(error, path);
    QFile file(path);
    if (info.isDir() && !info.isSymLink() ? QDir(path).removeRecursively() : file.remove())
        return true;
    report(error, QStringLiteral("\"%1\" cannot be removed: %2").arg(path, file.errorString()));
    return false;
}

QStringList ToolFile::subFileNamesWithFolderPath(const QString &path) {
    if (!isFolderExistsAtPath(path))
        return {};
    return QDir(path).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

QStringList ToolFile::subFilePathsWithFolderPath(const QString &path) {
    QStringList paths = subFileNamesWithFolderPath(path);
    for (QString &name : paths)
        name = QDir(path).filePath(name);
    return paths;
}

std::optional<QFileInfo> ToolFile::getFileAttributesAtPath(const QString &path, QString *error) {
    if (!isFileExistsAtPath(path)) {
        reportMissing(error, path);
        return std::nullopt;
    }
    return QFileInfo(path);
}

QDateTime ToolFile::fileCreateDateAtPath(const QString &path, QString *error) {
    const auto attributes = getFileAttributesAtPath(path, error);
    if (!attributes)
        return {};
    const QDateTime birth = attributes->birthTime();
    return birth.isValid() ? birth : attributes->metadataChangeTime();
}

QDateTime ToolFile::fileModificationDateAtPath(const QString &path, QString *error) {
    const auto attributes = getFileAttributesAtPath(path, error);
    return attributes ? attributes->lastModified() : QDateTime();
}

qint64 ToolFile::fileSizeAtPath(const QString &path, QString *error) {
    const auto attributes = getFileAttributesAtPath(path, error);
    return attributes ? attributes->size() : 0;
}

QString ToolFile::fileExtensionAtPath(const QString &path) {
    const QString name = lastComponent(path);
    const qsizetype dot = extensionDot(name);
    return dot < 0 ? QString() : name.mid(dot + 1);
}

QString ToolFile::fileNameAtPath(const QString &path) {
    const QString name = lastComponent(path);
    const qsizetype dot = extensionDot(name);
    return dot < 0 ? name : name.left(dot);
}

QString ToolFile::cleanFileName(const QString &text) {
    QString name;
    for (const QChar character : text) {
        if (character != QLatin1Char('/') && character.category() != QChar::Other_Control)
            name.append(character);
    }
    name = name.trimmed();
    if (const QByteArray encoded = QFile::encodeName(name); encoded.size() > kLongestBaseName) {
        qsizetype end = kLongestBaseName;
        while ((encoded[end] & 0xC0) == 0x80) // within a character
            --end;
        name = QFile::decodeName(encoded.first(end)).trimmed();
    }
    return name == QLatin1String(".") || name == QLatin1String("..") ? QString() : name;
}

QString ToolFile::pathWithExtension(const QString &path, const QString &extension) {
    const QString old = fileExtensionAtPath(path);
    const QString base = old.isEmpty() ? path : path.chopped(old.size() + 1);
    return extension.isEmpty() ? base : base + QLatin1Char('.') + extension;
}

QString ToolFile::fileSizeFormatterToString(qint64 bytes, int decimals) {
    const char *const units[] = {"KB", "MB", "GB", "TB"};
    int unit = 0;
    double value = static_cast<double>(bytes) / 1024;
    while (value > 1024 && unit < 3) {
        value /= 1024;
        ++unit;
    }
    return QString::asprintf("%4.*f %s", decimals, value, units[unit]);
}

bool ToolFile::showFileInFinder(const QString &path) { return showMultipleFilesInFinder({path}); }

bool ToolFile::showMultipleFilesInFinder(const QStringList &paths) {
    auto &files = desktop::InstalledServices::current().files;
    return files && files->reveal(paths).ok();
}

bool ToolFile::openFileAtURL(const QUrl &url) { return openFileAtURL(url, {}); }

bool ToolFile::openFileAtURL(const QUrl &url, const QString &withApplication) {
    auto &files = desktop::InstalledServices::current().files;
    return files && files->open(url, withApplication).ok();
}

bool ToolFile::writeData(const QByteArray &data, const QString &toFile, bool append) {
    if (toFile.isEmpty())
        return false;
    if (!append) {
        const bool isNew = !QFile::exists(toFile);
        QSaveFile file(toFile);
        return file.open(QIODevice::WriteOnly) && (!isNew || file.setPermissions(kPrivate))
               && file.write(data) == data.size() && file.commit();
    }
    QFile file(toFile);
    return file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered, kPrivate)
           && file.write(data) == data.size();
}

} // namespace cantorel
