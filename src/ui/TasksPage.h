#pragma once

#include "recording/schedule/TaskList.h"
#include "ui/Page.h"

#include <QDateTime>

#include <array>
#include <optional>
#include <vector>

class QCheckBox;
class QComboBox;
class QDateTimeEdit;
class QGridLayout;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QSpinBox;
class QToolButton;

namespace cantorel {
class RecorderPanel;
}

namespace cantorel::ui {

class CardRow;
class Strip;

// The scheduled tasks and those that were missed; a panel makes a new one or changes one, and tells the next start
// meanwhile. Owned by the main window.
class TasksPage : public Page {
public:
    // Both outlive the page.
    TasksPage(TaskList &tasks, RecorderPanel &panel, QWidget *parent = nullptr);

    void showTasks();
    void begin() override;

private:
    // A task, or the number of a missed start.
    struct Row {
        TaskList::Task task;
        std::size_t missed = 0;
        bool operator==(const Row &) const = default;
    };

    QWidget *makeList();
    void makePanel();
    CardRow &addSwitch(QCheckBox &choice);
    void addRow(const Row &row);
    const Row *chosen() const;
    bool isRecorded(const TaskList::Task &task);
    // No task: a new one.
    void openEditor(const TaskList::Task &task);
    void beginAnew();
    // What the panel says.
    ScheduleTaskInfo edited() const;
    QString troubleWith(const ScheduleTaskInfo &task) const;
    void showEdited();
    void save();
    void remove();
    void undo();
    void showChoice();
    void showDays();
    void showIcons() final;
    void showTexts() final;

    TaskList &mList;
    RecorderPanel &mRecorder;
    std::vector<Row> mRows;
    TaskList::Task mEdited; // null: the panel makes a new one
    std::optional<ScheduleTaskInfo> mRemoved;
    QListWidget *mTasks;
    QLabel *mEmpty;
    Strip *mStrip;
    QPushButton *mUndo;
    QToolButton *mNew, *mEdit, *mRemove;
    PagePanel *mEditor;
    QLabel *mNameLabel, *mSourceLabel, *mStartLabel, *mLengthLabel, *mRepeatLabel, *mRepeatHint, *mNextStart, *mTrouble;
    QLineEdit *mName;
    QComboBox *mSource, *mRepeat;
    QDateTimeEdit *mStart;
    QSpinBox *mHours, *mMinutes, *mSeconds, *mTimes;
    QCheckBox *mWeekly, *mShutdown;
    CardRow *mWeeklyRow = nullptr, *mShutdownRow = nullptr;
    QWidget *mDayBox;
    QGridLayout *mDayGrid;
    std::array<QToolButton *, 7> mDays{}; // from Sunday on
    QPushButton *mSave, *mCancel;
};

} // namespace cantorel::ui
