#pragma once

#include "platform/foundation/Handle.h"

#include <plist/plist.h>

#include <cstdlib>

namespace cantorel::foundation {

// The handles of libplist; the only place that names its release functions.
using PlistHandle = Handle<void, plist_free>; // a tree, from its root
using PlistText = Handle<char, std::free>;
using PlistIterator = Handle<void, std::free>;

} // namespace cantorel::foundation
