#pragma once

#include "cli/CommandSession.h"

namespace CLI {
class App;
}

namespace cantorel {

// "driver": the virtual loopback device that system sound is recorded through.
void addDriverCommand(CLI::App &root, CommandSession &session);

} // namespace cantorel
