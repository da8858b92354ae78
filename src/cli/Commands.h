#pragma once

#include "cli/CommandSession.h"

#include <QList>
#include <QUrl>

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace cantorel {

// The commands, a file each: every one adds itself with its options and its example to the command line.

// "convert FILE...": the conversion queue.
void addConvertCommand(CLI::App &root, CommandSession &session);
// "start", "stop", "toggle", "pause", "split", "status": asks the Cantorel that runs.
void addControlCommands(CLI::App &root, CommandSession &session);
// "devices": lists the devices, switches a default, reads or sets a volume.
void addDevicesCommand(CLI::App &root, CommandSession &session);
// "doctor": checks all that recording needs, and says how to mend what is missing.
void addDoctorCommand(CLI::App &root, CommandSession &session);
// "driver": the virtual loopback device that system sound is recorded through.
void addDriverCommand(CLI::App &root, CommandSession &session);
// "edit FILE": the editor without its window.
void addEditCommand(CLI::App &root, CommandSession &session);
// "hotkeys parse TEXT": what a hot-key text means.
void addHotkeysCommand(CLI::App &root, CommandSession &session);
// "identify FILE...": recognises the music in sound files.
void addIdentifyCommand(CLI::App &root, CommandSession &session);
// "info FILE...": the media information of files.
void addInfoCommand(CLI::App &root, CommandSession &session);
// "lang list", "lang get KEY": the languages and the text table.
void addLangCommand(CLI::App &root, CommandSession &session);
// "library list|remove|rename": the list of recordings.
void addLibraryCommand(CLI::App &root, CommandSession &session);
// "record": one recording, from the first frame to the converted file.
void addRecordCommand(CLI::App &root, CommandSession &session);
// "record-camera": a camera with sound, as a movie.
void addRecordCameraCommand(CLI::App &root, CommandSession &session);
// "record-screen": a display with sound, as a movie.
void addRecordScreenCommand(CLI::App &root, CommandSession &session);
// "settings list", "settings get KEY", "settings set KEY VALUE": the persistent options as their getters answer them.
void addSettingsCommand(CLI::App &root, CommandSession &session);
// "tags FILE": shows and writes the tags of sound files.
void addTagsCommand(CLI::App &root, CommandSession &session);
// "tasks add|list|remove|next|run": the scheduled recordings.
void addTasksCommand(CLI::App &root, CommandSession &session);
// "update check": what the maker's server says of the latest release.
void addUpdateCommand(CLI::App &root, CommandSession &session);
// "wave FILE": the levels of a sound, from which its wave is drawn.
void addWaveCommand(CLI::App &root, CommandSession &session);

// Files as they are named on the command line, by their full paths.
QList<QUrl> fileUrls(const std::vector<std::string> &files);

// Adds a command below another: what it is for, an example (what stands behind the program's name), and what it does
// when it is chosen. One without an action only holds others.
CLI::App &addVerb(CLI::App &above, CommandSession &session, const char *name, const char *what,
                  const std::string &example, std::function<Outcome()> action = {});

} // namespace cantorel
