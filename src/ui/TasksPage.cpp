#include "ui/TasksPage.h"

#include "lang/Lang.h"
#include "recording/control/RecorderPanel.h"
#include "recording/schedule/ScheduleCheck.h"
#include "recording/schedule/ScheduleTaskText.h"
#include "ui/Fields.h"
#include "ui/Icons.h"
#include "ui/PagePanel.h"
#include "ui/RowCard.h"
#include "ui/Strip.h"
#include "ui/TwoLineDelegate.h"
#include "ui/look/Look.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QLocale>
#include <QPushButton>
#include <QShortcut>
#include <QSpinBox>
#include <QToolButton>

#include <algorithm>
#include <utility>

namespace cantorel::ui {

namespace {

enum Repeat { Once, Times, Manually };

constexpr int kFirstLength = 60; // minutes of a new task
constexpr int kDaysInRow = 4;

QString shownTime(const QDateTime &moment) {
    return Lang::locale().toString(moment.toLocalTime(), QStringLiteral("ddd yyyy-MM-dd HH:mm:ss"));
}

// The next start of a task from now on; invalid if there is none.
QDateTime nextStart(const ScheduleTaskInfo &task) {
    const auto copy = std::make_shared<ScheduleTaskInfo>(task);
    return checkTasks({copy}, nullptr, QDateTime::currentDateTime()).start;
}

QDateTime nextFullHour() {
    const QDateTime now = QDateTime::currentDateTime();
    return now.addSecs(3600 - now.time().minute() * 60 - now.time().second());
}

QString summaryOf(const ScheduleTaskInfo &task, bool isRecorded) {
    const QDateTime start = nextStart(task);
    QStringList parts{isRecorded        ? Lang::tabRecordStatusRecording()
                      : start.isValid() ? shownTime(start)
                                        : Lang::windowNoNextStart(),
                      task.getDurationNSString(), task.getRecordFromNSString()};
    if (task._daily)
        parts << task.getWeekOnDesc();
    return parts.join(QStringLiteral(", "));
}

QSpinBox *spin(QWidget *parent, int least, int most, const char *name) {
    auto *made = new QSpinBox(parent);
    made->setRange(least, most);
    made->setObjectName(QString::fromLatin1(name));
    return made;
}

} // namespace

TasksPage::TasksPage(TaskList &tasks, RecorderPanel &panel, QWidget *parent)
    : Page(parent),
      mList(tasks),
      mRecorder(panel),
      mTasks(new QListWidget(this)),
      mEmpty(new QLabel(this)),
      mStrip(new Strip(this)),
      mUndo(&mStrip->addAction(QStringLiteral("undoRemove"), false)),
      mNew(&addAction(QStringLiteral("newTask"))),
      mEdit(&addAction(QStringLiteral("editTask"))),
      mRemove(&addAction(QStringLiteral("removeTask"))),
      mEditor(new PagePanel(this)),
      mRepeatHint(new QLabel(mEditor)),
      mNextStart(new QLabel(mEditor)),
      mTrouble(new QLabel(mEditor)),
      mName(new QLineEdit(mEditor)),
      mSource(new QComboBox(mEditor)),
      mRepeat(new QComboBox(mEditor)),
      mStart(new QDateTimeEdit(mEditor)),
      mHours(spin(mEditor, 0, 999, "hours")),
      mMinutes(spin(mEditor, 0, 59, "minutes")),
      mSeconds(spin(mEditor, 0, 59, "seconds")),
      mTimes(spin(mEditor, 2, 9999, "times")),
      mWeekly(new QCheckBox(mEditor)),
      mShutdown(new QCheckBox(mEditor)),
      mDayBox(new QWidget(mEditor)),
      mDayGrid(new QGridLayout(mDayBox)),
      mSave(new QPushButton(mEditor)),
      mCancel(new QPushButton(mEditor)) {
    setContent(*makeList());
    makePanel();
    setPanel(*mEditor);
    connect(mNew, &QToolButton::clicked, this, [this] { openEditor(nullptr); });
    connect(mEdit, &QToolButton::clicked, this, [this] {
        if (const Row *row = chosen(); row && row->task)
            openEditor(row->task);
    });
    connect(mRemove, &QToolButton::clicked, this, [this] { remove(); });
    connect(&mList, &TaskList::changed, this, [this] { showTasks(); });
    connect(&mRecorder, &RecorderPanel::begun, this, [this] { showTasks(); });
    connect(&mRecorder, &RecorderPanel::settled, this, [this] { showTasks(); });
    connect(&mRecorder, &RecorderPanel::missed, this, [this] { showTasks(); });
    showIcons();
    showTexts();
    beginAnew();
    showTasks();
}

QWidget *TasksPage::makeList() {
    auto *content = new QWidget(this);
    mTasks->setObjectName(QStringLiteral("tasks"));
    mTasks->setFrameShape(QFrame::NoFrame);
    mTasks->setItemDelegate(new TwoLineDelegate(mTasks));
    mTasks->setResizeMode(QListView::Adjust);
    mTasks->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    mTasks->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    mEmpty->setObjectName(QStringLiteral("noTasks"));
    mEmpty->setAlignment(Qt::AlignCenter);
    mEmpty->setWordWrap(true);
    mEmpty->setForegroundRole(QPalette::PlaceholderText);
    mStrip->text().setObjectName(QStringLiteral("taskNotice"));
    auto *column = new QVBoxLayout(content);
    column->setContentsMargins({});
    column->setSpacing(0);
    column->addWidget(mEmpty, 1);
    column->addWidget(mTasks, 1);
    column->addWidget(mStrip);
    connect(mUndo, &QPushButton::clicked, this, [this] { undo(); });
    connect(mStrip, &Strip::closed, this, [this] { mStrip->tell(Strip::Kind::Hint, {}); });
    connect(mTasks, &QListWidget::currentRowChanged, this, [this] { showChoice(); });
    connect(mTasks, &QListWidget::itemActivated, mEdit, &QToolButton::click);
    auto *removes = new QShortcut(QKeySequence::Delete, mTasks);
    removes->setContext(Qt::WidgetShortcut);
    connect(removes, &QShortcut::activated, this, [this] { remove(); });
    return content;
}

CardRow &TasksPage::addSwitch(QCheckBox &choice) {
    auto *row = new CardRow(mEditor, 0);
    row->setSwitch(choice);
    mEditor->fields().addWidget(row);
    return *row;
}

void TasksPage::makePanel() {
    mName->setObjectName(QStringLiteral("taskName"));
    mSource->setObjectName(QStringLiteral("taskSource"));
    mStart->setObjectName(QStringLiteral("taskStart"));
    mWeekly->setObjectName(QStringLiteral("daily"));
    mRepeat->setObjectName(QStringLiteral("repeat"));
    mNextStart->setObjectName(QStringLiteral("nextStart"));
    mTrouble->setObjectName(QStringLiteral("taskTrouble"));
    mSave->setObjectName(QStringLiteral("saveTask"));
    mCancel->setObjectName(QStringLiteral("cancelTask"));
    mStart->setCalendarPopup(true);
    mStart->setDisplayFormat(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    auto *length = new QWidget(mEditor);
    auto *lengthRow = new QHBoxLayout(length);
    lengthRow->setContentsMargins({});
    for (QSpinBox *number : {mHours, mMinutes, mSeconds})
        lengthRow->addWidget(number);
    mNameLabel = &mEditor->addField(*mName);
    mSourceLabel = &mEditor->addField(*mSource);
    mStartLabel = &mEditor->addField(*mStart);
    mLengthLabel = &mEditor->addField(*length);

    mWeeklyRow = &addSwitch(*mWeekly);
    mDayGrid->setContentsMargins(0, 0, 0, measure::kGap);
    mDayGrid->setSpacing(measure::kGap / 2);
    for (std::size_t day = 0; day < mDays.size(); ++day) {
        mDays[day] = new QToolButton(mDayBox);
        mDays[day]->setObjectName(QStringLiteral("day%1").arg(day));
        mDays[day]->setCheckable(true);
        mDays[day]->setFocusPolicy(Qt::StrongFocus);
        mDays[day]->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        connect(mDays[day], &QToolButton::toggled, this, [this] { showEdited(); });
    }
    mEditor->fields().addWidget(mDayBox);
    mRepeatLabel = &mEditor->addField(*mRepeat);
    for (QWidget *widget : std::initializer_list<QWidget *>{mTimes, mRepeatHint})
        mEditor->fields().addWidget(widget);
    mShutdownRow = &addSwitch(*mShutdown);
    for (QLabel *label : {mRepeatHint, mNextStart, mTrouble})
        label->setWordWrap(true);
    mRepeatHint->setFont(Look::font(*this, text_size::kSecondLine));
    mRepeatHint->setForegroundRole(QPalette::PlaceholderText);
    mEditor->fields().addStretch();
    mEditor->notes().addWidget(mNextStart);
    mEditor->notes().addWidget(mTrouble);
    mSave->setDefault(true);
    mEditor->buttons().addWidget(mSave, 1);
    mEditor->buttons().addWidget(mCancel, 1);

    for (QSpinBox *number : {mHours, mMinutes, mSeconds})
        connect(number, &QSpinBox::valueChanged, this, [this] { showEdited(); });
    connect(mWeekly, &QCheckBox::toggled, this, [this] { showEdited(); });
    connect(mRepeat, &QComboBox::currentIndexChanged, this, [this] { showEdited(); });
    connect(mStart, &QDateTimeEdit::dateTimeChanged, this, [this] { showEdited(); });
    connect(mName, &QLineEdit::textChanged, this, [this] { showEdited(); });
    connect(mName, &QLineEdit::returnPressed, this, [this] { save(); });
    connect(mSave, &QPushButton::clicked, this, [this] { save(); });
    connect(mCancel, &QPushButton::clicked, this, [this] {
        beginAnew();
        closePanel();
    });
}

void TasksPage::begin() {
    if (mTasks->isHidden())
        mNew->setFocus(Qt::OtherFocusReason);
    else
        mTasks->setFocus(Qt::OtherFocusReason);
}

// What the person has begun to write of a new task is still there.
void TasksPage::openEditor(const TaskList::Task &task) {
    mStrip->tell(Strip::Kind::Hint, {});
    if (isRecorded(task)) {
        mStrip->tell(Strip::Kind::Warning, Lang::windowTaskIsRecorded());
        mUndo->setText({});
        return;
    }
    if (mEdited || task)
        beginAnew();
    mEdited = task;
    if (task) {
        mName->setText(task->_taskName);
        mSource->setCurrentIndex(task->_recordFrom);
        mStart->setDateTime(task->_fromTime.toLocalTime());
        const auto seconds = static_cast<int>(task->_duration);
        showNumber(*mHours, seconds / 3600);
        mMinutes->setValue(seconds / 60 % 60);
        mSeconds->setValue(seconds % 60);
        mWeekly->setChecked(task->_daily);
        for (std::size_t day = 0; day < mDays.size(); ++day)
            mDays[day]->setChecked(task->WeeksOn_.contains(static_cast<int>(day)));
        mRepeat->setCurrentIndex(!task->_repeatEnabled ? Once : task->_repeatStopByManually ? Manually : Times);
        if (task->_repeatTotalCount > 0 || mRepeat->currentIndex() == Times)
            showNumber(*mTimes, task->_repeatTotalCount);
        mShutdown->setChecked(task->_shutdownAfterRecording);
    } else if (mStart->dateTime() < QDateTime::currentDateTime())
        mStart->setDateTime(nextFullHour());
    showTexts();
    openPanel();
    mName->setFocus(Qt::OtherFocusReason);
}

void TasksPage::beginAnew() {
    mEdited.reset();
    mName->clear();
    mSource->setCurrentIndex(0);
    mStart->setDateTime(nextFullHour());
    mHours->setValue(kFirstLength / 60);
    mMinutes->setValue(kFirstLength % 60);
    mSeconds->setValue(0);
    mRepeat->setCurrentIndex(Once);
    for (QCheckBox *choice : {mWeekly, mShutdown})
        choice->setChecked(false);
    for (QToolButton *day : mDays)
        day->setChecked(false);
    showEdited();
}

ScheduleTaskInfo TasksPage::edited() const {
    const QDateTime from = mStart->dateTime();
    const int seconds = mHours->value() * 3600 + mMinutes->value() * 60 + mSeconds->value();
    ScheduleTaskInfo task(mName->text().trimmed(), from, from.addSecs(seconds), mSource->currentIndex(),
                          mShutdown->isChecked());
    task._daily = mWeekly->isChecked();
    for (std::size_t day = 0; task._daily && day < mDays.size(); ++day)
        if (mDays[day]->isChecked())
            task.WeeksOn_ << static_cast<int>(day);
    task._repeatEnabled = mRepeat->currentIndex() != Once;
    task._repeatStopByManually = mRepeat->currentIndex() == Manually;
    task._repeatTotalCount = mRepeat->currentIndex() == Times ? mTimes->value() : 0;
    return task;
}

void TasksPage::showEdited() {
    const QDateTime start = nextStart(edited());
    mNextStart->setText(start.isValid() ? Lang::windowNextStart().replace(QLatin1String("[#Time#]"), shownTime(start))
                                        : Lang::windowNoNextStart());
    mTrouble->clear();
    mTrouble->hide();
    mDayBox->setVisible(mWeekly->isChecked());
    for (QToolButton *day : mDays) { // not by its colour alone
        QFont font = this->font();
        font.setBold(day->isChecked());
        day->setFont(font);
    }
    mTimes->setVisible(mRepeat->currentIndex() == Times);
    mRepeatHint->setVisible(mRepeat->currentIndex() != Once);
}

QString TasksPage::troubleWith(const ScheduleTaskInfo &task) const {
    if (task._taskName.isEmpty())
        return Lang::windowEnterTaskName();
    if (task._duration < 1)
        return Lang::toolsScheduleTaskErrorDuration();
    if (!nextStart(task).isValid())
        return task._daily ? Lang::windowNoNextStart() : Lang::toolsScheduleTaskErrorStarTime();
    // The rules that programs and scripts keep hold here as well.
    const auto checked = taskFromJson(jsonOfTask(task));
    return checked ? QString() : Lang::sentence(checked.failure().sentence);
}

void TasksPage::save() {
    const ScheduleTaskInfo task = edited();
    QString trouble = isRecorded(mEdited) ? Lang::windowTaskIsRecorded() : troubleWith(task);
    if (trouble.isEmpty()) {
        const auto saved = mEdited ? mList.change(mEdited, task) : mList.add(task);
        if (saved) {
            beginAnew();
            closePanel();
            const auto row = std::find(mRows.begin(), mRows.end(), Row{saved.value()});
            mTasks->setCurrentRow(row == mRows.end() ? -1 : static_cast<int>(row - mRows.begin()));
            return;
        }
        trouble = Lang::sentence(saved.failure().sentence);
    }
    mTrouble->setText(trouble);
    mTrouble->show();
}

void TasksPage::remove() {
    const Row *row = chosen();
    if (!row)
        return;
    mUndo->setText({});
    if (!row->task) {
        mRecorder.forgetMissed(row->missed);
        showTasks();
        return;
    }
    if (isRecorded(row->task)) {
        mStrip->tell(Strip::Kind::Warning, Lang::windowTaskIsRecorded());
        return;
    }
    const ScheduleTaskInfo removed = *row->task;
    if (const auto done = mList.remove(row->task); !done) {
        mStrip->tell(Strip::Kind::Error, Lang::sentence(done.failure().sentence));
        return;
    }
    mRemoved = removed;
    mUndo->setText(Lang::windowUndo());
    mStrip->tell(Strip::Kind::Result, Lang::windowRemoved().replace(QLatin1String("[#FileName#]"), removed._taskName));
}

// A task whose start has passed meanwhile is not put back, since it would be called missed at once.
void TasksPage::undo() {
    mUndo->setText({});
    const ScheduleTaskInfo task = *std::exchange(mRemoved, {});
    QString trouble = troubleWith(task);
    if (trouble.isEmpty())
        if (const auto added = mList.add(task); !added)
            trouble = Lang::sentence(added.failure().sentence);
    mStrip->tell(Strip::Kind::Error, trouble);
    begin();
}

bool TasksPage::isRecorded(const TaskList::Task &task) { return task && task == mList.currentRuningTask(); }

const TasksPage::Row *TasksPage::chosen() const {
    const auto row = static_cast<std::size_t>(mTasks->currentRow());
    return row < mRows.size() ? &mRows[row] : nullptr;
}

void TasksPage::showChoice() {
    const Row *row = chosen();
    mEdit->setVisible(row && row->task);
    mRemove->setVisible(row);
}

void TasksPage::addRow(const Row &row) {
    QString title, second;
    if (row.task) {
        title = row.task->_taskName;
        second = summaryOf(*row.task, isRecorded(row.task));
    } else {
        const RecorderPanel::MissedStart &missed = mRecorder.missedStarts()[row.missed];
        title = missed.name;
        second = shownTime(missed.start) + QStringLiteral(": ") + Lang::sentence(missed.why);
    }
    auto *item = new QListWidgetItem(title + QStringLiteral(", ") + second, mTasks); // which owns it
    item->setData(TwoLineDelegate::Title, title);
    item->setData(TwoLineDelegate::Second, second);
    item->setData(TwoLineDelegate::IsTrouble, !row.task);
    mRows.push_back(row);
}

void TasksPage::showTasks() {
    const int at = mTasks->currentRow();
    const Row before = chosen() ? *chosen() : Row();
    mTasks->clear();
    mRows.clear();
    for (std::size_t i = 0; i < mRecorder.missedStarts().size(); ++i)
        addRow({nullptr, i});
    for (const auto &task : mList.tasks())
        addRow({task});
    const auto found = std::find(mRows.begin(), mRows.end(), before);
    mTasks->setCurrentRow(at < 0 || found == mRows.end() ? -1 : static_cast<int>(found - mRows.begin()));
    mTasks->setHidden(mRows.empty());
    mEmpty->setVisible(mRows.empty());
    showChoice();
}

void TasksPage::showIcons() {
    mNew->setIcon(icon(QStringLiteral("plus"), palette()));
    mEdit->setIcon(icon(QStringLiteral("rename"), palette()));
    mRemove->setIcon(icon(QStringLiteral("wastebasket"), palette()));
    QPalette red = palette();
    red.setColor(QPalette::WindowText, Look::tokens().red);
    mTrouble->setPalette(red);
}

void TasksPage::showTexts() {
    mEditor->setTitle(mEdited ? Lang::btnEdit() : Lang::windowNewTask());
    setTitle(Lang::toolsScheduleTaskTitle());
    mTasks->setAccessibleName(Lang::toolsScheduleTaskTaskList());
    mEmpty->setText(Lang::toolsScheduleTaskNoScheduleTask());
    mStrip->close().setToolTip(Lang::btnClose());
    mNameLabel->setText(Lang::toolsScheduleTaskTaskName());
    mSourceLabel->setText(Lang::settingsRecordAudioSource());
    mStartLabel->setText(Lang::toolsScheduleTaskStartTime());
    mLengthLabel->setText(Lang::windowLength());
    showUnit(*mHours, Lang::windowHours());
    showUnit(*mMinutes, Lang::windowMinutes());
    showUnit(*mSeconds, Lang::windowSeconds());
    for (QSpinBox *number : {mHours, mMinutes, mSeconds})
        number->setAccessibleName(Lang::windowLength());
    showChoices(*mSource, {Lang::settingsRecordSystemSound(), Lang::windowMicrophone(), Lang::settingsRecordBoth()});
    showChoices(*mRepeat,
                {Lang::windowRepeatOnce(), Lang::windowRepeatTimes(), Lang::toolsScheduleRepeatStopManually()});
    mWeeklyRow->setTexts(Lang::windowDaily());
    showDays();
    mRepeatLabel->setText(Lang::toolsScheduleRepeat());
    showUnit(*mTimes, Lang::toolsScheduleRepeatStopAtCount());
    mTimes->setAccessibleName(Lang::windowRepeatTimes());
    mRepeatHint->setText(Lang::windowRepeatHint());
    mShutdownRow->setTexts(Lang::toolsScheduleTaskShutdown());
    mSave->setText(mEdited ? Lang::btnSave() : Lang::btnCreate());
    mCancel->setText(Lang::btnCancel());
    mNew->setText(Lang::windowNewTask());
    mEdit->setText(Lang::btnEdit());
    mRemove->setText(Lang::btnRemove());
    showEdited();
    showTasks();
}

// The week begins as the language in force has it. A locale counts the days from 1, Monday; a task from 0, Sunday.
void TasksPage::showDays() {
    const QLocale locale = Lang::locale();
    const QStringList names = ScheduleTaskInfo::getAllWeeks();
    QWidget *previous = mWeekly;
    for (int place = 0; place < names.size(); ++place) {
        const int day = (static_cast<int>(locale.firstDayOfWeek()) + place) % 7;
        QToolButton *button = mDays[static_cast<std::size_t>(day)];
        button->setText(locale.standaloneDayName(day == 0 ? 7 : day, QLocale::ShortFormat));
        button->setAccessibleName(names[day]);
        mDayGrid->addWidget(button, place / kDaysInRow, place % kDaysInRow);
        setTabOrder(previous, button);
        previous = button;
    }
}

} // namespace cantorel::ui
