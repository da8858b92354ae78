#include "lang/LangTable.h"

// The texts of the settings window.

namespace cantorel {

namespace {

constexpr TextRow kSettingsGeneral[] = {
    {"Title", "settingsGeneralTitle", "General"},
    {"ExitConfirm", "settingsGeneralExitConfirm", "Ask before quitting"},
    {"CheckForUpdates", "settingsGeneralCheckForUpdates", "Check for updates at start"},
    {"SetLanguage", "settingsGeneralSetLanguage", "Language"},
    {"Hotkey", "settingsGeneralHotkey", "Hot keys"},
    {"EnableHotkeys", "settingsEnableHotkeys", "Enable hot keys"},
    {nullptr, "settingsGeneralEnableHotkeys", "Enable hot keys"},
    {"HotkeyStart", "settingsGeneralHotkeyStart", "Start recording"},
    {"HotkeyPause", "settingsGeneralHotkeyPause", "Pause recording"},
    {"HotkeyStop", "settingsGeneralHotkeyStop", "Stop recording"},
    {"HotkeyErrorDuplicate", "settingsGeneralHotkeyErrorDuplicate", "This hot key is already used for another action."},
    {nullptr, "settingsGeneralShowShareButton", "Show the share button"},
};

constexpr TextRow kSettingsDownload[] = {
    {"Title", "settingsDownloadTitle", "Download"},
    {"RemoveConfirm", "settingsDownloadRemoveConfirm", "Ask before a download is removed"},
    {"PlaySound", "settingsDownloadPlaySound", "Play a sound when a download has finished"},
    {"MaxCount", "settingsDownloadMaxCount", "Downloads at the same time"},
};

constexpr TextRow kSettingsRecord[] = {
    {"Title", "settingsRecordTitle", "Recording"},
    {"AutoName", "settingsRecordAutoName", "Name recordings automatically"},
    {"Advanced", "settingsRecordAdvanced", "Advanced"},
    {"SkipSilent", "settingsRecordSkipSilent", "Skip silence while recording"},
    {"AGC", "settingsRecordAGC", "Automatic gain control"},
    {"SplitBySilence", "settingsRecordSplitBySilence", "Start a new file after [#3 seconds#] of silence"},
    {"SplitByInterval", "settingsRecordSplitByInterval", "Start a new file every [#240 seconds#]"},
    {"SaveFilter", "settingsRecordSaveFilter", "Discard recordings shorter than [#5 seconds#]"},
    {"PlaybackDevice", "settingsRecordPlaybackDevice", "Playback device"},
    {"SystemSound", "settingsRecordSystemSound", "System sound"},
    {"Both", "settingsRecordBoth", "System sound and microphone"},
    {"AudioSourceTipsSystemSound", "settingsRecordAudioSourceTipsSystemSound", "Records what the computer plays."},
    {"AudioSourceTipsMic", "settingsRecordAudioSourceTipsMic", "Records the microphone."},
    {"AudioSourceTipsBoth", "settingsRecordAudioSourceTipsBoth",
     "Records what the computer plays together with the microphone."},
    {"OpenSoundDialog", "settingsRecordOpenSoundDialog", "Open the sound settings"},
    {"AudioSource", "settingsRecordAudioSource", "Audio source"},
    {"AutoIdentifyID3", "settingsRecordAutoIdentifyID3", "Identify recordings and write their tags"},
    {"ConfigureDidChange", "settingsConfigureDidChange", "The sound configuration has changed."},
    {nullptr, "settingsRecordMicrophone", "Microphone"},
};

} // namespace

const TextGroup langtexts::kSettingsGeneral{"//settings//General", ::cantorel::kSettingsGeneral};
const TextGroup langtexts::kSettingsDownload{"//settings//Download", ::cantorel::kSettingsDownload};
const TextGroup langtexts::kSettingsRecord{"//settings//Record", ::cantorel::kSettingsRecord};

} // namespace cantorel
