// The main job by the keyboard alone, and what a reader of the screen is told meanwhile.

#include "tests/window/WindowFixture.h"
#include "ui/LibraryTab.h"

#include <QAccessible>
#include <QLabel>
#include <QLineEdit>
#include <QTabWidget>
#include <QTableView>

namespace cantorel {
namespace {

class Keyboard : public test::WindowFixture {
public:
    Keyboard() {
        QAccessible::setActive(true);
        AppSettings::setAudioFormat(4);
        recorder.schedule().initScheduleTaskList();
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        QApplication::setActiveWindow(&window);
    }
    static void press(int key, Qt::KeyboardModifiers modifiers = {}) {
        ASSERT_NE(QApplication::focusWidget(), nullptr);
        QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(key), modifiers);
    }
    static void control(int key) { press(key, Qt::ControlModifier); }
    // Tab by Tab, as somebody does who listens.
    static void goTo(const char *name) {
        for (int step = 0; step < 40 && QApplication::focusWidget()->objectName() != name; ++step)
            press(Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget()->objectName(), name);
    }
    QString said(const char *name) {
        auto *object = QAccessible::queryAccessibleInterface(find<QWidget>(name));
        return object && !object->state().invisible ? object->text(QAccessible::Name) : QString();
    }
    QString title() {
        for (auto *label : window.findChildren<QLabel *>("title"))
            if (label->isVisible())
                return label->text();
        return {};
    }
};

TEST_F(Keyboard, TheWholeJobNeedsNoMouse) {
    EXPECT_EQ(QApplication::focusWidget()->objectName(), "record") << "the first thing to do";
    EXPECT_EQ(said("record"), Lang::windowRecord());
    control(Qt::Key_R);
    ASSERT_TRUE(passUntil([&] { return panel.state() == RecorderState::Recording; }));
    pass(2000);
    EXPECT_EQ(said("record"), Lang::btnStop());
    EXPECT_EQ(said("state"), Lang::tabRecordStatusRecording());
    control(Qt::Key_Comma); // from here on on another page
    EXPECT_EQ(title(), Lang::btnSettings());
    EXPECT_TRUE(said("pill").startsWith(Lang::tabRecordStatusRecording())) << "in sight on every page";
    control(Qt::Key_P);
    EXPECT_EQ(panel.state(), RecorderState::Paused);
    EXPECT_EQ(said("pillPause"), Lang::btnResume());
    control(Qt::Key_P);
    pass(1000);
    control(Qt::Key_T);
    ASSERT_TRUE(passUntil([&] { return list.items().size() == 2 && panel.display().seconds > 1; }));
    control(Qt::Key_PageDown);
    goTo("skipSilence");
    auto *skip = QAccessible::queryAccessibleInterface(QApplication::focusWidget());
    EXPECT_EQ(skip->role(), QAccessible::CheckBox);
    EXPECT_EQ(skip->text(QAccessible::Name), Lang::settingsRecordSkipSilent());
    const bool skipped = skip->state().checked;
    press(Qt::Key_Space);
    EXPECT_EQ(AppSettings::isAutoSkipSilence(), !skipped);
    EXPECT_EQ(bool(skip->state().checked), !skipped) << "told as it is now";
    control(Qt::Key_R);
    ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
    press(Qt::Key_Escape);
    EXPECT_EQ(QApplication::focusWidget()->objectName(), "record") << "where it was";

    control(Qt::Key_2);
    auto *table = find<QTableView>("recordings");
    EXPECT_EQ(QApplication::focusWidget(), table);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_TRUE(window.library().player().isPlaying());
    press(Qt::Key_Space);
    EXPECT_FALSE(window.library().player().isPlaying());
    press(Qt::Key_Right); // from the cover to the title
    press(Qt::Key_F2);
    ASSERT_NE(qobject_cast<QLineEdit *>(QApplication::focusWidget()), nullptr);
    control(Qt::Key_A);
    for (const int letter : {Qt::Key_R, Qt::Key_A, Qt::Key_I, Qt::Key_N})
        press(letter);
    press(Qt::Key_Return);
    pass(50); // The editor goes.
    EXPECT_TRUE(QFile::exists(path("rain.wav")));
    control(Qt::Key_PageUp);
    EXPECT_EQ(find<QTabWidget>("tabs")->currentIndex(), 0);
}

TEST_F(Keyboard, ATaskIsMadeThroughTheMenuAndEscapeClosesThePanelFirst) {
    press(Qt::Key_F10);
    QMenu *menu = find<QToolButton>("menu")->menu();
    ASSERT_TRUE(menu->isVisible());
    QTest::keyClick(menu, Qt::Key_Down);
    QTest::keyClick(menu, Qt::Key_Return);
    EXPECT_EQ(title(), Lang::toolsScheduleTaskTitle());
    for (const bool saves : {false, true}) {
        goTo("newTask");
        press(Qt::Key_Space);
        EXPECT_EQ(title(), Lang::windowNewTask());
        EXPECT_EQ(QApplication::focusWidget()->objectName(), "taskName");
        EXPECT_EQ(said("taskName"), Lang::toolsScheduleTaskTaskName());
        if (!saves) {
            press(Qt::Key_N);
            press(Qt::Key_Escape);
            EXPECT_EQ(title(), Lang::toolsScheduleTaskTitle()) << "the panel, not the page";
        }
    }
    EXPECT_EQ(find<QLineEdit>("taskName")->text(), "n") << "what was begun";
    goTo("saveTask");
    press(Qt::Key_Space);
    ASSERT_EQ(taskList.tasks().size(), 1u);
    EXPECT_EQ(taskList.tasks()[0]->_taskName, "n");
    press(Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(title(), QString());
    EXPECT_EQ(QApplication::focusWidget()->objectName(), "record");
}

TEST_F(Keyboard, F6GoesAroundTheRegionsAndAHotKeyFieldLetsEscapeThrough) {
    QStringList seen;
    for (int step = 0; step < 3; ++step) {
        press(Qt::Key_F6);
        seen << QApplication::focusWidget()->objectName();
    }
    EXPECT_EQ(seen.removeDuplicates(), 0) << seen.join(' ').toStdString();
    EXPECT_EQ(seen.last(), "record") << "header, page and deck";
    openSettings();
    turnSettingsTo(2);
    find<QWidget>("hotkey0")->setFocus();
    control(Qt::Key_1);
    EXPECT_EQ(title(), Lang::btnSettings()) << "typed into the field";
    press(Qt::Key_Escape);
    EXPECT_EQ(title(), QString());
}

} // namespace
} // namespace cantorel
