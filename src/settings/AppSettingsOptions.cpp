#include "platform/foundation/KeyedArchiver.h"
#include "settings/AppSettings.h"
#include "settings/SettingsTable.h"
#include "settings/UserDefaultFunctions.h"
#include "util/ToolFile.h"

#include <algorithm>

// The persistent options: each a getter and a setter over its row of SettingsTable.h.

namespace cantorel {

namespace {

int read(const IntegerSetting &s) {
    return AppSettings::getFromUserDefaults_Integer(QString::fromLatin1(s.key), s.fallback);
}
bool read(const BooleanSetting &s) {
    return AppSettings::getFromUserDefaults_BOOL(QString::fromLatin1(s.key), s.fallback);
}
QString read(const TextSetting &s) {
    return AppSettings::getFromUserDefaults_String(QString::fromLatin1(s.key), QString::fromLatin1(s.fallback));
}
QString read(const FolderSetting &s) {
    return AppSettings::getFromUserDefaults_String(QString::fromLatin1(s.key),
                                                   AppSettings::defaultMusicDirectoryPath());
}

void write(const IntegerSetting &s, int value) {
    AppSettings::saveToUserDefaultsForKeyIngeterValue(QString::fromLatin1(s.key), value);
}
void write(const BooleanSetting &s, bool value) {
    AppSettings::saveToUserDefaultsForKeyBOOLValue(QString::fromLatin1(s.key), value);
}
void write(const TextSetting &s, const QString &value) {
    AppSettings::saveToUserDefaultsForKeyObjectValue(QString::fromLatin1(s.key), value);
}
void write(const FolderSetting &s, const QString &value) {
    AppSettings::saveToUserDefaultsForKeyObjectValue(QString::fromLatin1(s.key), value);
}

QString folderOrMusic(const QString &stored) {
    return ToolFile::isFolderExistsAtPath(stored) ? stored : AppSettings::defaultMusicDirectoryPath();
}

QVariantList archivedList(const char *key) {
    const QByteArray data = AppSettings::getFromUserDefaults_Data(QString::fromLatin1(key));
    return foundation::unarchivedObject(data).value_or(QVariant()).toList();
}

// Process-wide and deliberately without a lock: set on the main thread.
QString recordingOutputDevice;
QString languageOnline;
QString recordingFileName;

} // namespace

QString AppSettings::outputPath() { return folderOrMusic(read(setting::kOutputFolderPath)); }

void AppSettings::setOutputPath(const QString &path) { write(setting::kOutputFolderPath, path); }

QString AppSettings::convertOutputPath() {
    // Deliberately without a look at the former version's settings.
    return folderOrMusic(ZQUserDefaultGetNSStringValue(QString::fromLatin1(setting::kConvertOutputFolder.key), {}));
}

void AppSettings::setConvertOutputPath(const QString &path) { write(setting::kConvertOutputFolder, path); }

bool AppSettings::isBeepBeforeRecording() { return read(setting::kIsBeepBeforeRecording); }

void AppSettings::setIsBeepBeforeRecording(bool value) {
    (void)standardUserDefaults().setObject(QString::fromLatin1(setting::kIsBeep.key), value); // a boolean is taken
}

int AppSettings::recordNameBaseOn() {
    return std::min(read(setting::kRecordNameBaseOn),
                    setting::kRecordNameBaseOn.most); // Each recording counts it up, beyond what the setter takes.
}

void AppSettings::setrecordNameBaseOn(int value) { write(setting::kRecordNameBaseOn, value); }

bool AppSettings::isAutoGenFileName() { return read(setting::kIsAutoGenFileName); }

void AppSettings::setIsAutoGenFileName(bool value) { write(setting::kIsAutoGenFileName, value); }

int AppSettings::getAudioFormat() { return read(setting::kAudioFormat); }

void AppSettings::setAudioFormat(int value) { write(setting::kAudioFormat, value); }

int AppSettings::getAudioType() { return read(setting::kAudioInputType); }

void AppSettings::setAudioType(int value) { write(setting::kAudioInputType, value); }

QString AppSettings::getMicrophone() { return read(setting::kMicrophoneName); }

void AppSettings::setMicrophone(const QString &value) { write(setting::kMicrophoneName, value); }

QString AppSettings::getAggregateMicrophone() { return read(setting::kAggregateMicrophone); }

void AppSettings::setAggregateMicrophone(const QString &value) { write(setting::kAggregateMicrophone, value); }

QString AppSettings::getAudioInputDeviceNameBeforeRecording() {
    return read(setting::kAudioInputDeviceNameBeforeRecording);
}

void AppSettings::setAudioInputDeviceNameBeforeRecording(const QString &value) {
    write(setting::kAudioInputDeviceNameBeforeRecording, value);
}

QString AppSettings::getAudioOutputDeviceNameBeforeRecording() {
    return read(setting::kAudioOutputDeviceNameBeforeRecording);
}

void AppSettings::setAudioOutputDeviceNameBeforeRecording(const QString &value) {
    write(setting::kAudioOutputDeviceNameBeforeRecording, value);
}

bool AppSettings::isAutoIdentifyID3() { return read(setting::kIsAutoIdentifyID3); }

void AppSettings::setAutoIdentifyID3(bool value) { write(setting::kIsAutoIdentifyID3, value); }

QString AppSettings::recognitionAccess() { return read(setting::kRecognitionAccess); }

void AppSettings::setRecognitionAccess(const QString &value) { write(setting::kRecognitionAccess, value); }

QString AppSettings::recognitionServer() { return read(setting::kRecognitionServer); }

void AppSettings::setRecognitionServer(const QString &value) { write(setting::kRecognitionServer, value); }

QString AppSettings::musicDataServer() { return read(setting::kMusicDataServer); }

void AppSettings::setMusicDataServer(const QString &value) { write(setting::kMusicDataServer, value); }

QString AppSettings::coverServer() { return read(setting::kCoverServer); }

void AppSettings::setCoverServer(const QString &value) { write(setting::kCoverServer, value); }

bool AppSettings::isRecognitionAgreed() { return read(setting::kIsRecognitionAgreed); }

void AppSettings::setRecognitionAgreed(bool value) { write(setting::kIsRecognitionAgreed, value); }

bool AppSettings::isOwnSongs() { return read(setting::kIsOwnSongs); }

void AppSettings::setOwnSongs(bool value) { write(setting::kIsOwnSongs, value); }

QString AppSettings::ownSongFolders() { return read(setting::kOwnSongFolders); }

void AppSettings::setOwnSongFolders(const QString &value) { write(setting::kOwnSongFolders, value); }

bool AppSettings::isAutoSkipSilence() { return read(setting::kIsAutoSkipSilence); }

void AppSettings::setAutoSkipSilence(bool value) { write(setting::kIsAutoSkipSilence, value); }

bool AppSettings::isAutoFilterAudioFile() { return read(setting::kIsAutoFilterAudioFile); }

void AppSettings::setAutoFilterAudioFile(bool value) { write(setting::kIsAutoFilterAudioFile, value); }

int AppSettings::autoFilterSeconds() { return read(setting::kAutoFilterSeconds); }

void AppSettings::setAutoFilterSeconds(int value) { write(setting::kAutoFilterSeconds, value); }

bool AppSettings::isAutoSplitAudioFile() { return read(setting::kIsAutoSplitAudioFile); }

void AppSettings::setAutoSplitAudioFile(bool value) { write(setting::kIsAutoSplitAudioFile, value); }

int AppSettings::autoSplitSeconds() { return read(setting::kAutoSplitSeconds); }

void AppSettings::setAutoSplitSeconds(int value) { write(setting::kAutoSplitSeconds, value); }

bool AppSettings::isAutoSplitEverySeconds() { return read(setting::kIsAutoSplitEverySeconds); }

void AppSettings::setIsAutoSplitEverySeconds(bool value) { write(setting::kIsAutoSplitEverySeconds, value); }

int AppSettings::autoSplitEverySeconds() { return read(setting::kAutoSplitEverySeconds); }

void AppSettings::setAutoSplitEverySeconds(int value) { write(setting::kAutoSplitEverySeconds, value); }

bool AppSettings::getEnableHotkeys() { return read(setting::kEnableHotkeys); }

void AppSettings::setEnableHotkeys(bool value) { write(setting::kEnableHotkeys, value); }

QString AppSettings::hotkeyStartRecording() { return read(setting::kHotkeyStartRecording).toLower(); }

void AppSettings::setHotkeyStartRecording(const QString &value) { write(setting::kHotkeyStartRecording, value); }

QString AppSettings::hotkeyStopRecording() { return read(setting::kHotkeyStopRecording).toLower(); }

void AppSettings::setHotkeyStopRecording(const QString &value) { write(setting::kHotkeyStopRecording, value); }

QString AppSettings::hotkeyPauseRecording() { return read(setting::kHotkeyPauseRecording).toLower(); }

void AppSettings::setHotkeyPauseRecording(const QString &value) { write(setting::kHotkeyPauseRecording, value); }

QString AppSettings::lastCheckUpdatesTime() { return read(setting::kLastCheckUpdatesTime); }

void AppSettings::setLastCheckUpdatesTime(const QString &value) { write(setting::kLastCheckUpdatesTime, value); }

QString AppSettings::getUserImportPath() { return read(setting::kImportPath); }

void AppSettings::setUserImportPath(const QString &value) { write(setting::kImportPath, value); }

QString AppSettings::getUserExportPath() { return read(setting::kUserExportPath); }

void AppSettings::setUserExportPath(const QString &value) { write(setting::kUserExportPath, value); }

QString AppSettings::getAudioExportFormat() { return read(setting::kAudioExportFormat); }

void AppSettings::setExportAudioFormat(const QString &value) { write(setting::kAudioExportFormat, value); }

bool AppSettings::getIsAudioExportMergerEnable() { return read(setting::kAudioExportMergerEnable); }

void AppSettings::setAudioExportMergerEnable(bool value) { write(setting::kAudioExportMergerEnable, value); }

int AppSettings::updateSkipVersionID() { return read(setting::kUpdateSkipVersion); }

void AppSettings::setUpdateSkipVersionID(int value) { write(setting::kUpdateSkipVersion, value); }

QString AppSettings::appLanguage() {
    if (!languageOnline.isEmpty())
        return languageOnline;
    const QString stored = read(setting::kLanguage);
    // The names of an old version, the first of them misspelt.
    if (stored != QLatin1String("Portugese") && stored != QLatin1String("Portuguese"))
        return stored;
    write(setting::kLanguage, QStringLiteral("PortugueseBrazil"));
    return read(setting::kLanguage);
}

void AppSettings::setAppLanguage(const QString &language) {
    write(setting::kLanguage, language);
    if (!languageOnline.isEmpty())
        languageOnline = language;
}

QVariantList AppSettings::recordedMovieList() { return archivedList(setting::kRecordedList); }

void AppSettings::setRecordedMovieList(const QVariantList &list) {
    (void)ZQUserDefaultSetValue_Array(list, QString::fromLatin1(setting::kRecordedList)); // a failure is logged below
}

QVariantList AppSettings::scheduleTaskList() { return archivedList(setting::kScheduleTaskList); }

void AppSettings::setScheduleTaskList(const QVariantList &list) {
    (void)ZQUserDefaultSetValue_Array(list, QString::fromLatin1(setting::kScheduleTaskList)); // as above
}

QString AppSettings::getRecordingOutputDeviceName() { return recordingOutputDevice; }

void AppSettings::setRecordingOutputDeviceName(const QString &name) { recordingOutputDevice = name; }

QString AppSettings::onlineLanguage() { return languageOnline; }

void AppSettings::setOnlineLanguage(const QString &language) { languageOnline = language; }

QString AppSettings::outputFileName() { return recordingFileName; }

void AppSettings::setOutputFileName(const QString &name) { recordingFileName = name; }

} // namespace cantorel
