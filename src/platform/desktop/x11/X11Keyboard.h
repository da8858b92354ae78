#pragma once

#include "platform/desktop/HotKeys.h"
#include "platform/desktop/x11/X11Handles.h"

#include <cstdint>
#include <vector>

namespace cantorel::desktop {

// The keyboard of an X server as it was when it was read: which keys make which signs, and which modifiers are where.
class X11Keyboard {
public:
    static X11Keyboard read(xcb_connection_t *connection);

    // The keys that make the sign, in the first level where there are any, else in another; empty without one.
    std::vector<xcb_keycode_t> keysOf(std::uint32_t keysym) const;
    // The server's mask for the modifiers of a combination, and back from the state of an event.
    std::uint16_t maskOf(std::uint32_t modifiers) const;
    std::uint32_t modifiersOf(std::uint16_t state) const;
    // The masks of all states that Caps Lock, Num Lock and Scroll Lock can have together.
    std::vector<std::uint16_t> lockStates() const;

private:
    std::uint16_t modifierWith(std::initializer_list<std::uint32_t> keysyms) const;

    xcb_keycode_t mFirst = 8;
    std::size_t mWidth = 1;
    std::vector<xcb_keysym_t> mSigns; // mWidth of each key
    std::vector<xcb_keycode_t> mModifierKeys;
    std::size_t mKeysPerModifier = 0;
    std::uint16_t mAlt = 0, mSuper = 0, mNumLock = 0, mScrollLock = 0;
};

} // namespace cantorel::desktop
