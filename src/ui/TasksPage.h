#pragma once

#include "recording/schedule/ScheduleTaskInfo.h"
#include "ui/Page.h"

#include <array>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QDateTimeEdit;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QSpinBox;

namespace cantorel {
class TaskList;
}

namespace cantorel::ui {

// The scheduled tasks, and the editor for a new one, which tells the next start while one edits. Owned by the main
// window.
class TasksPage : public Page {
public:
    // The list outlives the window.
    explicit TasksPage(TaskList &tasks, QWidget *parent = nullptr);

    void showTasks();

private:
    void showTexts();
    void showDays();
    void changeEvent(QEvent *event) override;
    QWidget *makeList();
    QWidget *makeEditor();
    void add();
    void remove();
    // What the editor says.
    ScheduleTaskInfo edited() const;
    void showEdited();
    void beginAnew();

    TaskList &mList;
    ScheduleTaskInfo::Tasks mShown; // in the order of the rows
    QListWidget *mTasks;
    QLabel *mEmpty, *mNameLabel, *mSourceLabel, *mStartLabel, *mLengthLabel, *mNextStart, *mTrouble;
    QLineEdit *mName;
    QComboBox *mSource;
    QDateTimeEdit *mStart;
    QSpinBox *mHours, *mMinutes, *mSeconds, *mTimes;
    QCheckBox *mDaily, *mRepeat, *mManual, *mShutdown;
    QHBoxLayout *mDayRow;
    std::array<QCheckBox *, 7> mDays{}; // from Sunday on
    QPushButton *mAdd, *mRemove;
};

} // namespace cantorel::ui
