#pragma once

#include "cli/CommandSession.h"

namespace CLI {
class App;
}

namespace cantorel {

// "devices": lists the devices, switches a default, reads or sets a volume.
void addDevicesCommand(CLI::App &root, CommandSession &session);

} // namespace cantorel
