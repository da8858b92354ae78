#pragma once

#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/SearchPaths.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace cantorel {

// The names of the product's own devices.
inline constexpr const char *kTessolarAudioDeviceName = "Tessolar_AudioDevice";
inline constexpr const char *kTessolarAggregateDeviceName = "Tessolar_AggregateDevice";

// Posted with the new language's name, and with whether the main menu shows its editor item.
inline constexpr foundation::NotificationName<QString> kNotificationChangeLanguage{"changeLanguage"};
inline constexpr foundation::NotificationName<bool> kNotificationShowEditorItem{"mainMenuNeedShowEditorItem"};

// The one place where persistent options and fixed constants of the product are read and written. Class operations
// only; any thread, except for the in-memory options, which are set on the main thread. Keys, types and defaults stand
// in SettingsTable.h.
class AppSettings {
public:
    AppSettings() = delete;

    // Registers the defaults of the resource "UserDefaults.plist". Before any setting is read.
    static void initSettingInNeed();

    // Reads from the own domain, else what the former version left, else the registered default; a null value when
    // there is none. What the former version left is not copied: the first write of a key ends its part.
    static QVariant getFromUserDefaults_Object(const QString &key);
    static QByteArray getFromUserDefaults_Data(const QString &key);
    // The same, read from the value's description: a stored text "12" is the integer 12.
    static int getFromUserDefaults_Integer(const QString &key, int withDefaultValue);
    static bool getFromUserDefaults_BOOL(const QString &key, bool withDefaultValue);
    static double getFromUserDefaults_Double(const QString &key, double withDefaultValue);
    static QString getFromUserDefaults_String(const QString &key, const QString &withDefaultValue);
    // Save at once.
    static void saveToUserDefaultsForKeyBOOLValue(const QString &key, bool value);
    static void saveToUserDefaultsForKeyIngeterValue(const QString &key, int value); // Spelling is fixed.
    static void saveToUserDefaultsForKeyObjectValue(const QString &key, const QVariant &value);
    static void saveToUserDefaultsForKeyDoubleValue(const QString &key, double value);

    // Recording.
    static int recordNameBaseOn(); // the number in the next automatic name
    static void setrecordNameBaseOn(int number);
    // Folders that exist: a stored one that does not, or is a file, is answered by the user's Music folder.
    static QString outputPath();
    static void setOutputPath(const QString &path);
    static QString convertOutputPath();
    static void setConvertOutputPath(const QString &path);
    static bool isAutoGenFileName();
    static void setIsAutoGenFileName(bool value);
    // Deliberate: the setter writes another key, and saves it only with the next setting, so the getter never sees it.
    static bool isBeepBeforeRecording();
    static void setIsBeepBeforeRecording(bool value);
    static int getAudioFormat(); // index into audioFormats()
    static void setAudioFormat(int index);
    static int getAudioType(); // 0 system sound, 1 microphone, 2 both
    static void setAudioType(int type);
    static QString getMicrophone();
    static void setMicrophone(const QString &name);
    static QString getAggregateMicrophone();
    static void setAggregateMicrophone(const QString &name);
    static QString getAudioInputDeviceNameBeforeRecording();
    static void setAudioInputDeviceNameBeforeRecording(const QString &name);
    static QString getAudioOutputDeviceNameBeforeRecording();
    static void setAudioOutputDeviceNameBeforeRecording(const QString &name);
    static bool isAutoIdentifyID3();
    static void setAutoIdentifyID3(bool value);
    // What the recognition service wants to know us by; without it nothing is asked.
    static QString recognitionAccess();
    static void setRecognitionAccess(const QString &value);
    // Where the services stand; each is an address without a stroke at its end.
    static QString recognitionServer();
    static void setRecognitionServer(const QString &value);
    static QString musicDataServer();
    static void setMusicDataServer(const QString &value);
    static QString coverServer();
    static void setCoverServer(const QString &value);
    // Whether the person was told what the services are sent; before that nothing is.
    static bool isRecognitionAgreed();
    static void setRecognitionAgreed(bool value);
    // Whether the songs of one's own folders are known by their sound.
    static bool isOwnSongs();
    static void setOwnSongs(bool value);
    // Those folders, one a line; empty for the Music folder.
    static QString ownSongFolders();
    static void setOwnSongFolders(const QString &value);

    // Silence, filter and split.
    static bool isAutoSkipSilence();
    static void setAutoSkipSilence(bool value);
    static bool isAutoFilterAudioFile();
    static void setAutoFilterAudioFile(bool value);
    static int autoFilterSeconds();
    static void setAutoFilterSeconds(int seconds);
    static bool isAutoSplitAudioFile();
    static void setAutoSplitAudioFile(bool value);
    static int autoSplitSeconds(); // milliseconds, despite its name
    static void setAutoSplitSeconds(int milliseconds);
    static bool isAutoSplitEverySeconds();
    static void setIsAutoSplitEverySeconds(bool value);
    static int autoSplitEverySeconds();
    static void setAutoSplitEverySeconds(int seconds);

    // Hot keys; the texts are answered in lower case.
    static bool getEnableHotkeys();
    static void setEnableHotkeys(bool value);
    static QString hotkeyStartRecording();
    static void setHotkeyStartRecording(const QString &text);
    static QString hotkeyStopRecording();
    static void setHotkeyStopRecording(const QString &text);
    static QString hotkeyPauseRecording();
    static void setHotkeyPauseRecording(const QString &text);

    // Import, export, updates, language.
    static QString lastCheckUpdatesTime();
    static void setLastCheckUpdatesTime(const QString &time);
    static QString getUserImportPath();
    static void setUserImportPath(const QString &path);
    static QString getUserExportPath();
    static void setUserExportPath(const QString &path);
    static QString getAudioExportFormat();
    static void setExportAudioFormat(const QString &extension);
    static bool getIsAudioExportMergerEnable();
    static void setAudioExportMergerEnable(bool value);
    static int updateSkipVersionID();
    static void setUpdateSkipVersionID(int version);
    // The online language if one is set, else the stored one; a stored old name is replaced by the new one first.
    static QString appLanguage();
    static void setAppLanguage(const QString &language);

    // The stored lists, of property-list values or foundation::ArchivedObject; empty when missing or damaged.
    static QVariantList recordedMovieList();
    static void setRecordedMovieList(const QVariantList &list);
    static QVariantList scheduleTaskList();
    static void setScheduleTaskList(const QVariantList &list);

    // In memory only, empty at each launch.
    static QString getRecordingOutputDeviceName();
    static void setRecordingOutputDeviceName(const QString &name);
    static QString onlineLanguage(); // forced from the command line
    static void setOnlineLanguage(const QString &language);
    static QString outputFileName(); // of the recording under way
    static void setOutputFileName(const QString &name);

    // Lists of formats: titles of the recording presets, lower-case extensions.
    static const QStringList &audioFormats();
    static const QStringList &supportAudioTypes();
    static const QStringList &losslessAudioFormats();
    static const QStringList &supportIntoConvertTypes();
    // Deliberate: true for every text that the joined list contains, so "m4" or "wa" too. Spelling is fixed.
    static bool isSuportIntoConvertFileFormat(const QString &extension);
    static bool isLosslessAudioFormat(const QString &extension);

    // Constants of the product.
    static QString appName();
    static QString reportName();    // in the name of the update description
    static QString supportServer(); // address without a slash at the end
    static QString appVersion();    // "2.5.0"
    static bool appDebug();         // whether CANTOREL_DEBUG is set: no service of the maker's is asked then
    static QString defaultFontName();
    static QString appIdenitfyName(); // Spelling is fixed.
    static QString TessolarAudioDevice_String();
    static const char *TessolarAudioDevice_CString();
    static QString TessolarAggregateDeviceName_String();
    static QString TessolarAggregateDeviceUID_String();
    static QString audioDriverName();
    static QString TessolarConverterPath();
    static QString notificationNameFroChangeLanguage(); // Spelling is fixed.
    static int appVersionID();

    // Folders and files. The common directory is made when it is missing; a failure to make it is ignored.
    static QString getCommonDirectory(foundation::SearchPath directory, const QString &subDir);
    static QString getApplicationDirectory();
    static QString logFile();
    static QString kextInstallLogFile();
    static QString gnUserDataFile();
    static QString defaultCachesPath();
    static QString defaultArtworkImageCachesPath();
    static QString defaultMusicDirectoryPath();
    static QString defaultArtworkSelectPath();
    static QString defaultExportPath();

    // A path that does not exist yet: the path itself, else with the number at the end of its name counted up ("-2",
    // "-3", ...). Deliberate: a name is replaced wherever it stands in the path, so the answer's folder may be another
    // and may not exist; freePathInFolder() is what callers want.
    static QString checkFilePathIsExistAndAutoReplace(const QString &path);

    // The same, but in the path's own folder and with its own extension, whatever its name is.
    static QString freePathInFolder(const QString &path);
    // The name without extension that comes next: the number at its end counted up.
    static QString followingStem(const QString &stem);

    // Renames a file to another extension under a free name; the new path, or empty when that failed.
    static QString changeFileToExtension(const QString &extension, const QString &atFilePath);

    // Shows or hides the main menu's editor menu, at index 4: posts kNotificationShowEditorItem.
    static void mainMenuNeedShowEditorItem(bool show);
};

} // namespace cantorel
