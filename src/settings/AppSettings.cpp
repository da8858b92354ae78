#include "settings/AppSettings.h"

#include "platform/foundation/PropertyList.h"
#include "settings/UserDefaultFunctions.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"

#include <QDateTime>
#include <QFile>

#include <algorithm>
#include <charconv>
#include <limits>

// The primitive readers and writers, the constants, and the rules for folders and file names.

namespace cantorel {

namespace {

// What the platform prints for an object.
QString descriptionOf(const QVariant &value) {
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    case QMetaType::QDateTime:
        return value.toDateTime().toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss +0000"));
    case QMetaType::QByteArray:
        return QLatin1Char('<') + QString::fromLatin1(value.toByteArray().toHex()) + QLatin1Char('>');
    case QMetaType::QVariantList:
    case QMetaType::QVariantMap:
        return QString::fromUtf8(foundation::propertyListXml(value));
    default:
        return value.toString();
    }
}

// True for Y, y, T, t or a digit other than 0 behind blanks, a sign and zeros.
bool booleanOf(const QString &text) {
    qsizetype at = 0;
    while (at < text.size() && text[at].isSpace())
        ++at;
    if (at < text.size() && (text[at] == QLatin1Char('-') || text[at] == QLatin1Char('+')))
        ++at;
    while (at < text.size() && text[at] == QLatin1Char('0'))
        ++at;
    return at < text.size() && QStringLiteral("YyTt123456789").contains(text[at]);
}

// The real number at the start of the text, or 0.
double realOf(const QString &text) {
    QByteArray bytes = text.trimmed().toLatin1();
    if (bytes.startsWith('+'))
        bytes.remove(0, 1);
    double value = 0;
    std::from_chars(bytes.constData(), bytes.constData() + bytes.size(), value);
    return value;
}

void save(const QString &key, const QVariant &value) {
    auto &defaults = standardUserDefaults();
    if (defaults.setObject(key, value))
        (void)defaults.synchronize(); // a failure is logged by the domain's listener; setters report none
}

bool joinedListContains(const QStringList &list, const QString &extension) {
    return ToolString::isSuperString(list.join(QLatin1Char(' ')), extension.toLower());
}

} // namespace

void AppSettings::initSettingInNeed() {
    QFile file(foundation::resourcePath(QStringLiteral("UserDefaults.plist")));
    if (!file.open(QIODevice::ReadOnly))
        return;
    if (const auto defaults = foundation::parsePropertyList(file.readAll()))
        standardUserDefaults().registerDefaults(defaults.value().toMap());
}

QVariant AppSettings::getFromUserDefaults_Object(const QString &key) {
    if (const QVariant own = standardUserDefaults().ownObject(key); own.isValid())
        return own;
    if (const QVariant former = formerUserDefaults().ownObject(key); former.isValid())
        return former;
    return standardUserDefaults().object(key);
}

QByteArray AppSettings::getFromUserDefaults_Data(const QString &key) {
    const QVariant value = getFromUserDefaults_Object(key);
    return value.typeId() == QMetaType::QByteArray ? value.toByteArray() : QByteArray();
}

int AppSettings::getFromUserDefaults_Integer(const QString &key, int withDefaultValue) {
    const QVariant value = getFromUserDefaults_Object(key);
    if (!value.isValid())
        return withDefaultValue;
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<qint64>(leadingInteger(descriptionOf(value)), Limits::min(), Limits::max()));
}

bool AppSettings::getFromUserDefaults_BOOL(const QString &key, bool withDefaultValue) {
    const QVariant value = getFromUserDefaults_Object(key);
    return value.isValid() ? booleanOf(descriptionOf(value)) : withDefaultValue;
}

double AppSettings::getFromUserDefaults_Double(const QString &key, double withDefaultValue) {
    const QVariant value = getFromUserDefaults_Object(key);
    return value.isValid() ? realOf(descriptionOf(value)) : withDefaultValue;
}

QString AppSettings::getFromUserDefaults_String(const QString &key, const QString &withDefaultValue) {
    const QVariant value = getFromUserDefaults_Object(key);
    return value.isValid() ? descriptionOf(value) : withDefaultValue;
}

void AppSettings::saveToUserDefaultsForKeyBOOLValue(const QString &key, bool value) { save(key, value); }

void AppSettings::saveToUserDefaultsForKeyIngeterValue(const QString &key, int value) { save(key, value); }

void AppSettings::saveToUserDefaultsForKeyObjectValue(const QString &key, const QVariant &value) { save(key, value); }

void AppSettings::saveToUserDefaultsForKeyDoubleValue(const QString &key, double value) { save(key, value); }

const QStringList &AppSettings::audioFormats() {
    static const QStringList titles = {
        QStringLiteral("MP3  - High Quality"),        QStringLiteral("MP3  - Standard Quality"),
        QStringLiteral("M4A  - Best Quality"),        QStringLiteral("M4A  - High Quality"),
        QStringLiteral("WAV  - Waveform Audio File"), QStringLiteral("AAC  - High Quality"),
        QStringLiteral("AAC  - Standard Quality"),    QStringLiteral("AAC  - Low Quality")};
    return titles;
}

const QStringList &AppSettings::supportAudioTypes() {
    static const QStringList types = QStringLiteral("mp3 m4a aac wav").split(QLatin1Char(' '));
    return types;
}

const QStringList &AppSettings::losslessAudioFormats() {
    static const QStringList types = QStringLiteral("wav ape flac").split(QLatin1Char(' '));
    return types;
}

const QStringList &AppSettings::supportIntoConvertTypes() {
    static const QStringList types = QStringLiteral("wav mp3 wma m4a flac ogg aiff mka au ac3 caf alac ra m4r 3g2 asf "
                                                    "avi flv mkv mp4 swf webm wmv vob")
                                         .split(QLatin1Char(' '));
    return types;
}

bool AppSettings::isSuportIntoConvertFileFormat(const QString &extension) {
    return joinedListContains(supportIntoConvertTypes(), extension);
}

bool AppSettings::isLosslessAudioFormat(const QString &extension) {
    return joinedListContains(losslessAudioFormats(), extension);
}

QString AppSettings::appName() { return QStringLiteral("Cantorel"); }

QString AppSettings::reportName() { return QStringLiteral("Cantorel"); }

// Chosen when the program is built; the default is a name that nobody can own.
QString AppSettings::supportServer() { return QStringLiteral(CANTOREL_SUPPORT_SERVER); }

QString AppSettings::appVersion() {
    const int version = appVersionID(); // 250 is 2.5.0
    return QStringLiteral("%1.%2.%3").arg(version / 100).arg(version / 10 % 10).arg(version % 10);
}

bool AppSettings::appDebug() { return qEnvironmentVariableIsSet("CANTOREL_DEBUG"); }

QString AppSettings::defaultFontName() { return QStringLiteral("Lucida Grande"); }

QString AppSettings::appIdenitfyName() { return QStringLiteral("Cantorel"); }

QString AppSettings::TessolarAudioDevice_String() { return QString::fromLatin1(TessolarAudioDevice_CString()); }

const char *AppSettings::TessolarAudioDevice_CString() { return kTessolarAudioDeviceName; }

QString AppSettings::TessolarAggregateDeviceName_String() { return QString::fromLatin1(kTessolarAggregateDeviceName); }

QString AppSettings::TessolarAggregateDeviceUID_String() {
    return QString::fromLatin1(kBundleIdentifier) + QStringLiteral(".AggregateDevice");
}

QString AppSettings::audioDriverName() { return QStringLiteral("TessolarAudioDevice.kext"); }

QString AppSettings::TessolarConverterPath() { return foundation::resourcePath(QStringLiteral("TessolarConverter")); }

QString AppSettings::notificationNameFroChangeLanguage() {
    return QString::fromLatin1(kNotificationChangeLanguage.text);
}

int AppSettings::appVersionID() { return 250; }

QString AppSettings::getCommonDirectory(foundation::SearchPath directory, const QString &subDir) {
    const QString path = foundation::searchPath(directory) + QLatin1Char('/') + subDir;
    (void)ToolFile::createFolderAtPath(path); // the path is answered in any case
    return path;
}

QString AppSettings::getApplicationDirectory() {
    return getCommonDirectory(foundation::SearchPath::Applications, appIdenitfyName());
}

QString AppSettings::logFile() { return getApplicationDirectory() + QStringLiteral("/log.log"); }

QString AppSettings::kextInstallLogFile() { return getApplicationDirectory() + QStringLiteral("/install.log"); }

QString AppSettings::gnUserDataFile() { return getApplicationDirectory() + QStringLiteral("/gnuser.txt"); }

QString AppSettings::defaultCachesPath() { return foundation::searchPath(foundation::SearchPath::Caches); }

QString AppSettings::defaultArtworkImageCachesPath() {
    return defaultCachesPath() + QStringLiteral("/artworkCache.png");
}

QString AppSettings::defaultMusicDirectoryPath() { return foundation::searchPath(foundation::SearchPath::Music); }

QString AppSettings::defaultArtworkSelectPath() { return foundation::searchPath(foundation::SearchPath::Pictures); }

QString AppSettings::defaultExportPath() { return foundation::searchPath(foundation::SearchPath::Music); }

QString AppSettings::checkFilePathIsExistAndAutoReplace(const QString &path) {
    QString candidate = path;
    while (ToolFile::isFileExistsAtPath(candidate)) {
        const QString stem = ToolFile::fileNameAtPath(candidate);
        candidate.replace(stem, followingStem(stem));
    }
    return candidate;
}

QString AppSettings::followingStem(const QString &stem) {
    const auto numbered = [](qint64 n) { return QLatin1Char('-') + QString::number(n); };
    const QString second = numbered(2);
    if (!stem.contains(QLatin1Char('-')))
        return stem + second;
    const qint64 n = leadingInteger(stem.section(QLatin1Char('-'), -1));
    const qint64 next = n == std::numeric_limits<qint64>::max() ? n : n + 1;
    const QString counted = QString(stem).replace(numbered(n), numbered(next));
    // A stem in which nothing was counted would be tried for ever.
    return counted.contains(numbered(next)) && counted != stem ? counted : stem + second;
}

QString AppSettings::freePathInFolder(const QString &path) {
    QString candidate = path;
    for (const QFileInfo file(path); ToolFile::isFileExistsAtPath(candidate);) {
        const QString extension = ToolFile::fileExtensionAtPath(path);
        candidate = QStringLiteral("%1/%2%3").arg(file.path(), followingStem(ToolFile::fileNameAtPath(candidate)),
                                                  extension.isEmpty() ? extension : QLatin1Char('.') + extension);
    }
    return candidate;
}

QString AppSettings::changeFileToExtension(const QString &extension, const QString &atFilePath) {
    const QString target = freePathInFolder(ToolFile::pathWithExtension(atFilePath, extension));
    return ToolFile::moveFileFromPath(atFilePath, target) ? target : QString();
}

void AppSettings::mainMenuNeedShowEditorItem(bool show) {
    foundation::NotificationCenter::defaultCenter().post(kNotificationShowEditorItem, show);
}

} // namespace cantorel
