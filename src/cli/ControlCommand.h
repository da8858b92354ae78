#pragma once

#include "cli/CommandSession.h"

namespace CLI {
class App;
}

namespace cantorel {

// "start", "stop", "toggle", "pause", "split", "status": asks the Cantorel that runs.
void addControlCommands(CLI::App &root, CommandSession &session);

} // namespace cantorel
