#include "lang/LangTable.h"

// The texts of the windows that no other group has.

namespace cantorel {

namespace {

constexpr TextRow kWindow[] = {
    {"Record", "windowRecord", "Record"},
    {"SplitNow", "windowSplitNow", "Split now"},
    {"Finishing", "windowFinishing", "Finishing..."},
    {"WaitingForSound", "windowWaitingForSound", "Waiting for sound"},
    {"DeviceLost", "windowDeviceLost", "The device is gone. The recording goes on when it is back."},
    {"TimeLeft", "windowTimeLeft", "[#Time#] left on the disk"},
    {"MeterName", "windowMeterName", "Level"},
    {"PictureName", "windowPictureName", "The last minute of sound"},
    {"LostFrames", "windowLostFrames", "Lost: [#Count#] frames"},
    {"SearchRecordings", "windowSearchRecordings", "Search recordings"},
    {"EmptyLibrary", "windowEmptyLibrary", "What you record appears here."},
    {"NothingFound", "windowNothingFound", "No recording matches your search."},
    {"Artist", "windowArtist", "Artist"},
    {"Album", "windowAlbum", "Album"},
    {"Cover", "windowCover", "Cover"},
    {"Folder", "windowFolder", "Folder"},
    {"State", "windowState", "State"},
    {"RemoveFromList", "windowRemoveFromList", "Remove from the list"},
    {"MoveToWastebasket", "windowMoveToWastebasket", "Move to the wastebasket"},
    {"Removed", "windowRemoved", "'[#FileName#]' was removed from the list."},
    {"MovedToWastebasket", "windowMovedToWastebasket", "'[#FileName#]' is in the wastebasket."},
    {"SeveralRemoved", "windowSeveralRemoved", "[#Count#] recordings were removed from the list."},
    {"SeveralMoved", "windowSeveralMoved", "[#Count#] recordings are in the wastebasket."},
    {"Undo", "windowUndo", "Undo"},
    {"Position", "windowPosition", "Position"},
    {"StopPlaying", "windowStopPlaying", "Stop playing"},
    {"FileReady", "windowFileReady", "The recording is ready"},
    {"RecordingFailed", "windowRecordingFailed", "The recording has failed"},
    {"StillRecording", "windowStillRecording", "A recording is running."},
    {"StopAndQuit", "windowStopAndQuit", "Stop and quit"},
    {"KeepRecording", "windowKeepRecording", "Keep recording in the background"},
    {"GoesOnHidden", "windowGoesOnHidden", "The recording goes on in the background."},
    {"TaskAhead", "windowTaskAhead",
     "'[#TaskName#]' is to be recorded on [#Time#]. That needs [#AppName#] to be running."},
    {"KeepWaiting", "windowKeepWaiting", "Wait in the background"},
    {"WaitsHidden", "windowWaitsHidden", "[#AppName#] waits in the background"},
    {"RecoveredTitle", "windowRecoveredTitle", "A recording was interrupted"},
    {"Recover", "windowRecover", "Recover"},
    {"Later", "windowLater", "Later"},
    {"Discard", "windowDiscard", "Discard"},
    {"DiscardConfirm", "windowDiscardConfirm", "Do you really want to discard the interrupted recording?"},
    {"Interrupted", "windowInterrupted", "Interrupted"},
    {"Recovered", "windowRecovered", "'[#FileName#]' was recovered; it is [#Time#] long."},
    {"SeveralRecovered", "windowSeveralRecovered", "[#Count#] recordings were recovered."},
    {"NotRecovered", "windowNotRecovered",
     "An interrupted recording could not be repaired; what there is of it is kept as '[#FileName#]'."},
    {"OutputFolder", "windowOutputFolder", "Folder for recordings"},
    {"Microphone", "windowMicrophone", "Microphone"},
    {"PressKeys", "windowPressKeys", "Press the keys"},
    {"HotkeyByDesktop", "windowHotkeyByDesktop", "The desktop has assigned [#Keys#]."},
    {"FirstNumber", "windowFirstNumber", "Number of the next recording"},
    {"NextStart", "windowNextStart", "Next start: [#Time#]"},
    {"NoNextStart", "windowNoNextStart", "This task never starts."},
    {"Length", "windowLength", "Length"},
    {"Daily", "windowDaily", "Every week on the chosen days"},
    {"RemoveTask", "windowRemoveTask", "Remove the task"},
    {"TaskMissed", "windowTaskMissed", "A scheduled recording was missed"},
    {"ShutdownIn", "windowShutdownIn", "The computer is shut down in [#Count#] seconds."},
    {"Version", "windowVersion", "Version [#Count#]"},
    {"About", "windowAbout", "Records what the computer plays, the microphone, or both."},
    {"License", "windowLicense", "Free software under the GNU General Public License, version 3 or later."},
    {"WhatIsNew", "windowWhatIsNew", "What is new"},
    {"Download", "windowDownload", "Download"},
    {"SkipVersion", "windowSkipVersion", "Skip this version"},
    {"NoUpdateAnswer", "windowNoUpdateAnswer", "The update server did not answer. Try again later."},
    {"NoServer", "windowNoServer", "No sound server answers, so nothing can be recorded."},
    {"Pause", "windowPause", "Pause"},
    {"EnterTaskName", "windowEnterTaskName", "Enter a name for the task."},
};

} // namespace

const TextGroup langtexts::kWindow{"//window", ::cantorel::kWindow};

} // namespace cantorel
