#pragma once

#include "cli/CommandSession.h"

namespace CLI {
class App;
}

namespace cantorel {

// "tasks add|list|remove|next|run": the scheduled recordings.
void addTasksCommand(CLI::App &root, CommandSession &session);

} // namespace cantorel
