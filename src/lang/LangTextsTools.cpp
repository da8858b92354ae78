#include "lang/LangTable.h"

// The texts of the tools: tasks, discs, converter, editor, export and tags.

namespace cantorel {

namespace {

constexpr TextRow kToolsScheduleTask[] = {
    {"Title", "toolsScheduleTaskTitle", "Scheduled tasks"},
    {"CreateTak", "toolsScheduleTaskCreateTak", "Create a task"},
    {"Trigger", "toolsScheduleTaskTrigger", "Trigger"},
    {"TaskList", "toolsScheduleTaskTaskList", "Tasks"},
    {"TaskName", "toolsScheduleTaskTaskName", "Task name"},
    {"StartTime", "toolsScheduleTaskStartTime", "Start"},
    {"StopTime", "toolsScheduleTaskToTime", "End"},
    {"Shutdown", "toolsScheduleTaskShutdown", "Shut down when the task has finished"},
    {"ErrorDuration", "toolsScheduleTaskErrorDuration", "The end of the task must be after its start."},
    {"ErrorStarTime", "toolsScheduleTaskErrorStarTime", "The start of the task must lie in the future."},
    {"NoScheduleTask", "toolsScheduleTaskNoScheduleTask", "There is no scheduled task."},
    {"ClosestScheduleTask", "toolsScheduleTaskClosestScheduleTask", "Next task: #taskname# in #seconds# s"},
    {"Sleep", "toolsScheduleSleep", "Sleep"},
    {"DailyTask", "toolsScheduleDailyTask", "Daily task"},
    {"Repeat", "toolsScheduleRepeat", "Repeat"},
    {"RepeatStopManually", "toolsScheduleRepeatStopManually", "Until stopped by hand"},
    {"RepeatStopAtCount", "toolsScheduleRepeatStopAtCount", "[#count#] times"},
    {"WeeksOn", "toolsScheduleWeeksOn", "On"},
    {"Weeks", "toolsScheduleWeeks", "Sunday,Monday,Tuesday,Wednesday,Thursday,Friday,Saturday"},
    {"AtTimeEveryDay", "toolsScheduleAtTimeEveryDay", "At [#Time#] every day"},
    {nullptr, "toolsScheduleTaskErrorEnterTaskName", "Enter a name for the task."},
};

constexpr TextRow kToolsCDBurner[] = {
    {"Title", "toolsCDBurnerTitle", "CD burner"},
    {"Writer", "toolsCDBurnerWriter", "Writer"},
    {"WritingSpeed", "toolsCDBurnerWritingSpeed", "Writing speed"},
    {"CDinfo", "toolsCDBurnerCDinfo", "CD information"},
    {"NoDevice", "toolsCDBurnerNoDevice", "There is no CD writer on this computer."},
    {nullptr, "toolsCDBurnerItemsMinutes", "[#Count#] items, [#Time#] minutes"},
};

constexpr TextRow kToolsCDRipper[] = {
    {"Title", "toolsCDRipperTitle", "CD ripper"},
    {"RipCheckedTrack", "toolsCDRipperRipCheckedTrack", "Rip the checked tracks"},
    {"CancelRipping", "toolsCDRipperCancelRipping", "Cancel ripping"},
    {"Refresh", "toolsCDRipperRefresh", "Refresh"},
    {"SelectDrive", "toolsCDRipperSelectDrive", "Select a drive"},
    {"NotReady", "toolsCDRipperNotReady", "The drive is not ready."},
    {"OpenDoor", "toolsCDRipperOpenDoor", "Open the drive"},
    {"CloseDoor", "toolsCDRipperCloseDoor", "Close the drive"},
    {"Tips", "toolsCDRipperTips", "Check the tracks to rip, then press the button."},
    {"Index", "toolsCDRipperIndex", "No."},
    {"Status", "toolsCDRipperStatus", "Status"},
    {"Information", "toolsCDRipperInformation", "Information"},
    {"Author", "toolsCDRipperAuthor", "Artist"},
    {"Genre", "toolsCDRipperGenre", "Genre"},
    {"Year", "toolsCDRipperYear", "Year"},
    {"RipSettings", "toolsCDRipperRipSettings", "Settings for ripping"},
    {"Output", "toolsCDRipperOutput", "Output folder"},
    {"EjectCD", "toolsCDRipperEjectCD", "Eject the CD when finished"},
    {"SeparateOutputFile", "toolsCDRipperSeparateOutputFile", "One file for each track"},
    {"SingleOutputFile", "toolsCDRipperSingleOutputFile", "One file for all tracks"},
    {"BetweenMillseconds", "toolsCDRipperBetweenMillseconds", "Milliseconds between tracks"},
    {"TrackProgress", "toolsCDRipperTrackProgress", "Track"},
    {"TotalProgress", "toolsCDRipperTotalProgress", "Total"},
    {"RippingStopped", "toolsCDRipperRippingStopped", "Ripping was stopped."},
    {"InfoNotAvailable", "toolsCDRipperInfoNotAvailable", "No information about this CD is available."},
    {nullptr, "toolsCDRipperAlbum", "Album"},
};

constexpr TextRow kToolsConverter[] = {
    {"Title", "toolsConverterTitle", "Audio converter"},
    {"Merge", "toolsConverterMerge", "Merge into one file"},
    {"FinishedTips", "toolsConverterFinishedTips", "[#Count#] files have been converted."},
};

constexpr TextRow kToolsEditor[] = {
    {"menuLoadFile", "toolsEditormenuLoadFile", "Load a file..."},
    {"menuExport", "toolsEditormenuExport", "Export..."},
    {"menuAppend", "toolsEditormenuAppend", "Append"},
    {"menuInsert", "toolsEditormenuInsert", "Insert"},
    {"menuMix", "toolsEditormenuMix", "Mix"},
    {"menuDelete", "toolsEditormenuDelete", "Delete"},
    {"menuReduce", "toolsEditormenuReduce", "Keep only the selection"},
    {"menuInvertSelection", "toolsEditormenuInvertSelection", "Invert the selection"},
    {"menuInsertSilence", "toolsEditormenuInsertSilence", "Insert silence..."},
    {"menuAppendSound", "toolsEditormenuAppendSound", "Append a sound..."},
    {"menuInsertSound", "toolsEditormenuInsertSound", "Insert a sound..."},
    {"menuMixSound", "toolsEditormenuMixSound", "Mix in a sound..."},
    {"menuOverwrite", "toolsEditormenuOverwrite", "Overwrite with a sound..."},
    {"EditorInsert", "toolsEditorButtonInsert", "Insert"},
    {"EditorInsertSettings", "toolsEditorLabelInsertSettings", "Insert settings"},
    {nullptr, "toolsEditorLabelInsertSetting", "Insert settings"},
    {"menuZoom", "toolsEditormenuZoom", "Zoom"},
    {"menuZoomToFull", "toolsEditormenuZoomToFull", "Zoom to the whole sound"},
    {"menuZoomIn", "toolsEditormenuZoomIn", "Zoom in"},
    {"menuZoomOut", "toolsEditormenuZoomOut", "Zoom out"},
    {"LoadAudioFile", "toolsEditorLoadAudioFile", "Load an audio file"},
    {"LoadFileToEdit", "toolsEditorLoadFileToEdit", "Load a file to edit it."},
    {"Postions", "toolsEditorPostions", "Positions"},
    {"SoundDuration", "toolsEditorSoundDuration", "Duration"},
    {"Selection", "toolsEditorSelection", "Selection"},
    {"VisibleRange", "toolsEditorVisibleRange", "Visible range"},
    {"Begin", "toolsEditorBegin", "Begin"},
    {"End", "toolsEditorEnd", "End"},
    {"Playback", "toolsEditorPlayback", "Playback"},
    {"PlayAll", "toolsEditorPlayAll", "Play all"},
    {"PlaySelection", "toolsEditorPlaySelection", "Play the selection"},
    {"Volume", "toolsEditorVolume", "Volume"},
    {"EnterSilenceLength", "toolsEditorEnterSilenceLength", "Length of the silence"},
    {"SoundExportedTo", "toolsEditorSoundExportedTo", "The sound has been exported to '[#FileName#]'."},
    {"ExportFailed", "toolsEditorExportFailed", "The export has failed."},
    {"AnalyzingWaveform", "toolsEditorAnalyzingWaveform", "Analyzing the waveform..."},
    {"NowEditing", "toolsEditorNowEditing", "Now editing: [#FileName#]"},
    {"Finalizing", "toolsEditorFinalizing", "Finalizing..."},
    {"AddCut", "toolsEditorAddCut", "Add a selection"},
    {"DeleteCut", "toolsEditorDeleteCut", "Delete the selection"},
    {"ExportMerger", "toolsEditorExportMerger", "Join the selections in one file"},
    {"ExportMltiple", "toolsEditorExportMltiple", "One file for each selection"},
    {"ExportAs", "toolsEditorExportAs", "Export as"},
    {nullptr, "toolsEditorCannotPasteFromClipboard", "What is on the clipboard cannot be pasted."},
    {nullptr, "toolsEditorTitle", "Audio editor"},
    {nullptr, "toolsEditormenuZoomToSelection", "Zoom to the selection"},
};

constexpr TextRow kToolsExport[] = {
    {"Title", "toolsExportTitle", "Export"},
    {"Format", "toolsExportFormat", "Format"},
    {"Output", "toolsExportOutput", "Output folder"},
    {"AskforFilename", "toolsExportAskforFilename", "Ask for the file name"},
    {"Range", "toolsExportRange", "Range"},
    {"Selection", "toolsExportSelection", "Selection"},
    {"ResampleSettings", "toolsExportResampleSettings", "Resampling"},
    {"Frequencies", "toolsExportFrequencies", "Sample rate"},
    {"Channels", "toolsExportChannels", "Channels"},
    {"Bits", "toolsExportBits", "Bits"},
    {"ID3", "toolsExportID3", "Tags"},
    {"Start", "toolsExportStart", "Start"},
    {"Stereo", "toolsExportStereo", "Stereo"},
    {"Mono", "toolsExportMono", "Mono"},
    {"Artist", "toolsExportArtist", "Artist"},
    {"Mode", "toolsExportMode", "Mode"},
    {nullptr, "toolsExportFull", "Whole sound"},
};

constexpr TextRow kToolsID3Tags[] = {
    {"Title", "toolsID3TagsTitle", "Tag editor"},
    {"Success", "toolsID3TagsSuccess", "The tags have been written."},
    {"Artwork", "toolsID3TagsArtwork", "Cover"},
};

constexpr TextRow kToolsiTunes[] = {
    {"NotAvailable", "toolsiTunesNotAvailable", "The music player is not available."},
    {"Version", "toolsiTunesVersion", "Version"},
    {"TracksCount", "toolsiTunesTracksCount", "Tracks"},
    {"TracksDuration", "toolsiTunesTracksDuration", "Total duration"},
    {"AddTo", "toolsiTunesAddTo", "Add to the music player"},
    {nullptr, "toolsiTunesTitle", "Music player"},
};

} // namespace

const TextGroup langtexts::kToolsScheduleTask{"//tools//ScheduleTask", ::cantorel::kToolsScheduleTask};
const TextGroup langtexts::kToolsCDBurner{"//tools//CDBurner", ::cantorel::kToolsCDBurner};
const TextGroup langtexts::kToolsCDRipper{"//tools//CDRipper", ::cantorel::kToolsCDRipper};
const TextGroup langtexts::kToolsConverter{"//tools//Converter", ::cantorel::kToolsConverter};
const TextGroup langtexts::kToolsEditor{"//tools//Editor", ::cantorel::kToolsEditor};
const TextGroup langtexts::kToolsExport{"//tools//Export", ::cantorel::kToolsExport};
const TextGroup langtexts::kToolsID3Tags{"//tools//ID3Tags", ::cantorel::kToolsID3Tags};
const TextGroup langtexts::kToolsiTunes{"//tools//iTunes", ::cantorel::kToolsiTunes};

} // namespace cantorel
