#pragma once

#include "platform/foundation/Handle.h"

#include <xcb/xcb.h>

#include <cstdlib>

namespace cantorel::desktop {

// The C handles of XCB, each owned by one alias.
using X11Connection = foundation::Handle<xcb_connection_t, xcb_disconnect>;
// Replies, events and errors are plain memory.
template <class T> using X11Memory = foundation::Handle<T, std::free>;

} // namespace cantorel::desktop
