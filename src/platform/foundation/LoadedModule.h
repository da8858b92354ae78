#pragma once

#include "platform/foundation/Result.h"

namespace cantorel::foundation {

// The address of a function in one of the product's own shared objects, which is loaded for it and never unloaded: its
// objects may live anywhere. They lie in ../lib/cantorel from the program's own folder, or in the folder that the
// variable CANTOREL_MODULES names. Any thread.
Result<void *> loadEntryPoint(const char *fileName, const char *function);

} // namespace cantorel::foundation
