#pragma once

#include "cli/CommandSession.h"

namespace CLI {
class App;
}

namespace cantorel {

// "hotkeys parse TEXT": what a hot-key text means.
void addHotkeysCommand(CLI::App &root, CommandSession &session);

} // namespace cantorel
