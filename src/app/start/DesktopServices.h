#pragma once

#include "platform/desktop/HotKeys.h"
#include "platform/desktop/Services.h"

namespace cantorel {

// The desktop's real services, for a program to install. Nothing is asked of the desktop before it is needed. There is
// no player of sounds yet: who has audio hardware puts one in.
desktop::Services desktopServices();

// The keys of the session that the program runs in: the portal's under Wayland, else those of the X server. Fails with
// one sentence where there is neither.
foundation::Result<std::shared_ptr<desktop::HotKeys>> desktopHotKeys();

} // namespace cantorel
