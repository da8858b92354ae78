#pragma once

#include "platform/foundation/Result.h"
#include "platform/media/movie/PictureSources.h"

#include <memory>

namespace cantorel::media {

// The displays of an X server, by a shared object that is loaded when they are first asked for, so that no other
// program pays for its libraries.

// The one function that it exports, by this name and type; its result is the caller's.
inline constexpr const char *kX11ScreensEntryPoint = "cantorel_x11_screens";
using X11ScreensEntryPoint = PictureSources *(*)();

foundation::Result<std::unique_ptr<PictureSources>> loadX11Screens();

} // namespace cantorel::media
