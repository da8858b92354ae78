#include "recording/hotkeys/HotKey.h"

#include "lang/Lang.h"
#include "platform/desktop/HotKeyTable.h"
#include "platform/desktop/recorded/RecordedHotKeys.h"
#include "recording/control/RecordingHotkeys.h"
#include "recording/hotkeys/HotkeyManager.h"
#include "settings/AppSettings.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace cantorel {
namespace {

TEST(HotkeyText, GivesTheCodeOfItsLastKeyAndTheSumOfItsModifiers) {
    const struct {
        const char *text;
        quint32 keyCode, modifiers;
    } cases[] = {
        {"ctrl cmd s", 1, 4352},
        {"ctrl cmd c", 9, 4352}, // deliberately the code of "v"
        {"cmd k", 41, 256},
        {"opt a", 0, 2048},
        {"ctrl ctl", 0, 8192}, // added up
        {"apple command control esc", 53, 4608},
        {"s t p", 35, 0},
        {"", 0, 0},
        {"  ctrl   hyper  f15 ", 113, 4096},
    };
    for (const auto &c : cases) {
        const auto combination = HotkeyManager::combinationOf(c.text);
        EXPECT_EQ(combination.keyCode, c.keyCode) << c.text;
        EXPECT_EQ(combination.modifiers, c.modifiers) << c.text;
    }
}

TEST(HotkeyText, EveryKeyOfTheTableIsAKeyOfThisPlatform) {
    QStringList words = HotKey::getAllValidKeys();
    words << QStringLiteral(
                 "0 1 2 3 4 5 6 7 8 9 , . / f1 f2 f3 f4 f5 f6 f7 f8 f9 f10 f11 f12 f13 f14 f15 space enter tab "
                 "escape esc backspace bkspc left right down up")
                 .split(' ');
    for (const QString &word : words) {
        const auto combination = HotkeyManager::combinationOf("ctrl " + word);
        EXPECT_NE(desktop::platformKey(combination.keyCode), nullptr) << word.toStdString();
        const QString shown = desktop::shownCombination(combination);
        const bool isShownAsTyped = word[0].isLetterOrNumber() && (word.size() == 1 || word[0] == 'f');
        if (isShownAsTyped && word != "C") { // deliberately the key "v"
            EXPECT_EQ(shown, "Ctrl+" + word.toUpper());
        }
    }
}

TEST(HotKey, ATextIsShownByBoxesAndAChooserAndComesBackInTheirOrder) {
    const struct {
        const char *text, *title, *back;
    } cases[] = {{"ctrl cmd s", "S", "ctrl cmd s"},
                 {"cmd opt ctrl shift x", "X", "shift ctrl opt cmd x"},
                 {"cmd f2", "F2", "cmd f2"},
                 {"alt s", "S", "s"}}; // only the chooser's own words are ticked
    for (const auto &c : cases) {
        HotkeyCheckBoxes boxes{true, true, true, true};
        HotkeyComboBox chooser;
        HotKey::initHotkeyFromString(c.text, boxes, chooser);
        EXPECT_EQ(chooser.titles.size(), 26);
        EXPECT_EQ(chooser.title, c.title);
        EXPECT_EQ(HotKey::getHotkeyFromCombox(chooser, boxes), c.back);
    }
    HotKey::setHotkeyChanged(true);
    EXPECT_TRUE(HotKey::isChanged());
}

// A recording that notes what is done to it.
class HotkeyTest : public testing::Test, public RecordingHotkeyActions {
protected:
    bool isRecording() const override { return recording; }
    void onStartRecording() override {
        done << "start";
        if (fails)
            throw std::runtime_error("planted");
    }
    void stopRecording() override { done << "stop"; }
    void onPauseRecording() override { done << "pause"; }

    void press(const char *text) const { hotKeys->press(HotkeyManager::combinationOf(text)); }
    std::string told() { return std::exchange(done, {}).join(' ').toStdString(); }

    std::shared_ptr<desktop::CallRecord> calls = std::make_shared<desktop::CallRecord>();
    std::shared_ptr<desktop::RecordedHotKeys> hotKeys = std::make_shared<desktop::RecordedHotKeys>(calls);
    QStringList done;
    bool recording = false, fails = false;
};

TEST_F(HotkeyTest, TheThreeKeysDoWhatTheSettingsSay) {
    AppSettings::setHotkeyStopRecording("Ctrl OPT X");
    RecordingHotkeys keys(*this, hotKeys);
    testing::internal::CaptureStderr();
    keys.registerEnabled();
    const QString log = QString::fromStdString(testing::internal::GetCapturedStderr());
    for (const char *line :
         {"RegisterHotkey -> hotkeyStartRecording: ctrl cmd s\n", "RegisterHotkey -> hotkeyStopRecording: ctrl opt x\n",
          "RegisterHotkey -> hotkeyPauseRecording: ctrl cmd p\n"})
        EXPECT_TRUE(log.contains(line)) << line;
    EXPECT_EQ(calls->calls(), (QStringList{"register 1 4352", "register 7 6144", "register 35 4352"}));
    press("ctrl cmd s");
    press("ctrl opt x");
    press("ctrl cmd p");
    EXPECT_EQ(told(), "start stop") << "nothing runs that could be paused";
    recording = true;
    press("ctrl cmd p");
    EXPECT_EQ(told(), "pause");
}

TEST_F(HotkeyTest, UnregisteringDeliberatelyLeavesAllKeysInForce) {
    RecordingHotkeys keys(*this, hotKeys);
    keys.RegisteHotkey();
    testing::internal::CaptureStderr();
    keys.UnregisterHotkey();
    EXPECT_TRUE(QString::fromStdString(testing::internal::GetCapturedStderr()).contains("UnregisterHotkey"));
    press("ctrl cmd s");
    EXPECT_EQ(told(), "start");
    EXPECT_TRUE(calls->calls().filter("unregister").isEmpty());
}

TEST_F(HotkeyTest, AfterAnEditOnlyTheNewTextWorksAndOnce) {
    RecordingHotkeys keys(*this, hotKeys);
    keys.RegisteHotkey();
    AppSettings::setHotkeyStartRecording("cmd ctrl r");
    keys.UnregisterHotkey();
    keys.RegisteHotkey();
    press("ctrl cmd s");
    EXPECT_EQ(told(), "") << "its text is no setting any more, though its number is";
    press("ctrl cmd r");
    EXPECT_EQ(told(), "start");
    AppSettings::setHotkeyStartRecording("ctrl cmd r");
    keys.RegisteHotkey();
    press("ctrl cmd r");
    EXPECT_EQ(told(), "start") << "the same key by another text";
}

TEST_F(HotkeyTest, DisabledKeysAreNotRegistered) {
    AppSettings::setEnableHotkeys(false);
    RecordingHotkeys keys(*this, hotKeys);
    keys.registerEnabled();
    EXPECT_TRUE(calls->calls().isEmpty());
}

TEST_F(HotkeyTest, WhatAnActionThrowsIsLoggedAndKeysGoOnWorking) {
    RecordingHotkeys keys(*this, hotKeys);
    keys.RegisteHotkey();
    fails = true;
    testing::internal::CaptureStderr();
    press("ctrl cmd s");
    EXPECT_TRUE(QString::fromStdString(testing::internal::GetCapturedStderr()).contains("planted"));
    press("ctrl cmd t");
    EXPECT_EQ(told(), "start stop");
}

TEST_F(HotkeyTest, AKeyThatTheDesktopRefusesIsToldToThePerson) {
    calls->failOn("register", "Held.");
    QStringList troubles;
    RecordingHotkeys keys(*this, hotKeys,
                          [&](const foundation::Sentence &sentence) { troubles << Lang::english(sentence); });
    keys.RegisteHotkey();
    EXPECT_EQ(troubles.value(0), "Held.");
}

class Target : public HotkeyTarget {
public:
    QStringList texts;
    void pressedHotkey(const QString &hotkey) override { texts << hotkey; }
};

TEST_F(HotkeyTest, AManagerUnbindsItsOwnAndIgnoresOthers) {
    const auto target = std::make_shared<Target>();
    HotkeyManager manager(hotKeys), other(hotKeys);
    EXPECT_EQ(manager.bind("ctrl A", target, &HotkeyTarget::pressedHotkey), 1u);
    EXPECT_EQ(manager.bind("ctrl B", target, &HotkeyTarget::pressedHotkey), 2u);
    EXPECT_EQ(other.bind("ctrl c", target, &HotkeyTarget::pressedHotkey), 1u);
    manager.unbind(77);
    manager._dispatch(77);
    other.unbind(1);
    press("ctrl c");
    press("ctrl a");
    EXPECT_EQ(target->texts, QStringList{"ctrl A"}) << "the text as it was bound";
    manager.unbind(1);
    press("ctrl a");
    EXPECT_EQ(target->texts.size(), 1);
    EXPECT_EQ(target.use_count(), 2) << "a record keeps its target";
}

TEST(Hotkeys, WithoutADesktopRecordsExistButNeverFire) {
    const auto target = std::make_shared<Target>();
    HotkeyManager manager(nullptr);
    EXPECT_EQ(manager.bind(QString(), target, &HotkeyTarget::pressedHotkey), 1u);
    EXPECT_EQ(manager.trigger(1), QString());
    manager._dispatch(1);
    EXPECT_EQ(target->texts, QStringList{QString()});
}

} // namespace
} // namespace cantorel
