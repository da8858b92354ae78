#pragma once

#include "cli/CommandSession.h"

namespace CLI {
class App;
}

namespace cantorel {

// "lang list", "lang get KEY": the languages and the text table.
void addLangCommand(CLI::App &root, CommandSession &session);

} // namespace cantorel
