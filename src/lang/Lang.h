#pragma once

#include "platform/foundation/Sentence.h"

#include <QLocale>
#include <QString>
#include <QStringList>

#include <span>

namespace cantorel {

// A language: its name, which is also its file's base name, what it calls itself, and its codes.
struct LanguageInfo {
    QString name;
    QString displayName;
    QStringList codes;
};

// Every text that a person sees, by its key. Each answers its built-in English text until a language file is loaded,
// and a null string when that file does not have it. Texts may carry markers such as "[#AppName#]" for callers to
// replace. Main thread.
class Lang {
public:
    Lang() = delete;

    // All languages. Two share the code "nl", and one has none; both as fixed.
    static std::span<const LanguageInfo> languages();
    static bool isLanguageName(const QString &name);
    // The language of a code in any case; "English" when there is none. "nl" is Dutch.
    static QString GetLangNameFromCode(const QString &code);
    // What the languages call themselves, and the name of one of these; null when there is none.
    static QStringList getAllLanguages();
    static QString getLanguageFileName(const QString &displayName);

    // Loads every text from the language's file, for all at once; English for an empty name. Where the file cannot be
    // read nothing changes. A text that the file does not have is null from then on, not the built-in one.
    static void ChangeLanguage(const QString &name);
    // How the loaded language writes dates and orders words: the desktop's own way where that is the same language.
    static QLocale locale();

    // A text by its key; null for an unknown key. The keys below are spelled as language files spell them.
    static bool isKey(const QString &key);
    static QString text(const QString &key);

    // What is said to a person: in the language in force for windows, and in English for the command line, the log and
    // other programs. The English is the built-in one, and may be asked for on any thread.
    static QString sentence(const foundation::Sentence &sentence);
    static QString english(const foundation::Sentence &sentence);

    // Common.
    static QString commFileName() { return builtInOrLoaded("commFileName"); }
    static QString commSize() { return builtInOrLoaded("commSize"); }
    static QString commStatus() { return builtInOrLoaded("commStatus"); }
    static QString commDuration() { return builtInOrLoaded("commDuration"); }
    static QString commFileIncorrect() { return builtInOrLoaded("commFileIncorrect"); }
    static QString commCancelOperate() { return builtInOrLoaded("commCancelOperate"); }
    static QString commDone() { return builtInOrLoaded("commDone"); }
    static QString commFinishedSuccessfully() { return builtInOrLoaded("commFinishedSuccessfully"); }
    static QString commFormat() { return builtInOrLoaded("commFormat"); }
    static QString commNoCDorDVD() { return builtInOrLoaded("commNoCDorDVD"); }
    static QString commTitle() { return builtInOrLoaded("commTitle"); }
    static QString commOutput() { return builtInOrLoaded("commOutput"); }
    static QString commPreparing() { return builtInOrLoaded("commPreparing"); }
    static QString commAnalyzing() { return builtInOrLoaded("commAnalyzing"); }
    static QString commConverting() { return builtInOrLoaded("commConverting"); }
    static QString commMerging() { return builtInOrLoaded("commMerging"); }
    static QString commLoading() { return builtInOrLoaded("commLoading"); }
    static QString commEditing() { return builtInOrLoaded("commEditing"); }
    static QString commBitrate() { return builtInOrLoaded("commBitrate"); }
    static QString commCompleted() { return builtInOrLoaded("commCompleted"); }
    static QString commSpeed() { return builtInOrLoaded("commSpeed"); }
    static QString commRemoveConfirm() { return builtInOrLoaded("commRemoveConfirm"); }
    static QString commSelectFolder() { return builtInOrLoaded("commSelectFolder"); }
    static QString commSeconds() { return builtInOrLoaded("commSeconds"); }
    static QString commMilliseconds() { return builtInOrLoaded("commMilliseconds"); }
    static QString commSearching() { return builtInOrLoaded("commSearching"); }
    static QString commInputKeywords() { return builtInOrLoaded("commInputKeywords"); }
    static QString commEnjoyMusic() { return builtInOrLoaded("commEnjoyMusic"); }
    static QString commNowPlaying() { return builtInOrLoaded("commNowPlaying"); }
    static QString commIsStillRunning() { return builtInOrLoaded("commIsStillRunning"); }
    static QString commErrorNoVirtualSoundCard() { return builtInOrLoaded("commErrorNoVirtualSoundCard"); }
    static QString commInstalledSuccess() { return builtInOrLoaded("commInstalledSuccess"); }
    static QString commExitConfirm() { return builtInOrLoaded("commExitConfirm"); }
    static QString commAllTask() { return builtInOrLoaded("commAllTask"); }
    static QString commRadio() { return builtInOrLoaded("commRadio"); }
    static QString commInstalling() { return builtInOrLoaded("commInstalling"); }
    static QString commProcess() { return builtInOrLoaded("commProcess"); }
    static QString commSelectCriterion() { return builtInOrLoaded("commSelectCriterion"); }
    static QString commAddToFavorite() { return builtInOrLoaded("commAddToFavorite"); }
    static QString commDonntAsk() { return builtInOrLoaded("commDonntAsk"); }
    static QString commGenre() { return builtInOrLoaded("commGenre"); }
    static QString commMyFovorite() { return builtInOrLoaded("commMyFovorite"); }
    static QString commShare() { return builtInOrLoaded("commShare"); }
    static QString commShareItOn() { return builtInOrLoaded("commShareItOn"); }
    static QString commRecordRadioTips() { return builtInOrLoaded("commRecordRadioTips"); }
    static QString commCopiedToClipboard() { return builtInOrLoaded("commCopiedToClipboard"); }
    static QString commFileInformation() { return builtInOrLoaded("commFileInformation"); }
    static QString commSaveAs() { return builtInOrLoaded("commSaveAs"); }
    static QString commDateAdded() { return builtInOrLoaded("commDateAdded"); }
    static QString commLeftChannel() { return builtInOrLoaded("commLeftChannel"); }
    static QString commRightChannel() { return builtInOrLoaded("commRightChannel"); }
    static QString commInputVolume() { return builtInOrLoaded("commInputVolume"); }
    static QString commIdentifying() { return builtInOrLoaded("commIdentifying"); }
    static QString commProcessing() { return builtInOrLoaded("commProcessing"); }
    static QString commOpendeviceError() { return builtInOrLoaded("commOpendeviceError"); }
    static QString commNewFolder() { return builtInOrLoaded("commNewFolder"); }
    static QString commNeedRelaunch() { return builtInOrLoaded("commNeedRelaunch"); }
    static QString commDefaultAudioInputDeviceUnavailable() {
        return builtInOrLoaded("commDefaultAudioInputDeviceUnavailable");
    }
    static QString commDefaultAudioOutputDeviceUnavailable() {
        return builtInOrLoaded("commDefaultAudioOutputDeviceUnavailable");
    }
    static QString commAlertCloseAppWithProgressingTask() {
        return builtInOrLoaded("commAlertCloseAppWithProgressingTask");
    }
    static QString commAppName() { return builtInOrLoaded("commAppName"); }
    static QString commDeleteConfirm() { return builtInOrLoaded("commDeleteConfirm"); }
    static QString commExporting() { return builtInOrLoaded("commExporting"); }
    static QString commInstalledFailed() { return builtInOrLoaded("commInstalledFailed"); }
    static QString commStopRecordingWarning() { return builtInOrLoaded("commStopRecordingWarning"); }

    // Buttons.
    static QString btnOn() { return builtInOrLoaded("btnOn"); }
    static QString btnOff() { return builtInOrLoaded("btnOff"); }
    static QString btnResume() { return builtInOrLoaded("btnResume"); }
    static QString btnRemove() { return builtInOrLoaded("btnRemove"); }
    static QString btnSettings() { return builtInOrLoaded("btnSettings"); }
    static QString btnPlay() { return builtInOrLoaded("btnPlay"); }
    static QString btnEdit() { return builtInOrLoaded("btnEdit"); }
    static QString btnOpenFolder() { return builtInOrLoaded("btnOpenFolder"); }
    static QString btnStart() { return builtInOrLoaded("btnStart"); }
    static QString btnConvert() { return builtInOrLoaded("btnConvert"); }
    static QString btnBurnToCD() { return builtInOrLoaded("btnBurnToCD"); }
    static QString btnTrackInfo() { return builtInOrLoaded("btnTrackInfo"); }
    static QString btnRename() { return builtInOrLoaded("btnRename"); }
    static QString btnCreate() { return builtInOrLoaded("btnCreate"); }
    static QString btnDelete() { return builtInOrLoaded("btnDelete"); }
    static QString btnOK() { return builtInOrLoaded("btnOK"); }
    static QString btnCancel() { return builtInOrLoaded("btnCancel"); }
    static QString btnShutDown() { return builtInOrLoaded("btnShutDown"); }
    static QString btnNo() { return builtInOrLoaded("btnNo"); }
    static QString btnClose() { return builtInOrLoaded("btnClose"); }
    static QString btnOpen() { return builtInOrLoaded("btnOpen"); }
    static QString btnTest() { return builtInOrLoaded("btnTest"); }
    static QString btnHelp() { return builtInOrLoaded("btnHelp"); }
    static QString btnStop() { return builtInOrLoaded("btnStop"); }
    static QString btnAdd() { return builtInOrLoaded("btnAdd"); }
    static QString btnClear() { return builtInOrLoaded("btnClear"); }
    static QString btnMoveUp() { return builtInOrLoaded("btnMoveUp"); }
    static QString btnMoveDown() { return builtInOrLoaded("btnMoveDown"); }
    static QString btnSave() { return builtInOrLoaded("btnSave"); }
    static QString btnExit() { return builtInOrLoaded("btnExit"); }
    static QString btnSearchMusic() { return builtInOrLoaded("btnSearchMusic"); }
    static QString btnRemoveFromFavorite() { return builtInOrLoaded("btnRemoveFromFavorite"); }
    static QString btnCopyToClipboard() { return builtInOrLoaded("btnCopyToClipboard"); }
    static QString btnAddToDownload() { return builtInOrLoaded("btnAddToDownload"); }
    static QString btnViewLogs() { return builtInOrLoaded("btnViewLogs"); }
    static QString btnShowInFinder() { return builtInOrLoaded("btnShowInFinder"); }
    static QString btnIdentifyID3() { return builtInOrLoaded("btnIdentifyID3"); }
    static QString btnSleep() { return builtInOrLoaded("btnSleep"); }
    static QString btnAddToiTunes() { return builtInOrLoaded("btnAddToiTunes"); }
    static QString btnAddToFavorite() { return builtInOrLoaded("btnAddToFavorite"); }
    static QString btnGetInfo() { return builtInOrLoaded("btnGetInfo"); }
    static QString btnPause() { return builtInOrLoaded("btnPause"); }
    static QString btnYes() { return builtInOrLoaded("btnYes"); }

    // Menus.
    static QString menuFile() { return builtInOrLoaded("menuFile"); }
    static QString menuEdit() { return builtInOrLoaded("menuEdit"); }
    static QString menuRemoveSelected() { return builtInOrLoaded("menuRemoveSelected"); }
    static QString menuClearAll() { return builtInOrLoaded("menuClearAll"); }
    static QString menuCheckAll() { return builtInOrLoaded("menuCheckAll"); }
    static QString menuUncheckAll() { return builtInOrLoaded("menuUncheckAll"); }
    static QString menuCut() { return builtInOrLoaded("menuCut"); }
    static QString menuSelectAll() { return builtInOrLoaded("menuSelectAll"); }
    static QString menuSettings() { return builtInOrLoaded("menuSettings"); }
    static QString menuLanguage() { return builtInOrLoaded("menuLanguage"); }
    static QString menuTools() { return builtInOrLoaded("menuTools"); }
    static QString menuAudioRecorder() { return builtInOrLoaded("menuAudioRecorder"); }
    static QString menuAudioConverter() { return builtInOrLoaded("menuAudioConverter"); }
    static QString menuAudioEditor() { return builtInOrLoaded("menuAudioEditor"); }
    static QString menuCDRipper() { return builtInOrLoaded("menuCDRipper"); }
    static QString menuCDBurner() { return builtInOrLoaded("menuCDBurner"); }
    static QString menuID3() { return builtInOrLoaded("menuID3"); }
    static QString menuCreateScheduleTask() { return builtInOrLoaded("menuCreateScheduleTask"); }
    static QString menuHelp() { return builtInOrLoaded("menuHelp"); }
    static QString menuOnlineSupport() { return builtInOrLoaded("menuOnlineSupport"); }
    static QString menuFeedback() { return builtInOrLoaded("menuFeedback"); }
    static QString menuCheckforUpdates() { return builtInOrLoaded("menuCheckforUpdates"); }
    static QString menuAbout() { return builtInOrLoaded("menuAbout"); }
    static QString menuShowMainWindow() { return builtInOrLoaded("menuShowMainWindow"); }
    static QString menuDownloadLogs() { return builtInOrLoaded("menuDownloadLogs"); }
    static QString menuDeleteFromDisk() { return builtInOrLoaded("menuDeleteFromDisk"); }
    static QString menuCommunity() { return builtInOrLoaded("menuCommunity"); }
    static QString menuCopy() { return builtInOrLoaded("menuCopy"); }
    static QString menuSupport() { return builtInOrLoaded("menuSupport"); }

    // Settings: general.
    static QString settingsGeneralTitle() { return builtInOrLoaded("settingsGeneralTitle"); }
    static QString settingsGeneralExitConfirm() { return builtInOrLoaded("settingsGeneralExitConfirm"); }
    static QString settingsGeneralCheckForUpdates() { return builtInOrLoaded("settingsGeneralCheckForUpdates"); }
    static QString settingsGeneralSetLanguage() { return builtInOrLoaded("settingsGeneralSetLanguage"); }
    static QString settingsGeneralHotkey() { return builtInOrLoaded("settingsGeneralHotkey"); }
    static QString settingsEnableHotkeys() { return builtInOrLoaded("settingsEnableHotkeys"); }
    static QString settingsGeneralEnableHotkeys() { return builtInOrLoaded("settingsGeneralEnableHotkeys"); }
    static QString settingsGeneralHotkeyStart() { return builtInOrLoaded("settingsGeneralHotkeyStart"); }
    static QString settingsGeneralHotkeyPause() { return builtInOrLoaded("settingsGeneralHotkeyPause"); }
    static QString settingsGeneralHotkeyStop() { return builtInOrLoaded("settingsGeneralHotkeyStop"); }
    static QString settingsGeneralHotkeyErrorDuplicate() {
        return builtInOrLoaded("settingsGeneralHotkeyErrorDuplicate");
    }
    static QString settingsGeneralShowShareButton() { return builtInOrLoaded("settingsGeneralShowShareButton"); }

    // Settings: download.
    static QString settingsDownloadTitle() { return builtInOrLoaded("settingsDownloadTitle"); }
    static QString settingsDownloadRemoveConfirm() { return builtInOrLoaded("settingsDownloadRemoveConfirm"); }
    static QString settingsDownloadPlaySound() { return builtInOrLoaded("settingsDownloadPlaySound"); }
    static QString settingsDownloadMaxCount() { return builtInOrLoaded("settingsDownloadMaxCount"); }

    // Settings: recording.
    static QString settingsRecordTitle() { return builtInOrLoaded("settingsRecordTitle"); }
    static QString settingsRecordAutoName() { return builtInOrLoaded("settingsRecordAutoName"); }
    static QString settingsRecordAdvanced() { return builtInOrLoaded("settingsRecordAdvanced"); }
    static QString settingsRecordSkipSilent() { return builtInOrLoaded("settingsRecordSkipSilent"); }
    static QString settingsRecordAGC() { return builtInOrLoaded("settingsRecordAGC"); }
    static QString settingsRecordSplitBySilence() { return builtInOrLoaded("settingsRecordSplitBySilence"); }
    static QString settingsRecordSplitByInterval() { return builtInOrLoaded("settingsRecordSplitByInterval"); }
    static QString settingsRecordSaveFilter() { return builtInOrLoaded("settingsRecordSaveFilter"); }
    static QString settingsRecordPlaybackDevice() { return builtInOrLoaded("settingsRecordPlaybackDevice"); }
    static QString settingsRecordSystemSound() { return builtInOrLoaded("settingsRecordSystemSound"); }
    static QString settingsRecordBoth() { return builtInOrLoaded("settingsRecordBoth"); }
    static QString settingsRecordAudioSourceTipsSystemSound() {
        return builtInOrLoaded("settingsRecordAudioSourceTipsSystemSound");
    }
    static QString settingsRecordAudioSourceTipsMic() { return builtInOrLoaded("settingsRecordAudioSourceTipsMic"); }
    static QString settingsRecordAudioSourceTipsBoth() { return builtInOrLoaded("settingsRecordAudioSourceTipsBoth"); }
    static QString settingsRecordOpenSoundDialog() { return builtInOrLoaded("settingsRecordOpenSoundDialog"); }
    static QString settingsRecordAudioSource() { return builtInOrLoaded("settingsRecordAudioSource"); }
    static QString settingsRecordAutoIdentifyID3() { return builtInOrLoaded("settingsRecordAutoIdentifyID3"); }
    static QString settingsConfigureDidChange() { return builtInOrLoaded("settingsConfigureDidChange"); }
    static QString settingsRecordMicrophone() { return builtInOrLoaded("settingsRecordMicrophone"); }

    // Scheduled tasks.
    static QString toolsScheduleTaskTitle() { return builtInOrLoaded("toolsScheduleTaskTitle"); }
    static QString toolsScheduleTaskCreateTak() { return builtInOrLoaded("toolsScheduleTaskCreateTak"); }
    static QString toolsScheduleTaskTrigger() { return builtInOrLoaded("toolsScheduleTaskTrigger"); }
    static QString toolsScheduleTaskTaskList() { return builtInOrLoaded("toolsScheduleTaskTaskList"); }
    static QString toolsScheduleTaskTaskName() { return builtInOrLoaded("toolsScheduleTaskTaskName"); }
    static QString toolsScheduleTaskStartTime() { return builtInOrLoaded("toolsScheduleTaskStartTime"); }
    static QString toolsScheduleTaskToTime() { return builtInOrLoaded("toolsScheduleTaskToTime"); }
    static QString toolsScheduleTaskShutdown() { return builtInOrLoaded("toolsScheduleTaskShutdown"); }
    static QString toolsScheduleTaskErrorDuration() { return builtInOrLoaded("toolsScheduleTaskErrorDuration"); }
    static QString toolsScheduleTaskErrorStarTime() { return builtInOrLoaded("toolsScheduleTaskErrorStarTime"); }
    static QString toolsScheduleTaskNoScheduleTask() { return builtInOrLoaded("toolsScheduleTaskNoScheduleTask"); }
    static QString toolsScheduleTaskClosestScheduleTask() {
        return builtInOrLoaded("toolsScheduleTaskClosestScheduleTask");
    }
    static QString toolsScheduleSleep() { return builtInOrLoaded("toolsScheduleSleep"); }
    static QString toolsScheduleDailyTask() { return builtInOrLoaded("toolsScheduleDailyTask"); }
    static QString toolsScheduleRepeat() { return builtInOrLoaded("toolsScheduleRepeat"); }
    static QString toolsScheduleRepeatStopManually() { return builtInOrLoaded("toolsScheduleRepeatStopManually"); }
    static QString toolsScheduleRepeatStopAtCount() { return builtInOrLoaded("toolsScheduleRepeatStopAtCount"); }
    static QString toolsScheduleWeeksOn() { return builtInOrLoaded("toolsScheduleWeeksOn"); }
    static QString toolsScheduleWeeks() { return builtInOrLoaded("toolsScheduleWeeks"); }
    static QString toolsScheduleAtTimeEveryDay() { return builtInOrLoaded("toolsScheduleAtTimeEveryDay"); }
    static QString toolsScheduleTaskErrorEnterTaskName() {
        return builtInOrLoaded("toolsScheduleTaskErrorEnterTaskName");
    }

    // CD burner.
    static QString toolsCDBurnerTitle() { return builtInOrLoaded("toolsCDBurnerTitle"); }
    static QString toolsCDBurnerWriter() { return builtInOrLoaded("toolsCDBurnerWriter"); }
    static QString toolsCDBurnerWritingSpeed() { return builtInOrLoaded("toolsCDBurnerWritingSpeed"); }
    static QString toolsCDBurnerCDinfo() { return builtInOrLoaded("toolsCDBurnerCDinfo"); }
    static QString toolsCDBurnerNoDevice() { return builtInOrLoaded("toolsCDBurnerNoDevice"); }
    static QString toolsCDBurnerItemsMinutes() { return builtInOrLoaded("toolsCDBurnerItemsMinutes"); }

    // CD ripper.
    static QString toolsCDRipperTitle() { return builtInOrLoaded("toolsCDRipperTitle"); }
    static QString toolsCDRipperRipCheckedTrack() { return builtInOrLoaded("toolsCDRipperRipCheckedTrack"); }
    static QString toolsCDRipperCancelRipping() { return builtInOrLoaded("toolsCDRipperCancelRipping"); }
    static QString toolsCDRipperRefresh() { return builtInOrLoaded("toolsCDRipperRefresh"); }
    static QString toolsCDRipperSelectDrive() { return builtInOrLoaded("toolsCDRipperSelectDrive"); }
    static QString toolsCDRipperNotReady() { return builtInOrLoaded("toolsCDRipperNotReady"); }
    static QString toolsCDRipperOpenDoor() { return builtInOrLoaded("toolsCDRipperOpenDoor"); }
    static QString toolsCDRipperCloseDoor() { return builtInOrLoaded("toolsCDRipperCloseDoor"); }
    static QString toolsCDRipperTips() { return builtInOrLoaded("toolsCDRipperTips"); }
    static QString toolsCDRipperIndex() { return builtInOrLoaded("toolsCDRipperIndex"); }
    static QString toolsCDRipperStatus() { return builtInOrLoaded("toolsCDRipperStatus"); }
    static QString toolsCDRipperInformation() { return builtInOrLoaded("toolsCDRipperInformation"); }
    static QString toolsCDRipperAuthor() { return builtInOrLoaded("toolsCDRipperAuthor"); }
    static QString toolsCDRipperGenre() { return builtInOrLoaded("toolsCDRipperGenre"); }
    static QString toolsCDRipperYear() { return builtInOrLoaded("toolsCDRipperYear"); }
    static QString toolsCDRipperRipSettings() { return builtInOrLoaded("toolsCDRipperRipSettings"); }
    static QString toolsCDRipperOutput() { return builtInOrLoaded("toolsCDRipperOutput"); }
    static QString toolsCDRipperEjectCD() { return builtInOrLoaded("toolsCDRipperEjectCD"); }
    static QString toolsCDRipperSeparateOutputFile() { return builtInOrLoaded("toolsCDRipperSeparateOutputFile"); }
    static QString toolsCDRipperSingleOutputFile() { return builtInOrLoaded("toolsCDRipperSingleOutputFile"); }
    static QString toolsCDRipperBetweenMillseconds() { return builtInOrLoaded("toolsCDRipperBetweenMillseconds"); }
    static QString toolsCDRipperTrackProgress() { return builtInOrLoaded("toolsCDRipperTrackProgress"); }
    static QString toolsCDRipperTotalProgress() { return builtInOrLoaded("toolsCDRipperTotalProgress"); }
    static QString toolsCDRipperRippingStopped() { return builtInOrLoaded("toolsCDRipperRippingStopped"); }
    static QString toolsCDRipperInfoNotAvailable() { return builtInOrLoaded("toolsCDRipperInfoNotAvailable"); }
    static QString toolsCDRipperAlbum() { return builtInOrLoaded("toolsCDRipperAlbum"); }

    // Converter.
    static QString toolsConverterTitle() { return builtInOrLoaded("toolsConverterTitle"); }
    static QString toolsConverterMerge() { return builtInOrLoaded("toolsConverterMerge"); }
    static QString toolsConverterFinishedTips() { return builtInOrLoaded("toolsConverterFinishedTips"); }

    // Editor.
    static QString toolsEditormenuLoadFile() { return builtInOrLoaded("toolsEditormenuLoadFile"); }
    static QString toolsEditormenuExport() { return builtInOrLoaded("toolsEditormenuExport"); }
    static QString toolsEditormenuAppend() { return builtInOrLoaded("toolsEditormenuAppend"); }
    static QString toolsEditormenuInsert() { return builtInOrLoaded("toolsEditormenuInsert"); }
    static QString toolsEditormenuMix() { return builtInOrLoaded("toolsEditormenuMix"); }
    static QString toolsEditormenuDelete() { return builtInOrLoaded("toolsEditormenuDelete"); }
    static QString toolsEditormenuReduce() { return builtInOrLoaded("toolsEditormenuReduce"); }
    static QString toolsEditormenuInvertSelection() { return builtInOrLoaded("toolsEditormenuInvertSelection"); }
    static QString toolsEditormenuInsertSilence() { return builtInOrLoaded("toolsEditormenuInsertSilence"); }
    static QString toolsEditormenuAppendSound() { return builtInOrLoaded("toolsEditormenuAppendSound"); }
    static QString toolsEditormenuInsertSound() { return builtInOrLoaded("toolsEditormenuInsertSound"); }
    static QString toolsEditormenuMixSound() { return builtInOrLoaded("toolsEditormenuMixSound"); }
    static QString toolsEditormenuOverwrite() { return builtInOrLoaded("toolsEditormenuOverwrite"); }
    static QString toolsEditorButtonInsert() { return builtInOrLoaded("toolsEditorButtonInsert"); }
    static QString toolsEditorLabelInsertSettings() { return builtInOrLoaded("toolsEditorLabelInsertSettings"); }
    static QString toolsEditorLabelInsertSetting() { return builtInOrLoaded("toolsEditorLabelInsertSetting"); }
    static QString toolsEditormenuZoom() { return builtInOrLoaded("toolsEditormenuZoom"); }
    static QString toolsEditormenuZoomToFull() { return builtInOrLoaded("toolsEditormenuZoomToFull"); }
    static QString toolsEditormenuZoomIn() { return builtInOrLoaded("toolsEditormenuZoomIn"); }
    static QString toolsEditormenuZoomOut() { return builtInOrLoaded("toolsEditormenuZoomOut"); }
    static QString toolsEditorLoadAudioFile() { return builtInOrLoaded("toolsEditorLoadAudioFile"); }
    static QString toolsEditorLoadFileToEdit() { return builtInOrLoaded("toolsEditorLoadFileToEdit"); }
    static QString toolsEditorPostions() { return builtInOrLoaded("toolsEditorPostions"); }
    static QString toolsEditorSoundDuration() { return builtInOrLoaded("toolsEditorSoundDuration"); }
    static QString toolsEditorSelection() { return builtInOrLoaded("toolsEditorSelection"); }
    static QString toolsEditorVisibleRange() { return builtInOrLoaded("toolsEditorVisibleRange"); }
    static QString toolsEditorBegin() { return builtInOrLoaded("toolsEditorBegin"); }
    static QString toolsEditorEnd() { return builtInOrLoaded("toolsEditorEnd"); }
    static QString toolsEditorPlayback() { return builtInOrLoaded("toolsEditorPlayback"); }
    static QString toolsEditorPlayAll() { return builtInOrLoaded("toolsEditorPlayAll"); }
    static QString toolsEditorPlaySelection() { return builtInOrLoaded("toolsEditorPlaySelection"); }
    static QString toolsEditorVolume() { return builtInOrLoaded("toolsEditorVolume"); }
    static QString toolsEditorEnterSilenceLength() { return builtInOrLoaded("toolsEditorEnterSilenceLength"); }
    static QString toolsEditorSoundExportedTo() { return builtInOrLoaded("toolsEditorSoundExportedTo"); }
    static QString toolsEditorExportFailed() { return builtInOrLoaded("toolsEditorExportFailed"); }
    static QString toolsEditorAnalyzingWaveform() { return builtInOrLoaded("toolsEditorAnalyzingWaveform"); }
    static QString toolsEditorNowEditing() { return builtInOrLoaded("toolsEditorNowEditing"); }
    static QString toolsEditorFinalizing() { return builtInOrLoaded("toolsEditorFinalizing"); }
    static QString toolsEditorAddCut() { return builtInOrLoaded("toolsEditorAddCut"); }
    static QString toolsEditorDeleteCut() { return builtInOrLoaded("toolsEditorDeleteCut"); }
    static QString toolsEditorExportMerger() { return builtInOrLoaded("toolsEditorExportMerger"); }
    static QString toolsEditorExportMltiple() { return builtInOrLoaded("toolsEditorExportMltiple"); }
    static QString toolsEditorExportAs() { return builtInOrLoaded("toolsEditorExportAs"); }
    static QString toolsEditorCannotPasteFromClipboard() {
        return builtInOrLoaded("toolsEditorCannotPasteFromClipboard");
    }
    static QString toolsEditorTitle() { return builtInOrLoaded("toolsEditorTitle"); }
    static QString toolsEditormenuZoomToSelection() { return builtInOrLoaded("toolsEditormenuZoomToSelection"); }

    // Export.
    static QString toolsExportTitle() { return builtInOrLoaded("toolsExportTitle"); }
    static QString toolsExportFormat() { return builtInOrLoaded("toolsExportFormat"); }
    static QString toolsExportOutput() { return builtInOrLoaded("toolsExportOutput"); }
    static QString toolsExportAskforFilename() { return builtInOrLoaded("toolsExportAskforFilename"); }
    static QString toolsExportRange() { return builtInOrLoaded("toolsExportRange"); }
    static QString toolsExportSelection() { return builtInOrLoaded("toolsExportSelection"); }
    static QString toolsExportResampleSettings() { return builtInOrLoaded("toolsExportResampleSettings"); }
    static QString toolsExportFrequencies() { return builtInOrLoaded("toolsExportFrequencies"); }
    static QString toolsExportChannels() { return builtInOrLoaded("toolsExportChannels"); }
    static QString toolsExportBits() { return builtInOrLoaded("toolsExportBits"); }
    static QString toolsExportID3() { return builtInOrLoaded("toolsExportID3"); }
    static QString toolsExportStart() { return builtInOrLoaded("toolsExportStart"); }
    static QString toolsExportStereo() { return builtInOrLoaded("toolsExportStereo"); }
    static QString toolsExportMono() { return builtInOrLoaded("toolsExportMono"); }
    static QString toolsExportArtist() { return builtInOrLoaded("toolsExportArtist"); }
    static QString toolsExportMode() { return builtInOrLoaded("toolsExportMode"); }
    static QString toolsExportFull() { return builtInOrLoaded("toolsExportFull"); }

    // Tags.
    static QString toolsID3TagsTitle() { return builtInOrLoaded("toolsID3TagsTitle"); }
    static QString toolsID3TagsSuccess() { return builtInOrLoaded("toolsID3TagsSuccess"); }
    static QString toolsID3TagsArtwork() { return builtInOrLoaded("toolsID3TagsArtwork"); }

    // Music player.
    static QString toolsiTunesNotAvailable() { return builtInOrLoaded("toolsiTunesNotAvailable"); }
    static QString toolsiTunesVersion() { return builtInOrLoaded("toolsiTunesVersion"); }
    static QString toolsiTunesTracksCount() { return builtInOrLoaded("toolsiTunesTracksCount"); }
    static QString toolsiTunesTracksDuration() { return builtInOrLoaded("toolsiTunesTracksDuration"); }
    static QString toolsiTunesAddTo() { return builtInOrLoaded("toolsiTunesAddTo"); }
    static QString toolsiTunesTitle() { return builtInOrLoaded("toolsiTunesTitle"); }

    // Tab: record.
    static QString tabRecordTitle() { return builtInOrLoaded("tabRecordTitle"); }
    static QString tabRecordRecordedSoundDuration() { return builtInOrLoaded("tabRecordRecordedSoundDuration"); }
    static QString tabRecordNoInputDeviceDetected() { return builtInOrLoaded("tabRecordNoInputDeviceDetected"); }
    static QString tabRecordRecorderIsNotReady() { return builtInOrLoaded("tabRecordRecorderIsNotReady"); }
    static QString tabRecordCouldNotStartRecording() { return builtInOrLoaded("tabRecordCouldNotStartRecording"); }
    static QString tabRecordStatus() { return builtInOrLoaded("tabRecordStatus"); }
    static QString tabRecordStatusRecording() { return builtInOrLoaded("tabRecordStatusRecording"); }
    static QString tabRecordStatusPaused() { return builtInOrLoaded("tabRecordStatusPaused"); }
    static QString tabRecordStatusIdle() { return builtInOrLoaded("tabRecordStatusIdle"); }

    // Tab: search.
    static QString tabSearchTop10Songs() { return builtInOrLoaded("tabSearchTop10Songs"); }
    static QString tabSearchTop10Albums() { return builtInOrLoaded("tabSearchTop10Albums"); }
    static QString tabSearchAddToDownload() { return builtInOrLoaded("tabSearchAddToDownload"); }
    static QString tabSearchSearchResults() { return builtInOrLoaded("tabSearchSearchResults"); }
    static QString tabSearchNoMusic() { return builtInOrLoaded("tabSearchNoMusic"); }
    static QString tabSearchAudition() { return builtInOrLoaded("tabSearchAudition"); }
    static QString tabSearchTitle() { return builtInOrLoaded("tabSearchTitle"); }

    // Tab: download.
    static QString tabDownloadTitle() { return builtInOrLoaded("tabDownloadTitle"); }
    static QString tabDownloadDownloadTask() { return builtInOrLoaded("tabDownloadDownloadTask"); }
    static QString tabDownloadDownloading() { return builtInOrLoaded("tabDownloadDownloading"); }
    static QString tabDownloadCompleted() { return builtInOrLoaded("tabDownloadCompleted"); }
    static QString tabDownloadJobs() { return builtInOrLoaded("tabDownloadJobs"); }

    // Tab: library.
    static QString tabPlaylistTitle() { return builtInOrLoaded("tabPlaylistTitle"); }
    static QString tabPlaylistPlaylist() { return builtInOrLoaded("tabPlaylistPlaylist"); }
    static QString tabPlaylistCreatePlaylist() { return builtInOrLoaded("tabPlaylistCreatePlaylist"); }
    static QString tabPlaylistCreateNewPlaylist() { return builtInOrLoaded("tabPlaylistCreateNewPlaylist"); }
    static QString tabPlaylistAddLocalMusic() { return builtInOrLoaded("tabPlaylistAddLocalMusic"); }
    static QString tabPlaylistAddFolder() { return builtInOrLoaded("tabPlaylistAddFolder"); }
    static QString tabPlaylistAddFiles() { return builtInOrLoaded("tabPlaylistAddFiles"); }
    static QString tabPlaylistRemoveFromPlaylist() { return builtInOrLoaded("tabPlaylistRemoveFromPlaylist"); }
    static QString tabPlaylistMoveToPlaylist() { return builtInOrLoaded("tabPlaylistMoveToPlaylist"); }
    static QString tabPlaylistClearAll() { return builtInOrLoaded("tabPlaylistClearAll"); }
    static QString tabPlaylistOpenFileLocation() { return builtInOrLoaded("tabPlaylistOpenFileLocation"); }
    static QString tabPlaylistPlaylistName() { return builtInOrLoaded("tabPlaylistPlaylistName"); }
    static QString tabPlaylistAdding() { return builtInOrLoaded("tabPlaylistAdding"); }
    static QString tabPlaylistNoFile() { return builtInOrLoaded("tabPlaylistNoFile"); }
    static QString tabPlaylistAddToPlaylist() { return builtInOrLoaded("tabPlaylistAddToPlaylist"); }
    static QString tabPlaylistRemovePlaylist() { return builtInOrLoaded("tabPlaylistRemovePlaylist"); }

    // Updates.
    static QString updateNewVersionIsAvailable() { return builtInOrLoaded("updateNewVersionIsAvailable"); }
    static QString updateLatestVersion() { return builtInOrLoaded("updateLatestVersion"); }

    // Video conversion.
    static QString video2mp3Title() { return builtInOrLoaded("video2mp3Title"); }
    static QString video2mp3StandardQuality() { return builtInOrLoaded("video2mp3StandardQuality"); }
    static QString video2mp3HighQuality() { return builtInOrLoaded("video2mp3HighQuality"); }
    static QString video2mp3ExtremeQuality() { return builtInOrLoaded("video2mp3ExtremeQuality"); }
    static QString video2mp3DeleteVideo() { return builtInOrLoaded("video2mp3DeleteVideo"); }
    static QString video2mp3ExampleUrl() { return builtInOrLoaded("video2mp3ExampleUrl"); }
    static QString video2mp3ConvertLocalFile() { return builtInOrLoaded("video2mp3ConvertLocalFile"); }
    static QString video2mp3Extract() { return builtInOrLoaded("video2mp3Extract"); }

    // Windows.
    static QString windowRecord() { return builtInOrLoaded("windowRecord"); }
    static QString windowSplitNow() { return builtInOrLoaded("windowSplitNow"); }
    static QString windowFinishing() { return builtInOrLoaded("windowFinishing"); }
    static QString windowWaitingForSound() { return builtInOrLoaded("windowWaitingForSound"); }
    static QString windowDeviceLost() { return builtInOrLoaded("windowDeviceLost"); }
    static QString windowTimeLeft() { return builtInOrLoaded("windowTimeLeft"); }
    static QString windowMeterName() { return builtInOrLoaded("windowMeterName"); }
    static QString windowPictureName() { return builtInOrLoaded("windowPictureName"); }
    static QString windowLostFrames() { return builtInOrLoaded("windowLostFrames"); }
    static QString windowSearchRecordings() { return builtInOrLoaded("windowSearchRecordings"); }
    static QString windowEmptyLibrary() { return builtInOrLoaded("windowEmptyLibrary"); }
    static QString windowNothingFound() { return builtInOrLoaded("windowNothingFound"); }
    static QString windowArtist() { return builtInOrLoaded("windowArtist"); }
    static QString windowAlbum() { return builtInOrLoaded("windowAlbum"); }
    static QString windowCover() { return builtInOrLoaded("windowCover"); }
    static QString windowFolder() { return builtInOrLoaded("windowFolder"); }
    static QString windowState() { return builtInOrLoaded("windowState"); }
    static QString windowRemoveFromList() { return builtInOrLoaded("windowRemoveFromList"); }
    static QString windowMoveToWastebasket() { return builtInOrLoaded("windowMoveToWastebasket"); }
    static QString windowRemoved() { return builtInOrLoaded("windowRemoved"); }
    static QString windowMovedToWastebasket() { return builtInOrLoaded("windowMovedToWastebasket"); }
    static QString windowSeveralRemoved() { return builtInOrLoaded("windowSeveralRemoved"); }
    static QString windowSeveralMoved() { return builtInOrLoaded("windowSeveralMoved"); }
    static QString windowUndo() { return builtInOrLoaded("windowUndo"); }
    static QString windowPosition() { return builtInOrLoaded("windowPosition"); }
    static QString windowStopPlaying() { return builtInOrLoaded("windowStopPlaying"); }
    static QString windowFileReady() { return builtInOrLoaded("windowFileReady"); }
    static QString windowRecordingFailed() { return builtInOrLoaded("windowRecordingFailed"); }
    static QString windowStillRecording() { return builtInOrLoaded("windowStillRecording"); }
    static QString windowStopAndQuit() { return builtInOrLoaded("windowStopAndQuit"); }
    static QString windowKeepRecording() { return builtInOrLoaded("windowKeepRecording"); }
    static QString windowGoesOnHidden() { return builtInOrLoaded("windowGoesOnHidden"); }
    static QString windowTaskAhead() { return builtInOrLoaded("windowTaskAhead"); }
    static QString windowKeepWaiting() { return builtInOrLoaded("windowKeepWaiting"); }
    static QString windowWaitsHidden() { return builtInOrLoaded("windowWaitsHidden"); }
    static QString windowRecoveredTitle() { return builtInOrLoaded("windowRecoveredTitle"); }
    static QString windowRecover() { return builtInOrLoaded("windowRecover"); }
    static QString windowLater() { return builtInOrLoaded("windowLater"); }
    static QString windowDiscard() { return builtInOrLoaded("windowDiscard"); }
    static QString windowDiscardConfirm() { return builtInOrLoaded("windowDiscardConfirm"); }
    static QString windowInterrupted() { return builtInOrLoaded("windowInterrupted"); }
    static QString windowRecovered() { return builtInOrLoaded("windowRecovered"); }
    static QString windowSeveralRecovered() { return builtInOrLoaded("windowSeveralRecovered"); }
    static QString windowNotRecovered() { return builtInOrLoaded("windowNotRecovered"); }
    static QString windowOutputFolder() { return builtInOrLoaded("windowOutputFolder"); }
    static QString windowMicrophone() { return builtInOrLoaded("windowMicrophone"); }
    static QString windowPressKeys() { return builtInOrLoaded("windowPressKeys"); }
    static QString windowHotkeyByDesktop() { return builtInOrLoaded("windowHotkeyByDesktop"); }
    static QString windowFirstNumber() { return builtInOrLoaded("windowFirstNumber"); }
    static QString windowNextStart() { return builtInOrLoaded("windowNextStart"); }
    static QString windowNoNextStart() { return builtInOrLoaded("windowNoNextStart"); }
    static QString windowLength() { return builtInOrLoaded("windowLength"); }
    static QString windowDaily() { return builtInOrLoaded("windowDaily"); }
    static QString windowRemoveTask() { return builtInOrLoaded("windowRemoveTask"); }
    static QString windowTaskMissed() { return builtInOrLoaded("windowTaskMissed"); }
    static QString windowShutdownIn() { return builtInOrLoaded("windowShutdownIn"); }
    static QString windowVersion() { return builtInOrLoaded("windowVersion"); }
    static QString windowAbout() { return builtInOrLoaded("windowAbout"); }
    static QString windowLicense() { return builtInOrLoaded("windowLicense"); }
    static QString windowWhatIsNew() { return builtInOrLoaded("windowWhatIsNew"); }
    static QString windowDownload() { return builtInOrLoaded("windowDownload"); }
    static QString windowSkipVersion() { return builtInOrLoaded("windowSkipVersion"); }
    static QString windowNoUpdateAnswer() { return builtInOrLoaded("windowNoUpdateAnswer"); }
    static QString windowNoServer() { return builtInOrLoaded("windowNoServer"); }
    static QString windowPause() { return builtInOrLoaded("windowPause"); }
    static QString windowEnterTaskName() { return builtInOrLoaded("windowEnterTaskName"); }

private:
    static QString builtInOrLoaded(const char *key);
};

} // namespace cantorel
