#pragma once

#include "platform/desktop/Services.h"

namespace cantorel {

// The desktop's real services, for a program to install. Nothing is asked of the desktop before it is needed. There is
// no player of sounds yet: who has audio hardware puts one in.
desktop::Services desktopServices();

} // namespace cantorel
