#pragma once

#include "cli/CommandSession.h"

namespace CLI {
class App;
}

namespace cantorel {

// "record": one recording, from the first frame to the converted file.
void addRecordCommand(CLI::App &root, CommandSession &session);

} // namespace cantorel
