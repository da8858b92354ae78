#include "ui/TasksPage.h"

#include "recording/schedule/ScheduleTaskText.h"
#include "tests/window/WindowFixture.h"

#include <QComboBox>
#include <QDateTimeEdit>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QSpinBox>
#include <QTabWidget>
#include <QToolButton>

#include <utility>

namespace cantorel {
namespace {

class Tasks : public test::WindowFixture {
public:
    Tasks() {
        recorder.schedule().initScheduleTaskList();
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        QApplication::setActiveWindow(&window);
        openTasks();
    }
    // Of a new task.
    void name(const char *text) {
        click("newTask");
        find<QLineEdit>("taskName")->setText(text);
    }
    void start(const QDateTime &moment) { find<QDateTimeEdit>("taskStart")->setDateTime(moment); }
    void length(int seconds) {
        find<QSpinBox>("hours")->setValue(0);
        find<QSpinBox>("minutes")->setValue(seconds / 60);
        find<QSpinBox>("seconds")->setValue(seconds % 60);
    }
    QString add() {
        click("saveTask");
        return find<QLabel>("taskTrouble")->text();
    }

    const QDateTime now = QDateTime::currentDateTime();
};

TEST_F(Tasks, NoTwoDaysReadAlikeAndTheWeekBeginsAsTheLanguageHasIt) {
    click("newTask");
    find<QCheckBox>("daily")->setChecked(true);
    for (const auto &[language, first] : {std::pair("Turkish", "day1"), {"English", "day0"}}) {
        Lang::ChangeLanguage(language);
        window.changeLanguageText();
        pass(50);
        QStringList texts;
        const QWidget *leftmost = find<QWidget>(first);
        for (int day = 0; day < 7; ++day) {
            const auto *box = find<QAbstractButton>(qPrintable(QStringLiteral("day%1").arg(day)));
            texts << box->text();
            const auto place = [](const QWidget &button) { return std::pair(button.y(), button.x()); };
            if (place(*box) < place(*leftmost))
                leftmost = box;
        }
        EXPECT_EQ(texts.removeDuplicates(), 0) << language;
        EXPECT_EQ(leftmost->objectName(), first) << language;
    }
}

TEST_F(Tasks, WhatCouldNeverRecordIsRefusedWithASentence) {
    click("newTask");
    EXPECT_EQ(add(), Lang::windowEnterTaskName());
    find<QLineEdit>("taskName")->setText("News");
    length(0);
    EXPECT_EQ(add(), Lang::toolsScheduleTaskErrorDuration());
    length(60);
    start(now.addSecs(-60));
    EXPECT_EQ(find<QLabel>("nextStart")->text(), Lang::windowNoNextStart());
    EXPECT_EQ(add(), Lang::toolsScheduleTaskErrorStarTime());
    click("daily");
    EXPECT_EQ(add(), Lang::windowNoNextStart()) << "no day is chosen";
    EXPECT_TRUE(taskList.tasks().empty());
    find<QAbstractButton>("day3")->setChecked(true);
    EXPECT_EQ(add(), QString());
    ASSERT_EQ(taskList.tasks().size(), 1u);
    EXPECT_EQ(taskList.tasks()[0]->WeeksOn_, QList<int>{3});
}

TEST_F(Tasks, ATaskIsStoredStartsByItselfAndIsRemoved) {
    name("Concert");
    find<QComboBox>("taskSource")->setCurrentIndex(1);
    length(5);
    start(now.addSecs(2));
    ASSERT_EQ(add(), QString());
    name("Later");
    length(60);
    start(now.addDays(2));
    ASSERT_EQ(add(), QString());
    auto *tasks = find<QListWidget>("tasks");
    EXPECT_EQ(tasks->count(), 2);
    photograph(window, "tasks-two");
    ASSERT_TRUE(passUntil([&] { return panel.state() == RecorderState::Recording; })) << "by the clock of the wall";
    EXPECT_TRUE(find<QToolButton>("source1")->isChecked()) << "what is recorded is what is shown";
    tasks->setCurrentRow(0);
    click("removeTask");
    EXPECT_EQ(find<QLabel>("taskNotice")->text(), Lang::windowTaskIsRecorded());
    EXPECT_EQ(taskList.tasks().size(), 2u);
    ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
    EXPECT_EQ(QFileInfo(list.items().back()->getFileName()).completeBaseName(), "Concert");
    tasks->setCurrentRow(tasks->count() - 1);
    click("removeTask");
    taskList.LoadTasks();
    for (const auto &task : taskList.tasks())
        EXPECT_NE(task->_taskName, "Later");
}

TEST_F(Tasks, ATaskIsChangedInItsPlaceAndNothingElseIs) {
    addTask();
    const ScheduleTaskInfo before = *taskList.tasks()[0];
    name("Later");
    start(now.addDays(2));
    ASSERT_EQ(add(), QString());
    auto *rows = find<QListWidget>("tasks");
    rows->setCurrentRow(0);
    QTest::keyClick(rows, Qt::Key_Return);
    EXPECT_EQ(find<QAbstractButton>("saveTask")->text(), Lang::btnSave());
    length(90);
    ASSERT_EQ(add(), QString());
    ASSERT_EQ(taskList.tasks().size(), 2u);
    ScheduleTaskInfo changed = *taskList.tasks()[0];
    EXPECT_EQ(changed._duration, 90);
    changed._duration = before._duration;
    EXPECT_EQ(jsonOfTask(changed).value("from"), jsonOfTask(before).value("from"));
    for (const char *kept : {"name", "source", "daily", "weeks", "repeat", "shutdown"})
        EXPECT_EQ(jsonOfTask(changed).value(kept), jsonOfTask(before).value(kept)) << kept;
    EXPECT_EQ(rows->currentRow(), 0) << "the one that was changed";
    click("newTask");
    EXPECT_EQ(find<QLineEdit>("taskName")->text(), QString()) << "nothing of the other";
}

TEST_F(Tasks, WhatIsRemovedComesBackWithUndoAndWhatWasMissedSaysWhy) {
    find<QLabel>("noTasks");
    EXPECT_TRUE(find<QLabel>("noTasks")->isVisible());
    addTask();
    const QJsonObject before = jsonOfTask(*taskList.tasks()[0]);
    auto *rows = find<QListWidget>("tasks");
    rows->setCurrentRow(0);
    rows->setFocus();
    QTest::keyClick(rows, Qt::Key_Delete);
    ASSERT_TRUE(taskList.tasks().empty());
    click("undoRemove");
    ASSERT_EQ(taskList.tasks().size(), 1u);
    EXPECT_EQ(jsonOfTask(*taskList.tasks()[0]), before);
    panel.taskMissed(*taskList.tasks()[0], now, QStringLiteral("The computer slept."));
    ASSERT_EQ(rows->count(), 2);
    EXPECT_TRUE(rows->item(0)->text().endsWith("The computer slept."));
    photograph(window, "tasks-missed");
    rows->setCurrentRow(0);
    EXPECT_FALSE(find<QToolButton>("editTask")->isVisible());
    click("removeTask");
    EXPECT_EQ(rows->count(), 1);
    EXPECT_EQ(taskList.tasks().size(), 1u);
}

TEST_F(Tasks, AStartThatIsNearIsSaidOnTheRecordPageAndSkippedOrNot) {
    name("Concert");
    length(60);
    start(now.addSecs(270));
    ASSERT_EQ(add(), QString());
    find<QTabWidget>("tabs")->setCurrentIndex(0);
    window.tasks().goBack();
    const auto says = [this](const char *label, const QString &text) {
        return passUntil([&] { return find<QLabel>(label)->isVisible() && find<QLabel>(label)->text() == text; });
    };
    EXPECT_TRUE(says("taskSoon", "'Concert' is recorded in 5 min."));
    photograph(window, "task-soon");
    click("skipTask");
    EXPECT_TRUE(says("taskSkipped", "'Concert' is not recorded this time."));
    EXPECT_FALSE(find<QLabel>("taskSoon")->isVisible());
    EXPECT_EQ(taskList.tasks().size(), 1u);
    photograph(window, "task-skipped");
    click("undoSkip");
    EXPECT_TRUE(says("taskSoon", "'Concert' is recorded in 5 min."));
}

// Of two tasks of one name the row that is chosen goes, also when others have gone elsewhere meanwhile.
TEST_F(Tasks, TheRowThatIsChosenIsRemovedWhateverTheListIsByThen) {
    for (const char *title : {"News", "News", "Concert"}) {
        name(title);
        length(60);
        start(now.addDays(2));
        ASSERT_EQ(add(), QString());
    }
    auto *rows = find<QListWidget>("tasks");
    const auto kept = taskList.tasks()[0], chosen = taskList.tasks()[1], elsewhere = taskList.tasks()[2];
    rows->setCurrentRow(1);
    ASSERT_TRUE(taskList.remove(elsewhere));
    ASSERT_EQ(rows->count(), 2) << "shown at once";
    click("removeTask");
    EXPECT_EQ(taskList.tasks(), TaskList::Tasks{kept});
    EXPECT_EQ(rows->count(), 1);
    EXPECT_NE(chosen, kept);
}

} // namespace
} // namespace cantorel
