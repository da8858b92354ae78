#pragma once

#include "platform/foundation/Result.h"

#include <QString>

namespace cantorel::foundation {

// Where a part of the product lies that is no program for people: in ../lib/cantorel from the program's own folder, or
// in the folder that the variable CANTOREL_MODULES names. It is not checked for existence. Any thread.
QString partPath(const char *fileName);

// The address of a function in one of those parts, a shared object, which is loaded for it and never unloaded: its
// objects may live anywhere. Any thread.
Result<void *> loadEntryPoint(const char *fileName, const char *function);

// The same as a pointer to a function of that type, which the part promises in a header of ours.
template <class Function> Result<Function> loadFunction(const char *fileName, const char *function) {
    const auto entry = loadEntryPoint(fileName, function);
    return entry ? Result<Function>(reinterpret_cast<Function>(entry.value())) : entry.failure();
}

} // namespace cantorel::foundation
