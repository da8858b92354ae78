#include "lang/LangTable.h"

// What the core says to a person. The built-in text is the core's own, with markers at what it fills in: a sentence
// that is changed there is changed here too.

namespace cantorel {

namespace {

constexpr TextRow kSentence[] = {
    {"CannotWriteTo", "sentenceCannotWriteTo",
     "Recordings can't be written to \"[#Folder#]\"; choose a folder that you may write to."},
    {"DiskFull", "sentenceDiskFull", "The disk that holds \"[#Folder#]\" is full; make room or choose another folder."},
    {"DiskFullEnded", "sentenceDiskFullEnded",
     "The disk that holds \"[#Folder#]\" is full, so the recording was ended; make room or choose another folder."},
    {"NoVirtualDevice", "sentenceNoVirtualDevice",
     "There is no virtual device to record system sound from; start the window anew and have it installed, or run: "
     "cantorel-cli driver install"},
    {"NoMicrophone", "sentenceNoMicrophone", "There is no microphone; connect one, or record system sound alone."},
    {"NotJoined", "sentenceNotJoined",
     "Microphone and system sound could not be joined to one device; try again, or record one of them alone."},
    {"AnotherRecorder", "sentenceAnotherRecorder", "Another Cantorel is recording already; stop that one first."},
    {"FileRemoved", "sentenceFileRemoved",
     "\"[#FileName#]\" was removed while it was being recorded; choose a folder that stays."},
    {"FolderRemoved", "sentenceFolderRemoved",
     "The folder of \"[#FileName#]\" was removed while it was recorded to, so the recording was ended; what was "
     "recorded is kept in \"[#Folder#]\"."},
    {"SilentVolume", "sentenceSilentVolume", "\"[#Device#]\" gives only silence; its volume is 0, turn it up."},
    {"SilentMicrophone", "sentenceSilentMicrophone",
     "\"[#Device#]\" gives only silence; it may be muted or not connected."},
    {"SilentRoute", "sentenceSilentRoute",
     "\"[#Device#]\" hears only silence because programs play to \"[#Other#]\"; choose \"[#Device#]\" as the output."},
    {"SilentPlayer", "sentenceSilentPlayer",
     "\"[#Device#]\" hears only silence; nothing plays, the player is muted, or it plays to another device."},
    {"NoConverter", "sentenceNoConverter",
     "The recording \"[#FileName#]\" stays as it is because the program ffmpeg is missing; install it with \"apt "
     "install ffmpeg\"."},
    {"NoRoomToConvert", "sentenceNoRoomToConvert",
     "The recording \"[#FileName#]\" stays as it is because the disk is full; make room to have it converted."},
    {"NotConverted", "sentenceNotConverted",
     "The recording \"[#FileName#]\" could not be converted; it stays as it is."},
    {"NameTaken", "sentenceNameTaken", "\"[#Name#]\" is no free name for a file here; choose another."},
    {"NotRenamed", "sentenceNotRenamed", "\"[#FileName#]\" can't be renamed; check the rights of its folder."},
    {"NotToWastebasket", "sentenceNotToWastebasket",
     "\"[#FileName#]\" can't be moved to the wastebasket; check the rights of its folder."},
    {"NoOutput", "sentenceNoOutput", "There is no output to play to; choose one in the sound settings."},
    {"TaskName", "sentenceTaskName", "\"[#Name#]\" cannot be the name of a file; choose another name."},
    {"TaskWeekday", "sentenceTaskWeekday", "A daily task needs a weekday at least."},
    {"KeyTaken", "sentenceKeyTaken",
     "The hot key [#Keys#] does not work, since another program holds it; choose another one."},
    {"KeyForTyping", "sentenceKeyForTyping",
     "[#Keys#] cannot be a hot key, since it is needed for typing; choose one with Ctrl, Alt or Super."},
    {"StateFolder", "sentenceStateFolder",
     "The state folder can't be written to; check its rights and the free space."},
    {"RemovedUnconverted", "sentenceRemovedUnconverted",
     "The recording \"[#FileName#]\" was removed before it was converted; choose a folder that stays."},
    {"NotBack", "sentenceNotBack",
     "A file can't be brought back from the wastebasket; it still lies in \"[#FileName#]\"."},
    {"NotRead", "sentenceNotRead", "\"[#FileName#]\" cannot be read: [#Reason#]."},
    {"NotCreated", "sentenceNotCreated",
     "The recording \"[#FileName#]\" cannot be created: [#Reason#]. Choose another folder."},
    {"NoRoomLeft", "sentenceNoRoomLeft",
     "There is no room left for \"[#FileName#]\"; what was recorded until now is kept."},
    {"NotWritten", "sentenceNotWritten",
     "Writing \"[#FileName#]\" failed: [#Reason#]. What was recorded until now is kept."},
    {"DiskNearlyFull", "sentenceDiskNearlyFull",
     "The disk that holds \"[#FileName#]\" is nearly full; the recording was ended and is kept. Make room or choose "
     "another folder."},
    {"FormatChanged", "sentenceFormatChanged",
     "The device \"[#Device#]\" has changed its sample rate or its channels; what was recorded until then is kept. "
     "Start a new recording."},
    {"TaskInTheWay", "sentenceTaskInTheWay",
     "The task \"[#Name#]\" was not recorded, since another recording was running."},
    {"TaskSlept", "sentenceTaskSlept",
     "The task \"[#Name#]\" was missed, since the computer slept at its start or the clock was set past it."},
    {"TaskNotRunning", "sentenceTaskNotRunning",
     "The task \"[#Name#]\" was missed, since Cantorel was not running at its start."},
    {"TaskNotRecorded", "sentenceTaskNotRecorded", "The task \"[#Name#]\" was not recorded. [#Reason#]"},
    {"TasksNotSaved", "sentenceTasksNotSaved",
     "The tasks were not saved: \"[#FileName#]\" cannot be read or written; check its rights, its folder and the free "
     "space."},
    {"KeyMissing", "sentenceKeyMissing",
     "The hot key [#Keys#] does not work, since this keyboard has no such key; choose another one."},
    {"KeysRefused", "sentenceKeysRefused",
     "This desktop grants no hot keys; bind \"cantorel-cli toggle\" and its like to keys in the desktop's own "
     "settings."},
    {"KeysGone", "sentenceKeysGone",
     "Hot keys don't work any more, since the X server has gone; start Cantorel again."},
    {"NoSoundServer", "sentenceNoSoundServer",
     "No PipeWire sound server is running; install the packages pipewire and wireplumber, and start them with: "
     "systemctl --user start pipewire wireplumber"},
    {"SoundElsewhere", "sentenceSoundElsewhere",
     "PulseAudio carries the sound here beside a PipeWire without sound; install the packages pipewire-pulse and "
     "wireplumber, then log in again."},
    {"SoundServerMute", "sentenceSoundServerMute",
     "The PipeWire server carries no sound; install the package wireplumber, and start it with: systemctl --user start "
     "wireplumber"},
    {"NotRelaunched", "sentenceNotRelaunched", "Cantorel could not start itself again; please do it by hand."},
    {"FileGone", "sentenceFileGone", "There is no file \"[#FileName#]\" to play."},
    {"CodecsMissing", "sentenceCodecsMissing", "The sound codecs of this program are missing; install it again."},
    {"ConverterMissing", "sentenceConverterMissing", "The converter is missing; install this program again."},
    {"NotStarted", "sentenceNotStarted",
     "The recording could not be started; try again, or look into the log, which says why."},
    {"NoSound", "sentenceNoSound",
     "Nothing was recorded because \"[#Device#]\" brought no sound in time; check that it is connected, and try "
     "again."},
    {"NotOpened", "sentenceNotOpened",
     "The device \"[#Device#]\" cannot be opened for recording; check that it is connected, or choose another one."},
    {"NoDevice", "sentenceNoDevice", "There is no device to record from; connect one."},
    {"NotRescued", "sentenceNotRescued",
     "The folder of \"[#FileName#]\" was removed while it was recorded to, and what was recorded could not be copied "
     "to another one; choose a folder that stays."},
    {"ConversionEnded", "sentenceConversionEnded",
     "The conversion ended unexpectedly; the recording stays as it is, and the log says why."},
    {"ConvertedEmpty", "sentenceConvertedEmpty", "The converted file is empty; the recording stays as it is."},
    {"TaskLength", "sentenceTaskLength", "A task records for a whole number of seconds, from 1 to [#Count#]."},
    {"NoRuntimeFolder", "sentenceNoRuntimeFolder",
     "The sound server cannot be found because XDG_RUNTIME_DIR is not set; log in to a desktop session, or set it to "
     "/run/user/<your id>."},
};

} // namespace

const TextGroup langtexts::kSentence{"//sentence", ::cantorel::kSentence};

} // namespace cantorel
