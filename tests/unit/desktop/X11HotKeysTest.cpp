#include "platform/desktop/x11/X11HotKeys.h"

#include "lang/Lang.h"
#include "platform/desktop/HotKeyTable.h"
#include "tests/support/PrivateDisplay.h"

#include <gtest/gtest.h>

#include <vector>

namespace cantorel::desktop {
namespace {

using test::eventually;
using test::PrivateDisplay;

constexpr xcb_keysym_t kControl = 0xffe3, kShift = 0xffe1, kAlt = 0xffe9, kSuper = 0xffeb;
constexpr xcb_keysym_t kCapsLock = 0xffe5, kNumLock = 0xff7f, kF9 = 0xffc6;
constexpr HotKeyCombination kStart{1, kControlModifier | kCommandModifier};

class Presses : public HotKeyTarget {
public:
    std::vector<std::uint32_t> identities;
    void hotKeyPressed(const EventHotKeyID &identity) override { identities.push_back(identity.id); }
};

class X11HotKeysTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(display.ready());
        hotKeys = open();
        ASSERT_TRUE(hotKeys);
        hotKeys->trouble = [this](const foundation::Failure &failure) { troubles << Lang::english(failure.sentence); };
    }
    std::unique_ptr<X11HotKeys> open() const {
        auto opened = X11HotKeys::open(display.name());
        return opened ? std::move(opened.value()) : nullptr;
    }
    // Whether just that many presses have come since the last time; an extra key shows when all have been seen.
    bool pressedTimes(std::size_t count) {
        display.strike({kF9});
        const bool all = eventually([&] { return !presses.identities.empty() && presses.identities.back() == 99; });
        const bool right = all && presses.identities.size() == count + 1;
        presses.identities.clear();
        return right;
    }
    void watchTheEnd() { hotKeys->RegisterEventHotKey({101, 0}, {99, 99}, presses); }

    PrivateDisplay display;
    Presses presses;
    std::unique_ptr<X11HotKeys> hotKeys;
    QStringList troubles;
};

TEST_F(X11HotKeysTest, APressReachesTheTargetWhateverLocksAreOnAndOtherPressesDoNot) {
    watchTheEnd();
    hotKeys->RegisterEventHotKey(kStart, {1, 1}, presses);
    for (const xcb_keysym_t lock : {xcb_keysym_t{0}, kCapsLock, kNumLock}) { // the last time with both
        if (lock != 0)
            display.strike({lock});
        display.strike({kControl, kSuper, 's'});
        EXPECT_TRUE(pressedTimes(1)) << lock;
        display.strike({kControl, 's'});
        display.strike({kControl, kSuper, kShift, 's'});
        display.strike({kControl, kSuper, kAlt, 's'});
        display.strike({kControl, kSuper, 'd'});
        display.strike({'s'});
        EXPECT_TRUE(pressedTimes(0)) << lock;
    }
    EXPECT_TRUE(troubles.isEmpty());
}

TEST_F(X11HotKeysTest, EveryModifierIsTheKeyThatItsBitMeans) {
    watchTheEnd();
    const struct {
        std::uint32_t modifiers;
        std::initializer_list<xcb_keysym_t> keys;
    } cases[] = {{kControlModifier, {kControl, 's'}},
                 {kOptionModifier, {kAlt, 's'}},
                 {kCommandModifier, {kSuper, 's'}},
                 {kOptionModifier | kShiftModifier, {kAlt, kShift, 's'}}};
    for (const auto &c : cases) {
        const EventHotKeyRef reference = hotKeys->RegisterEventHotKey({1, c.modifiers}, {1, 1}, presses);
        display.strike(c.keys);
        EXPECT_TRUE(pressedTimes(1)) << c.modifiers;
        hotKeys->UnregisterEventHotKey(reference);
        display.strike(c.keys);
        EXPECT_TRUE(pressedTimes(0)) << c.modifiers;
    }
}

TEST_F(X11HotKeysTest, HoweverOftenItIsRegisteredAPressIsDeliveredOnceToTheNewest) {
    watchTheEnd();
    hotKeys->RegisterEventHotKey(kStart, {1, 1}, presses);
    const EventHotKeyRef newer = hotKeys->RegisterEventHotKey(kStart, {2, 2}, presses);
    display.strike({kControl, kSuper, 's'});
    EXPECT_TRUE(eventually([&] { return presses.identities == std::vector<std::uint32_t>{2}; }));
    EXPECT_TRUE(pressedTimes(1));
    hotKeys->UnregisterEventHotKey(newer);
    display.strike({kControl, kSuper, 's'});
    EXPECT_TRUE(eventually([&] { return presses.identities == std::vector<std::uint32_t>{1}; }));
}

TEST_F(X11HotKeysTest, AHeldKeyIsOnePress) {
    watchTheEnd();
    hotKeys->RegisterEventHotKey(kStart, {1, 1}, presses);
    display.press(kControl);
    display.press(kSuper);
    display.press('s');
    const QDeadlineTimer held(1500); // long enough for the server to repeat it
    EXPECT_TRUE(eventually([&] { return held.hasExpired(); }));
    for (const xcb_keysym_t key : {kControl, kSuper, xcb_keysym_t{'s'}})
        display.release(key);
    EXPECT_TRUE(pressedTimes(1));
}

TEST_F(X11HotKeysTest, ACombinationThatIsHeldElsewhereIsToldOnceAndTheOthersWork) {
    const auto other = open();
    ASSERT_TRUE(other);
    Presses others;
    const EventHotKeyRef held = other->RegisterEventHotKey(kStart, {1, 1}, others);
    EXPECT_EQ(other->triggerOf(held), "Ctrl+Super+S");
    watchTheEnd();
    const EventHotKeyRef refused = hotKeys->RegisterEventHotKey(kStart, {1, 1}, presses);
    hotKeys->RegisterEventHotKey(kStart, {2, 2}, presses);
    EXPECT_EQ(troubles.size(), 1);
    EXPECT_TRUE(troubles.value(0).contains("Ctrl+Super+S")) << troubles.value(0).toStdString();
    EXPECT_EQ(hotKeys->triggerOf(refused), QString());
    display.strike({kControl, kSuper, 's'});
    EXPECT_TRUE(eventually([&] { return others.identities.size() == 1; }));
    EXPECT_TRUE(pressedTimes(0));
    other->UnregisterEventHotKey(held);
    display.sync();
    hotKeys->RegisterEventHotKey(kStart, {3, 3}, presses);
    display.strike({kControl, kSuper, 's'});
    EXPECT_TRUE(eventually([&] { return presses.identities == std::vector<std::uint32_t>{3}; })) << "free by now";
}

TEST_F(X11HotKeysTest, AKeyFollowsItsSignWhenTheKeyboardChanges) {
    watchTheEnd();
    hotKeys->RegisterEventHotKey(kStart, {1, 1}, presses);
    const xcb_keycode_t s = display.keyOf('s'), d = display.keyOf('d');
    bool changed = false;
    hotKeys->triggersDidChange = [&] { changed = true; };
    display.change(s, 'd');
    EXPECT_TRUE(eventually([&] { return std::exchange(changed, false); }));
    display.change(d, 's');
    EXPECT_TRUE(eventually([&] { return changed; }));
    EXPECT_EQ(display.keyOf('s'), d);
    display.strike({kControl, kSuper, 's'});
    EXPECT_TRUE(pressedTimes(1));
    display.strike({kControl, kSuper, 'd'});
    EXPECT_TRUE(pressedTimes(0));
}

TEST_F(X11HotKeysTest, KeysThatAreNeededForTypingAreLeftAloneAndMissingOnesNamed) {
    watchTheEnd();
    hotKeys->RegisterEventHotKey({0, 0}, {1, 1}, presses);                  // an empty text
    hotKeys->RegisterEventHotKey({1, 8192}, {2, 2}, presses);               // "ctrl ctl s"
    hotKeys->RegisterEventHotKey({49, kShiftModifier}, {3, 3}, presses);    // shift space
    hotKeys->RegisterEventHotKey({999, kControlModifier}, {4, 4}, presses); // no key at all
    EXPECT_EQ(troubles.size(), 4);
    for (const QString &trouble : troubles)
        EXPECT_TRUE(trouble.endsWith('.'));
    for (const xcb_keysym_t key : {xcb_keysym_t{'a'}, xcb_keysym_t{'s'}, xcb_keysym_t{' '}})
        display.strike({key});
    EXPECT_TRUE(pressedTimes(0));
}

TEST_F(X11HotKeysTest, AServerThatVanishesIsToldAndNothingElseHappens) {
    const EventHotKeyRef reference = hotKeys->RegisterEventHotKey(kStart, {1, 1}, presses);
    display.kill();
    EXPECT_TRUE(eventually([&] { return troubles.size() == 1; }));
    EXPECT_EQ(hotKeys->triggerOf(reference), QString());
    hotKeys->UnregisterEventHotKey(reference);
    hotKeys->RegisterEventHotKey(kStart, {1, 1}, presses);
}

TEST(X11HotKeys, WithoutAServerTheReasonIsASentence) {
    const auto opened = X11HotKeys::open(":61234");
    ASSERT_FALSE(opened.ok());
    EXPECT_TRUE(Lang::english(opened.failure().sentence).endsWith('.'));
}

} // namespace
} // namespace cantorel::desktop
