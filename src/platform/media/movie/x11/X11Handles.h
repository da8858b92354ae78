#pragma once

#include "platform/foundation/Handle.h"

#include <xcb/xcb.h>

#include <cstdlib>

namespace cantorel::media {

// The C handles of XCB, each owned by one alias.
using ScreenConnection = foundation::Handle<xcb_connection_t, xcb_disconnect>;
// Replies, events and errors are plain memory.
template <class T> using ScreenMemory = foundation::Handle<T, std::free>;

} // namespace cantorel::media
