#pragma once

#include "cli/CommandSession.h"

namespace CLI {
class App;
}

namespace cantorel {

// "update check": what the maker's server says of the latest release.
void addUpdateCommand(CLI::App &root, CommandSession &session);

} // namespace cantorel
