#include "lang/LangTable.h"

// The texts of the main window's tabs, of updates and of video conversion.

namespace cantorel {

namespace {

constexpr TextRow kTabRecord[] = {
    {"Title", "tabRecordTitle", "Record"},
    {"RecordedSoundDuration", "tabRecordRecordedSoundDuration", "Recorded"},
    {"NoInputDeviceDetected", "tabRecordNoInputDeviceDetected", "No input device was found."},
    {"RecorderIsNotReady", "tabRecordRecorderIsNotReady", "The recorder is not ready."},
    {"CouldNotStartRecording", "tabRecordCouldNotStartRecording", "The recording could not be started."},
    {"Status", "tabRecordStatus", "Status"},
    {"StatusRecording", "tabRecordStatusRecording", "Recording"},
    {"StatusPaused", "tabRecordStatusPaused", "Paused"},
    {"StatusIdle", "tabRecordStatusIdle", "Idle"},
};

constexpr TextRow kTabSearch[] = {
    {"Top10Songs", "tabSearchTop10Songs", "Top 10 songs"},
    {"Top10Albums", "tabSearchTop10Albums", "Top 10 albums"},
    {"AddToDownload", "tabSearchAddToDownload", "Add to downloads"},
    {"SearchResults", "tabSearchSearchResults", "Search results"},
    {"NoMusic", "tabSearchNoMusic", "No music was found."},
    {"Audition", "tabSearchAudition", "Listen"},
    {nullptr, "tabSearchTitle", "Search"},
};

constexpr TextRow kTabDownload[] = {
    {"Title", "tabDownloadTitle", "Download"},
    {"DownloadTask", "tabDownloadDownloadTask", "Downloads"},
    {"Downloading", "tabDownloadDownloading", "Downloading..."},
    {"Completed", "tabDownloadCompleted", "Completed"},
    {"Jobs", "tabDownloadJobs", "Jobs"},
};

constexpr TextRow kTabPlaylist[] = {
    {"Title", "tabPlaylistTitle", "Library"},
    {"Playlist", "tabPlaylistPlaylist", "Playlist"},
    {"CreatePlaylist", "tabPlaylistCreatePlaylist", "Create a playlist"},
    {"CreateNewPlaylist", "tabPlaylistCreateNewPlaylist", "Create a new playlist"},
    {"AddLocalMusic", "tabPlaylistAddLocalMusic", "Add music from this computer"},
    {"AddFolder", "tabPlaylistAddFolder", "Add a folder"},
    {"AddFiles", "tabPlaylistAddFiles", "Add files"},
    {"RemoveFromPlaylist", "tabPlaylistRemoveFromPlaylist", "Remove from the playlist"},
    {"MoveToPlaylist", "tabPlaylistMoveToPlaylist", "Move to playlist"},
    {"ClearAll", "tabPlaylistClearAll", "Clear all"},
    {"OpenFileLocation", "tabPlaylistOpenFileLocation", "Open the file's folder"},
    {"PlaylistName", "tabPlaylistPlaylistName", "Name of the playlist"},
    {"Adding", "tabPlaylistAdding", "Adding..."},
    {"NoFile", "tabPlaylistNoFile", "The file does not exist any more."},
    {"AddToPlaylist", "tabPlaylistAddToPlaylist", "Add to playlist"},
    {nullptr, "tabPlaylistRemovePlaylist", "Remove the playlist"},
};

constexpr TextRow kUpdate[] = {
    {"NewVersionIsAvailable", "updateNewVersionIsAvailable",
     "A new version of [#AppName#] is available.[#NewLine#]Do you want to upgrade now?"},
    {"LatestVersion", "updateLatestVersion", "You have the latest version of [#AppName#]."},
};

constexpr TextRow kVideo2mp3[] = {
    {"Title", "video2mp3Title", "Video to MP3"},
    {"StandardQuality", "video2mp3StandardQuality", "Standard quality"},
    {"HighQuality", "video2mp3HighQuality", "High quality"},
    {"ExtremeQuality", "video2mp3ExtremeQuality", "Extreme quality"},
    {"DeleteVideo", "video2mp3DeleteVideo", "Delete the video afterwards"},
    {"ExampleUrl", "video2mp3ExampleUrl", "For example: https://www.example.com/video"},
    {nullptr, "video2mp3ConvertLocalFile", "Convert a file from this computer"},
    {nullptr, "video2mp3Extract", "Extract the sound"},
};

} // namespace

const TextGroup langtexts::kTabRecord{"//tab//Record", ::cantorel::kTabRecord};
const TextGroup langtexts::kTabSearch{"//tab//Search", ::cantorel::kTabSearch};
const TextGroup langtexts::kTabDownload{"//tab//Download", ::cantorel::kTabDownload};
const TextGroup langtexts::kTabPlaylist{"//tab//Playlist", ::cantorel::kTabPlaylist};
const TextGroup langtexts::kUpdate{"//update", ::cantorel::kUpdate};
const TextGroup langtexts::kVideo2mp3{"//video2mp3", ::cantorel::kVideo2mp3};

} // namespace cantorel
