#pragma once

#include "cli/CommandSession.h"

namespace CLI {
class App;
}

namespace cantorel {

// "doctor": checks all that recording needs, and says how to mend what is missing.
void addDoctorCommand(CLI::App &root, CommandSession &session);

} // namespace cantorel
