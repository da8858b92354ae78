#pragma once

#include <QString>

namespace cantorel::foundation {

// The kinds of folder that can be asked for; the numbers are the platform's own search-path codes.
enum class SearchPath { Applications = 1, Caches = 13, Music = 18, Pictures = 19 };

// The user's own folder of that kind, without a slash at the end; never made by this call. The music and pictures
// folders are those of the user's "user-dirs.dirs", else "Music" and "Pictures" in the home folder. Any thread.
QString searchPath(SearchPath kind);

// $XDG_CONFIG_HOME and $XDG_STATE_HOME or their fixed fallbacks in the home folder.
QString configurationFolder();
QString stateFolder();

// Where a resource of the product lies: "share/cantorel" beside the folder of the running program, or the folder that
// the environment variable CANTOREL_RESOURCES names. Whether the file exists is not checked.
QString resourcePath(const QString &name);

} // namespace cantorel::foundation
