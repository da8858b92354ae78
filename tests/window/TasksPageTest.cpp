#include "ui/TasksPage.h"

#include "tests/window/WindowFixture.h"

#include <QComboBox>
#include <QDateTimeEdit>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QSpinBox>
#include <QToolButton>

namespace cantorel {
namespace {

class Tasks : public test::WindowFixture {
public:
    Tasks() {
        recorder.schedule().initScheduleTaskList();
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        openTasks();
    }
    void name(const char *text) { find<QLineEdit>("taskName")->setText(text); }
    void start(const QDateTime &moment) { find<QDateTimeEdit>("taskStart")->setDateTime(moment); }
    void length(int seconds) {
        find<QSpinBox>("hours")->setValue(0);
        find<QSpinBox>("minutes")->setValue(seconds / 60);
        find<QSpinBox>("seconds")->setValue(seconds % 60);
    }
    QString add() {
        click("addTask");
        return find<QLabel>("taskTrouble")->text();
    }

    const QDateTime now = QDateTime::currentDateTime();
};

TEST_F(Tasks, NoTwoDaysReadAlikeAndTheWeekBeginsAsTheLanguageHasIt) {
    for (const auto &[language, first] : {std::pair("Turkish", "day1"), {"English", "day0"}}) {
        Lang::ChangeLanguage(language);
        window.changeLanguageText();
        pass(50);
        QStringList texts;
        int leftmost = window.tasks().width();
        for (int day = 0; day < 7; ++day) {
            const auto *box = find<QCheckBox>(qPrintable(QStringLiteral("day%1").arg(day)));
            texts << box->text();
            leftmost = qMin(leftmost, box->x());
        }
        EXPECT_EQ(texts.removeDuplicates(), 0) << language;
        EXPECT_EQ(find<QCheckBox>(first)->x(), leftmost) << language;
    }
}

TEST_F(Tasks, WhatCouldNeverRecordIsRefusedWithASentence) {
    EXPECT_EQ(add(), Lang::windowEnterTaskName());
    name("News");
    length(0);
    EXPECT_EQ(add(), Lang::toolsScheduleTaskErrorDuration());
    length(60);
    start(now.addSecs(-60));
    EXPECT_EQ(find<QLabel>("nextStart")->text(), Lang::windowNoNextStart());
    EXPECT_EQ(add(), Lang::toolsScheduleTaskErrorStarTime());
    click("daily");
    EXPECT_EQ(add(), Lang::windowNoNextStart()) << "no day is chosen";
    EXPECT_TRUE(taskList.tasks().empty());
    find<QCheckBox>("day3")->setChecked(true);
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
    EXPECT_FALSE(find<QLabel>("taskTrouble")->text().isEmpty()) << "it is recorded now";
    ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
    EXPECT_EQ(QFileInfo(list.items().back()->getFileName()).completeBaseName(), "Concert");
    tasks->setCurrentRow(tasks->count() - 1);
    click("removeTask");
    taskList.LoadTasks();
    for (const auto &task : taskList.tasks())
        EXPECT_NE(task->_taskName, "Later");
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
