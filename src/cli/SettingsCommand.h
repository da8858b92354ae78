#pragma once

#include "cli/CommandSession.h"

namespace CLI {
class App;
}

namespace cantorel {

// "settings list", "settings get KEY", "settings set KEY VALUE": the persistent options as their getters answer them.
void addSettingsCommand(CLI::App &root, CommandSession &session);

} // namespace cantorel
