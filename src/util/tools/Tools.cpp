#include "util/tools/Tools.h"

#include "lang/Lang.h"
#include "log/Log.h"
#include "platform/desktop/Services.h"
#include "platform/foundation/SearchPaths.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaultFunctions.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"

#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include <algorithm>
#include <limits>

namespace cantorel {

namespace {

void playResource(const QString &name) {
    auto &sounds = desktop::InstalledServices::current().sounds;
    if (!sounds)
        return;
    if (const auto played = sounds->play(foundation::resourcePath(name)); !played)
        Log(played.failure().detail);
}

} // namespace

QString Tools::getNonDuplicateFileName(const QString &path) {
    QString candidate = path;
    for (int n = 1; ToolFile::isFileExistsAtPath(candidate); ++n)
        candidate = QStringLiteral("%1/%2(%3).%4")
                        .arg(QFileInfo(path).path(), ToolFile::fileNameAtPath(path), QString::number(n),
                             ToolFile::fileExtensionAtPath(path));
    return candidate;
}

QString Tools::getUniqeNameInTempDirWithExtenionName(const QString &ext) {
    return ToolString::getUniqeNameInTempDirWithExtenionName(ext);
}

QString Tools::getAudioNameFromTrack() {
    return QStringLiteral("%1/Track%2.m4a")
        .arg(AppSettings::outputPath(), QString::number(AppSettings::recordNameBaseOn()));
}

QString Tools::getAudioNameFromDialog() {
    return InstalledAsker::current().askForNewFile(AppSettings::outputPath(), QStringLiteral("m4a"));
}

QString Tools::formatDurationFromInteger(int seconds, bool showMMSS) {
    seconds = std::max(seconds, 0);
    if (showMMSS && seconds < 3600)
        return QString::asprintf("%02d:%02d", seconds / 60, seconds % 60);
    return QString::asprintf("%02d:%02d:%02d", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

int Tools::getSecondsFromString(const QString &text) {
    const QStringList parts = text.split(QLatin1Char(':'));
    if (parts.size() != 2 && parts.size() != 3)
        return 0;
    double sum = 0;
    for (const QString &part : parts)
        sum = sum * 60 + static_cast<double>(leadingInteger(part));
    constexpr double kLargest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(sum, -kLargest, kLargest));
}

QString Tools::stringFromDate(const QDateTime &date) {
    return ToolString::stringFromDate(date, QStringLiteral("MM/dd HH:mm"));
}

QString Tools::formatSizeFromByte(qint64 bytes) { return ToolFile::fileSizeFormatterToString(bytes, 1); }

qint64 Tools::getFileSizeByteCountFromFileName(const QString &path) { return ToolFile::fileSizeAtPath(path); }

QString Tools::getFileSizeStringFromFileName(const QString &path) {
    return formatSizeFromByte(getFileSizeByteCountFromFileName(path));
}

QStringList Tools::shownAudioFormats() {
    const QString qualities[] = {Lang::windowHighQuality(),     Lang::windowStandardQuality(),
                                 Lang::windowBestQuality(),     Lang::windowHighQuality(),
                                 Lang::windowWaveformFile(),    Lang::windowHighQuality(),
                                 Lang::windowStandardQuality(), Lang::windowLowQuality()};
    QStringList shown = AppSettings::audioFormats();
    for (qsizetype format = 0; format < shown.size(); ++format)
        shown[format] = shown[format].section(QLatin1Char('-'), 0, 0) + QStringLiteral("- ") + qualities[format];
    return shown;
}

bool Tools::isNumerice(const QString &text) {
    const auto signs = text.toUcs4(); // as "\d+" matches them, without an expression to compile
    return !signs.isEmpty()
           && std::all_of(signs.begin(), signs.end(), [](char32_t sign) { return QChar::isDigit(sign); });
}

bool Tools::isContainsString(const QString &text, const QString &containString) {
    return ToolString::isSuperString(text, containString);
}

QString Tools::strReplace(const QString &text, const QString &fromString, const QString &toString) {
    return ToolString::replaceString(text, fromString, toString);
}

QString Tools::fillTextMarkers(const QString &text) {
    return strReplace(strReplace(text, QStringLiteral("[#AppName#]"), AppSettings::appName()),
                      QStringLiteral("[#NewLine#]"), QStringLiteral("\n"));
}

std::optional<QString> Tools::regexGetStringFromString(const QString &text, const QString &withRegExpression) {
    return ToolString::regexGetStringFromString(text, withRegExpression);
}

QStringList Tools::regexGetArrayFromString(const QString &text, const QString &withRegExpression) {
    return ToolString::regexGetArrayFromString(text, withRegExpression);
}

bool Tools::writeToFile(const QString &text, const QString &filePath, bool append) {
    QFile file(filePath);
    if (filePath.isEmpty() || !file.open(QIODevice::ReadWrite)) // made when it is missing, never truncated
        return false;
    const QByteArray bytes = text.toUtf8();
    return (!append || file.seek(file.size())) && file.write(bytes) == bytes.size() && file.flush();
}

QString Tools::getFileContent(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

void Tools::playSoundStartRecording() { playResource(QStringLiteral("recordingStart.wav")); }

void Tools::playSoundStopRecording() { playResource(QStringLiteral("recordingStop.wav")); }

void Tools::showAlertMessage(const QString &message, const QString &title, QObject *modalForWindow,
                             AlertStyle alertType) {
    InstalledAsker::current().tell(title, message, alertType, modalForWindow);
}

void Tools::showErrorMessage(const QString &message, QObject *modalForWindow) {
    showAlertMessage(message, AppSettings::appName(), modalForWindow, AlertStyle::Critical);
}

void Tools::showErrorMessage(const QString &message, const QString &title, QObject *modalForWindow) {
    showAlertMessage(message, title, modalForWindow, AlertStyle::Critical);
}

void Tools::showInformationMessage(const QString &message, QObject *modalForWindow) {
    showAlertMessage(message, AppSettings::appName(), modalForWindow, AlertStyle::Informational);
}

void Tools::showInformationMessage(const QString &message, const QString &title, QObject *modalForWindow) {
    showAlertMessage(message, title, modalForWindow, AlertStyle::Informational);
}

bool Tools::openURL(const QUrl &url) { return ToolFile::openFileAtURL(url); }

bool Tools::openFile(const QString &path) { return ToolFile::openFileAtURL(QUrl::fromLocalFile(path)); }

bool Tools::showInFinderWithFileName(const QString &path) { return ToolFile::showFileInFinder(path); }

bool Tools::showInFinderWithFileNames(const QStringList &paths) { return ToolFile::showMultipleFilesInFinder(paths); }

QString Tools::getOSversion() {
    const auto &version = desktop::InstalledServices::current().version;
    return QStringLiteral("Mac version: %1.%2.%3")
        .arg(version.majorVersion)
        .arg(version.minorVersion)
        .arg(version.bugFixVersion);
}

QString Tools::getOSLanguage() {
    const QStringList stored = standardUserDefaults().object(QStringLiteral("AppleLanguages")).toStringList();
    const QStringList languages = stored.isEmpty() ? QLocale::system().uiLanguages() : stored;
    return languages.value(0);
}

void Tools::ShutdownSystem() {
    auto &scripts = desktop::InstalledServices::current().scripts;
    if (!scripts)
        return;
    const QString script = QStringLiteral("tell application \"Finder\" to %1").arg(QStringLiteral("shut down"));
    if (const auto executed = scripts->execute(script); !executed)
        Log(QStringLiteral("ShutdownSystem: %1").arg(executed.failure().detail));
}

void Tools::log(const QString &text) {
    if (GetLogFilePath().isEmpty())
        LogFileCheck(QString::fromLatin1(kApplicationLogName));
    Log(text);
}

void Tools::logException(const std::exception &exception) { LogException(exception); }

} // namespace cantorel
