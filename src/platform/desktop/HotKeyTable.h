#pragma once

#include "platform/desktop/HotKeys.h"
#include "platform/foundation/Sentence.h"

#include <cstdint>

namespace cantorel::desktop {

// The bits of HotKeyCombination::modifiers; others mean nothing here.
inline constexpr std::uint32_t kCommandModifier = 256; // the key "Super"
inline constexpr std::uint32_t kShiftModifier = 512;
inline constexpr std::uint32_t kOptionModifier = 2048; // the key "Alt"
inline constexpr std::uint32_t kControlModifier = 4096;

// What a virtual key code is on this platform.
struct PlatformKey {
    std::uint32_t keyCode;
    std::uint32_t keysym; // of the X window system and of XKB; without Shift
    const char *name;     // in the notation for shortcuts that desktops share: "s", "F9", "Return"
};

// Null for a code that is no key.
const PlatformKey *platformKey(std::uint32_t keyCode);

// Whether it can be a hot key: a known key that is not lost for typing, so with Ctrl, Alt or Super, or a function key.
bool isHotKey(const HotKeyCombination &combination);

// "Ctrl+Super+S", for a person; and "CTRL+LOGO+s", as desktops take it. Empty when the code is no key.
QString shownCombination(const HotKeyCombination &combination);
QString portalTrigger(const HotKeyCombination &combination);

// Why a combination that is no hot key is refused.
foundation::Sentence typingKeySentence(const HotKeyCombination &combination);

} // namespace cantorel::desktop
