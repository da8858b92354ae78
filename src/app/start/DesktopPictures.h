#pragma once

#include "platform/media/movie/PictureSources.h"

#include <memory>

namespace cantorel {

// The displays and cameras of the session that the program runs in, for a program to install. Nothing is loaded and
// nobody is asked before they are needed.
std::unique_ptr<media::PictureSources> desktopPictures();

} // namespace cantorel
