#pragma once

#include "cli/CommandSession.h"

namespace CLI {
class App;
}

namespace cantorel {

// "library list|remove|rename": the list of recordings.
void addLibraryCommand(CLI::App &root, CommandSession &session);

} // namespace cantorel
