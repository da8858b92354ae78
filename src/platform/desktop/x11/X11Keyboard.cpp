#include "platform/desktop/x11/X11Keyboard.h"

#include "platform/desktop/HotKeyTable.h"

#include <algorithm>

namespace cantorel::desktop {

namespace {

constexpr std::uint32_t kAltLeft = 0xffe9, kAltRight = 0xffea, kMetaLeft = 0xffe7, kMetaRight = 0xffe8;
constexpr std::uint32_t kSuperLeft = 0xffeb, kSuperRight = 0xffec, kNumLock = 0xff7f, kScrollLock = 0xff14;
constexpr std::size_t kModifiers = 8;

} // namespace

X11Keyboard X11Keyboard::read(xcb_connection_t *connection) {
    X11Keyboard keyboard;
    const xcb_setup_t *setup = xcb_get_setup(connection);
    keyboard.mFirst = setup->min_keycode;
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const auto signs = xcb_get_keyboard_mapping(connection, setup->min_keycode, count);
    const auto modifiers = xcb_get_modifier_mapping(connection);
    const X11Memory<xcb_get_keyboard_mapping_reply_t> signsReply(
        xcb_get_keyboard_mapping_reply(connection, signs, nullptr));
    const X11Memory<xcb_get_modifier_mapping_reply_t> modifiersReply(
        xcb_get_modifier_mapping_reply(connection, modifiers, nullptr));
    if (signsReply && signsReply->keysyms_per_keycode > 0) {
        keyboard.mWidth = signsReply->keysyms_per_keycode;
        const xcb_keysym_t *first = xcb_get_keyboard_mapping_keysyms(signsReply.get());
        keyboard.mSigns.assign(first, first + xcb_get_keyboard_mapping_keysyms_length(signsReply.get()));
    }
    if (modifiersReply) {
        keyboard.mKeysPerModifier = modifiersReply->keycodes_per_modifier;
        const xcb_keycode_t *first = xcb_get_modifier_mapping_keycodes(modifiersReply.get());
        keyboard.mModifierKeys.assign(first, first + xcb_get_modifier_mapping_keycodes_length(modifiersReply.get()));
    }
    // Where no key says so, the places that nearly all keyboards use.
    const auto or_ = [](std::uint16_t found, std::uint16_t usual) { return found != 0 ? found : usual; };
    keyboard.mAlt = or_(keyboard.modifierWith({kAltLeft, kAltRight, kMetaLeft, kMetaRight}), XCB_MOD_MASK_1);
    keyboard.mSuper = or_(keyboard.modifierWith({kSuperLeft, kSuperRight}), XCB_MOD_MASK_4);
    keyboard.mNumLock = keyboard.modifierWith({kNumLock});
    keyboard.mScrollLock = keyboard.modifierWith({kScrollLock});
    return keyboard;
}

std::vector<xcb_keycode_t> X11Keyboard::keysOf(std::uint32_t keysym) const {
    std::vector<xcb_keycode_t> keys;
    for (std::size_t level = 0; level < mWidth && keys.empty(); ++level) {
        for (std::size_t key = 0; (key + 1) * mWidth <= mSigns.size(); ++key) {
            if (mSigns[key * mWidth + level] == keysym)
                keys.push_back(static_cast<xcb_keycode_t>(mFirst + key));
        }
    }
    return keys;
}

// The lowest modifier that a key with one of the signs switches; 0 when none does.
std::uint16_t X11Keyboard::modifierWith(std::initializer_list<std::uint32_t> keysyms) const {
    for (const std::uint32_t keysym : keysyms) {
        for (const xcb_keycode_t key : keysOf(keysym)) {
            for (std::size_t modifier = 0; modifier < kModifiers; ++modifier) {
                for (std::size_t i = 0; i < mKeysPerModifier; ++i) {
                    if (mModifierKeys[modifier * mKeysPerModifier + i] == key)
                        return static_cast<std::uint16_t>(1 << modifier);
                }
            }
        }
    }
    return 0;
}

std::uint16_t X11Keyboard::maskOf(std::uint32_t modifiers) const {
    const auto when = [&](std::uint32_t bit, std::uint16_t mask) {
        return (modifiers & bit) != 0 ? mask : std::uint16_t{0};
    };
    return static_cast<std::uint16_t>(when(kControlModifier, XCB_MOD_MASK_CONTROL)
                                      | when(kShiftModifier, XCB_MOD_MASK_SHIFT) | when(kOptionModifier, mAlt)
                                      | when(kCommandModifier, mSuper));
}

std::uint32_t X11Keyboard::modifiersOf(std::uint16_t state) const {
    const auto when = [&](std::uint16_t mask, std::uint32_t bit) { return (state & mask) != 0 ? bit : 0; };
    return when(XCB_MOD_MASK_CONTROL, kControlModifier) | when(XCB_MOD_MASK_SHIFT, kShiftModifier)
           | when(mAlt, kOptionModifier) | when(mSuper, kCommandModifier);
}

std::vector<std::uint16_t> X11Keyboard::lockStates() const {
    std::vector<std::uint16_t> states{0};
    for (const std::uint16_t lock : {std::uint16_t{XCB_MOD_MASK_LOCK}, mNumLock, mScrollLock}) {
        const std::size_t before = states.size();
        if (lock == 0 || std::find(states.begin(), states.end(), lock) != states.end())
            continue;
        for (std::size_t i = 0; i < before; ++i)
            states.push_back(static_cast<std::uint16_t>(states[i] | lock));
    }
    return states;
}

} // namespace cantorel::desktop
