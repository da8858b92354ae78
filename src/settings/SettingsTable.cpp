#include "settings/SettingsTable.h"

#include "settings/AppSettings.h"

#include <algorithm>
#include <array>
#include <type_traits>

namespace cantorel {

namespace {

template <class T> struct FirstArgument;
template <class A> struct FirstArgument<void (*)(A)> { using Type = std::decay_t<A>; };

// The pair of operations behind a row, as values.
template <auto Get, auto Set> SettingRow row(SettingRow described) {
    if constexpr (!std::is_same_v<decltype(Get), std::nullptr_t>)
        described.get = [] { return QVariant(Get()); };
    else
        described.get = [] { return QVariant(); };
    described.set = [](const QVariant &value) { Set(value.value<typename FirstArgument<decltype(Set)>::Type>()); };
    return described;
}

SettingRow described(const IntegerSetting &s) {
    return {QString::fromLatin1(s.key), SettingKind::Integer, s.fallback, s.least, s.most, nullptr, nullptr};
}
SettingRow described(const BooleanSetting &s) {
    return {QString::fromLatin1(s.key), SettingKind::Boolean, s.fallback, 0, 0, nullptr, nullptr};
}
SettingRow described(const TextSetting &s) {
    return {QString::fromLatin1(s.key), SettingKind::Text, QString::fromLatin1(s.fallback), 0, 0, nullptr, nullptr};
}
SettingRow described(const FolderSetting &s) {
    return {QString::fromLatin1(s.key),
            SettingKind::Folder,
            AppSettings::defaultMusicDirectoryPath(),
            0,
            0,
            nullptr,
            nullptr};
}

using A = AppSettings;

template <auto Get, auto Set, class S> SettingRow of(const S &s) { return row<Get, Set>(described(s)); }

} // namespace

std::span<const SettingRow> settingRows() {
    using namespace setting;
    static const std::array rows = {
        of<&A::recordNameBaseOn, &A::setrecordNameBaseOn>(kRecordNameBaseOn),
        of<&A::outputPath, &A::setOutputPath>(kOutputFolderPath),
        of<&A::convertOutputPath, &A::setConvertOutputPath>(kConvertOutputFolder),
        of<&A::isAutoGenFileName, &A::setIsAutoGenFileName>(kIsAutoGenFileName),
        of<&A::isBeepBeforeRecording, &A::setIsBeepBeforeRecording>(kIsBeepBeforeRecording),
        of<nullptr, &A::setIsBeepBeforeRecording>(kIsBeep),
        of<&A::getAudioFormat, &A::setAudioFormat>(kAudioFormat),
        of<&A::getMicrophone, &A::setMicrophone>(kMicrophoneName),
        of<&A::getAggregateMicrophone, &A::setAggregateMicrophone>(kAggregateMicrophone),
        of<&A::getAudioInputDeviceNameBeforeRecording, &A::setAudioInputDeviceNameBeforeRecording>(
            kAudioInputDeviceNameBeforeRecording),
        of<&A::getAudioOutputDeviceNameBeforeRecording, &A::setAudioOutputDeviceNameBeforeRecording>(
            kAudioOutputDeviceNameBeforeRecording),
        of<&A::isAutoIdentifyID3, &A::setAutoIdentifyID3>(kIsAutoIdentifyID3),
        of<&A::recognitionAccess, &A::setRecognitionAccess>(kRecognitionAccess),
        of<&A::recognitionServer, &A::setRecognitionServer>(kRecognitionServer),
        of<&A::musicDataServer, &A::setMusicDataServer>(kMusicDataServer),
        of<&A::coverServer, &A::setCoverServer>(kCoverServer),
        of<&A::isRecognitionAgreed, &A::setRecognitionAgreed>(kIsRecognitionAgreed),
        of<&A::isOwnSongs, &A::setOwnSongs>(kIsOwnSongs),
        of<&A::ownSongFolders, &A::setOwnSongFolders>(kOwnSongFolders),
        of<&A::isAutoSkipSilence, &A::setAutoSkipSilence>(kIsAutoSkipSilence),
        of<&A::isAutoFilterAudioFile, &A::setAutoFilterAudioFile>(kIsAutoFilterAudioFile),
        of<&A::autoFilterSeconds, &A::setAutoFilterSeconds>(kAutoFilterSeconds),
        of<&A::isAutoSplitAudioFile, &A::setAutoSplitAudioFile>(kIsAutoSplitAudioFile),
        of<&A::autoSplitSeconds, &A::setAutoSplitSeconds>(kAutoSplitSeconds),
        of<&A::isAutoSplitEverySeconds, &A::setIsAutoSplitEverySeconds>(kIsAutoSplitEverySeconds),
        of<&A::autoSplitEverySeconds, &A::setAutoSplitEverySeconds>(kAutoSplitEverySeconds),
        of<&A::getEnableHotkeys, &A::setEnableHotkeys>(kEnableHotkeys),
        of<&A::hotkeyStartRecording, &A::setHotkeyStartRecording>(kHotkeyStartRecording),
        of<&A::hotkeyStopRecording, &A::setHotkeyStopRecording>(kHotkeyStopRecording),
        of<&A::hotkeyPauseRecording, &A::setHotkeyPauseRecording>(kHotkeyPauseRecording),
        of<&A::getAudioType, &A::setAudioType>(kAudioInputType),
        of<&A::lastCheckUpdatesTime, &A::setLastCheckUpdatesTime>(kLastCheckUpdatesTime),
        of<&A::getUserImportPath, &A::setUserImportPath>(kImportPath),
        of<&A::getUserExportPath, &A::setUserExportPath>(kUserExportPath),
        of<&A::getAudioExportFormat, &A::setExportAudioFormat>(kAudioExportFormat),
        of<&A::getIsAudioExportMergerEnable, &A::setAudioExportMergerEnable>(kAudioExportMergerEnable),
        of<&A::appLanguage, &A::setAppLanguage>(kLanguage),
        of<&A::updateSkipVersionID, &A::setUpdateSkipVersionID>(kUpdateSkipVersion),
    };
    return rows;
}

const SettingRow *settingRow(const QString &key) {
    const auto rows = settingRows();
    const auto found = std::find_if(rows.begin(), rows.end(), [&](const SettingRow &row) { return row.key == key; });
    return found == rows.end() ? nullptr : &*found;
}

} // namespace cantorel
