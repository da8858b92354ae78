#pragma once

#include <QString>
#include <QVariant>

#include <limits>
#include <span>

namespace cantorel {

// One persistent option: its key and what its getter hands back when nothing is stored. The only place where either
// stands; getters, command line and tests read it.
template <class T> struct Setting {
    const char *key;
    T fallback;
};

// An option whose sensible values are a range; getters answer whatever is stored.
struct IntegerSetting : Setting<int> {
    int least = 0;
    int most = std::numeric_limits<int>::max();
};

using BooleanSetting = Setting<bool>;
using TextSetting = Setting<const char *>;

// A folder; its fallback is the user's Music folder.
struct FolderSetting {
    const char *key;
};

namespace setting {

inline constexpr IntegerSetting kRecordNameBaseOn{{"recordNameBaseOn", 1}, 0, std::numeric_limits<int>::max() - 1};
inline constexpr FolderSetting kOutputFolderPath{"outputFolderPath"};
inline constexpr FolderSetting kConvertOutputFolder{"convertOutputFolder"};
inline constexpr BooleanSetting kIsAutoGenFileName{"isAutoGenFileName", true};
inline constexpr BooleanSetting kIsBeepBeforeRecording{"isBeepBeforeRecording", true};
inline constexpr BooleanSetting kIsBeep{"isBeep", true}; // deliberately written where nothing reads it
inline constexpr IntegerSetting kAudioFormat{{"audioFormat", 0}, 0, 7};
inline constexpr TextSetting kMicrophoneName{"microphoneName", ""};
inline constexpr TextSetting kAggregateMicrophone{"aggregateMicrophone", ""};
inline constexpr TextSetting kAudioInputDeviceNameBeforeRecording{"audioInputDeviceNameBeforeRecording", ""};
inline constexpr TextSetting kAudioOutputDeviceNameBeforeRecording{"audioOutputDeviceNameBeforeRecording", ""};
inline constexpr BooleanSetting kIsAutoIdentifyID3{"isAutoIdentifyID3", true};
inline constexpr TextSetting kRecognitionAccess{"recognitionAccess", ""}; // the key of the look-up service
inline constexpr TextSetting kRecognitionServer{"recognitionServer", "https://api.acoustid.org"};
inline constexpr TextSetting kMusicDataServer{"musicDataServer", "https://musicbrainz.org"};
inline constexpr TextSetting kCoverServer{"coverServer", "https://coverartarchive.org"};
inline constexpr BooleanSetting kIsRecognitionAgreed{"isRecognitionAgreed", false};
inline constexpr BooleanSetting kIsOwnSongs{"isOwnSongs", false};
inline constexpr TextSetting kOwnSongFolders{"ownSongFolders", ""}; // one a line; empty for the Music folder
inline constexpr BooleanSetting kIsAutoSkipSilence{"isAutoSkipSilence", true};
inline constexpr BooleanSetting kIsAutoFilterAudioFile{"isAutoFilterAudioFile", false};
inline constexpr IntegerSetting kAutoFilterSeconds{{"autoFilterSeconds", 5}};
inline constexpr BooleanSetting kIsAutoSplitAudioFile{"isAutoSplitAudioFile", false};
inline constexpr IntegerSetting kAutoSplitSeconds{{"autoSplitSeconds", 1000}}; // milliseconds despite its name
inline constexpr BooleanSetting kIsAutoSplitEverySeconds{"isAutoSplitEverySeconds", false};
inline constexpr IntegerSetting kAutoSplitEverySeconds{{"autoSplitEverySeconds", 240}, 1};
inline constexpr BooleanSetting kEnableHotkeys{"enableHotkeys", true};
inline constexpr TextSetting kHotkeyStartRecording{"hotkeyStartRecording", "ctrl cmd s"};
inline constexpr TextSetting kHotkeyStopRecording{"hotkeyStopRecording", "ctrl cmd t"};
inline constexpr TextSetting kHotkeyPauseRecording{"hotkeyPauseRecording", "ctrl cmd p"};
inline constexpr IntegerSetting kAudioInputType{{"audioInputType", 0}, 0, 2};
inline constexpr TextSetting kLastCheckUpdatesTime{"lastCheckUpdatesTime", ""};
inline constexpr FolderSetting kImportPath{"importPath"};
inline constexpr FolderSetting kUserExportPath{"userExportPath"};
inline constexpr TextSetting kAudioExportFormat{"audioExportFormat", "mp3"};
inline constexpr BooleanSetting kAudioExportMergerEnable{"audioExportMergerEnable", true};
inline constexpr TextSetting kLanguage{"Language", "English"};
inline constexpr IntegerSetting kUpdateSkipVersion{{"updateSkipVersion", 0}};

// Keyed archives, not among the rows below.
inline constexpr const char *kRecordedList = "recordedList";
inline constexpr const char *kScheduleTaskList = "scheduleTaskList";
// Written and read directly through the store. Spelling is fixed: stored settings use it.
inline constexpr const char *kOldAggregateSubDeivceUIDs = "OldAggregateSubDeivceUIDs";
// What the desktop remembers by which screen is shared; it serves once. The same way.
inline constexpr const char *kScreenShareToken = "screenShareToken";

} // namespace setting

enum class SettingKind { Integer, Boolean, Text, Folder };

// One option as a face shows it: what its getter answers, in its own type, and its setter.
struct SettingRow {
    QString key;
    SettingKind kind;
    QVariant fallback;
    int least = 0, most = 0; // of an integer
    QVariant (*get)();       // a null value when the option has no getter
    void (*set)(const QVariant &value);
};

// Every persistent option but the two archives, in the order of the declarations above.
std::span<const SettingRow> settingRows();

// The row of a key, or null.
const SettingRow *settingRow(const QString &key);

} // namespace cantorel
