#include "ui/TasksPage.h"

#include "lang/Lang.h"
#include "recording/schedule/ScheduleCheck.h"
#include "recording/schedule/ScheduleTaskText.h"
#include "recording/schedule/TaskList.h"
#include "ui/look/Tokens.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QEvent>
#include <QFormLayout>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QLocale>
#include <QPushButton>
#include <QSpinBox>

#include <algorithm>

namespace cantorel::ui {

namespace {

constexpr int kFirstLength = 60; // minutes of a new task
constexpr int kLeastTasks = 2;   // that the list shows

QString shownTime(const QDateTime &moment) {
    return Lang::locale().toString(moment.toLocalTime(), QStringLiteral("ddd yyyy-MM-dd HH:mm:ss"));
}

// The next start of a task from now on; invalid if there is none.
QDateTime nextStart(const ScheduleTaskInfo &task) {
    const auto copy = std::make_shared<ScheduleTaskInfo>(task);
    return checkTasks({copy}, nullptr, QDateTime::currentDateTime()).start;
}

QString summaryOf(const ScheduleTaskInfo &task) {
    const QDateTime start = nextStart(task);
    QStringList parts{task._taskName, start.isValid() ? shownTime(start) : Lang::windowNoNextStart(),
                      task.getDurationNSString(), task.getRecordFromNSString()};
    if (task._daily)
        parts << task.getWeekOnDesc();
    return parts.join(QStringLiteral("  ·  "));
}

QSpinBox *spin(QWidget *parent, int least, int most, const char *name) {
    auto *made = new QSpinBox(parent);
    made->setRange(least, most);
    made->setObjectName(QString::fromLatin1(name));
    return made;
}

} // namespace

TasksPage::TasksPage(TaskList &tasks, QWidget *parent)
    : Page(parent),
      mList(tasks),
      mTasks(new QListWidget(this)),
      mEmpty(new QLabel(this)),
      mNameLabel(new QLabel(this)),
      mSourceLabel(new QLabel(this)),
      mStartLabel(new QLabel(this)),
      mLengthLabel(new QLabel(this)),
      mNextStart(new QLabel(this)),
      mTrouble(new QLabel(this)),
      mName(new QLineEdit(this)),
      mSource(new QComboBox(this)),
      mStart(new QDateTimeEdit(this)),
      mHours(spin(this, 0, 999, "hours")),
      mMinutes(spin(this, 0, 59, "minutes")),
      mSeconds(spin(this, 0, 59, "seconds")),
      mTimes(spin(this, 0, 9999, "times")),
      mDaily(new QCheckBox(this)),
      mRepeat(new QCheckBox(this)),
      mManual(new QCheckBox(this)),
      mShutdown(new QCheckBox(this)),
      mDayRow(new QHBoxLayout),
      mAdd(new QPushButton(this)),
      mRemove(new QPushButton(this)) {
    auto *content = new QWidget(this);
    auto *column = new QVBoxLayout(content);
    column->addWidget(makeList(), 1);
    column->addWidget(makeEditor());
    setContent(*content);
    showTexts();
    beginAnew();
    showTasks();
    // The list is what yields to large text, so that the window fits on a small screen.
    mTasks->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    mTasks->setMinimumHeight(kLeastTasks * fontMetrics().lineSpacing() + 2 * mTasks->frameWidth());
    connect(&mList, &TaskList::changed, this, [this] { showTasks(); });
}

QWidget *TasksPage::makeList() {
    auto *box = new QWidget(this);
    auto *column = new QVBoxLayout(box);
    column->setContentsMargins({});
    mTasks->setObjectName(QStringLiteral("tasks"));
    mRemove->setObjectName(QStringLiteral("removeTask"));
    mEmpty->setEnabled(false); // A quiet word.
    auto *row = new QHBoxLayout;
    row->addWidget(mEmpty, 1);
    row->addWidget(mRemove);
    column->addWidget(mTasks);
    column->addLayout(row);
    connect(mRemove, &QPushButton::clicked, this, [this] { remove(); });
    connect(mTasks, &QListWidget::currentRowChanged, this, [this](int current) { mRemove->setEnabled(current >= 0); });
    return box;
}

QWidget *TasksPage::makeEditor() {
    auto *box = new QWidget(this);
    auto *form = new QFormLayout(box);
    form->setContentsMargins({});
    form->setVerticalSpacing(measure::kGap / 2); // the window fits on a small screen in large text
    const auto row = [&](std::initializer_list<QWidget *> widgets) {
        auto *layout = new QHBoxLayout;
        for (QWidget *widget : widgets)
            layout->addWidget(widget);
        layout->addStretch();
        return layout;
    };
    mName->setObjectName(QStringLiteral("taskName"));
    mSource->setObjectName(QStringLiteral("taskSource"));
    mStart->setObjectName(QStringLiteral("taskStart"));
    mDaily->setObjectName(QStringLiteral("daily"));
    mRepeat->setObjectName(QStringLiteral("repeat"));
    mNextStart->setObjectName(QStringLiteral("nextStart"));
    mTrouble->setObjectName(QStringLiteral("taskTrouble"));
    mAdd->setObjectName(QStringLiteral("addTask"));
    mStart->setCalendarPopup(true);
    mStart->setDisplayFormat(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    mHours->setSuffix(QStringLiteral(" h"));
    mMinutes->setSuffix(QStringLiteral(" min"));
    mSeconds->setSuffix(QStringLiteral(" s"));
    mTrouble->setWordWrap(true);
    mNameLabel->setBuddy(mName);
    mSourceLabel->setBuddy(mSource);
    mStartLabel->setBuddy(mStart);
    mLengthLabel->setBuddy(mHours);
    form->addRow(mNameLabel, mName);
    form->addRow(mSourceLabel, mSource);
    form->addRow(mStartLabel, mStart);
    form->addRow(mLengthLabel, row({mHours, mMinutes, mSeconds}));
    for (std::size_t day = 0; day < mDays.size(); ++day) {
        mDays[day] = new QCheckBox(box);
        mDays[day]->setObjectName(QStringLiteral("day%1").arg(day));
        connect(mDays[day], &QCheckBox::toggled, this, [this] { showEdited(); });
    }
    mDayRow->addStretch();
    form->addRow(mDaily);
    form->addRow(mDayRow);
    form->addRow(row({mRepeat, mTimes, mManual}));
    form->addRow(mShutdown);
    auto *end = new QHBoxLayout;
    end->addWidget(mNextStart, 1);
    end->addWidget(mAdd);
    form->addRow(end);
    form->addRow(mTrouble);
    for (QSpinBox *number : {mHours, mMinutes, mSeconds})
        connect(number, &QSpinBox::valueChanged, this, [this] { showEdited(); });
    for (QCheckBox *choice : {mDaily, mRepeat, mManual})
        connect(choice, &QCheckBox::toggled, this, [this] { showEdited(); });
    connect(mStart, &QDateTimeEdit::dateTimeChanged, this, [this] { showEdited(); });
    connect(mName, &QLineEdit::textChanged, this, [this] { showEdited(); });
    connect(mAdd, &QPushButton::clicked, this, [this] { add(); });
    return box;
}

void TasksPage::beginAnew() {
    mName->clear();
    const QDateTime now = QDateTime::currentDateTime();
    mStart->setDateTime(now.addSecs(3600 - now.time().minute() * 60 - now.time().second())); // the next full hour
    mHours->setValue(kFirstLength / 60);
    mMinutes->setValue(kFirstLength % 60);
    mSeconds->setValue(0);
    for (QCheckBox *choice : {mDaily, mRepeat, mManual, mShutdown})
        choice->setChecked(false);
    for (QCheckBox *day : mDays)
        day->setChecked(false);
    showEdited();
}

ScheduleTaskInfo TasksPage::edited() const {
    const QDateTime from = mStart->dateTime();
    const int seconds = mHours->value() * 3600 + mMinutes->value() * 60 + mSeconds->value();
    ScheduleTaskInfo task(mName->text().trimmed(), from, from.addSecs(seconds), mSource->currentIndex(),
                          mShutdown->isChecked());
    task._daily = mDaily->isChecked();
    for (std::size_t day = 0; task._daily && day < mDays.size(); ++day)
        if (mDays[day]->isChecked())
            task.WeeksOn_ << static_cast<int>(day);
    task._repeatEnabled = mRepeat->isChecked();
    task._repeatStopByManually = task._repeatEnabled && mManual->isChecked();
    task._repeatTotalCount = task._repeatEnabled && !task._repeatStopByManually ? mTimes->value() : 0;
    return task;
}

void TasksPage::showEdited() {
    const QDateTime start = nextStart(edited());
    mNextStart->setText(start.isValid() ? Lang::windowNextStart().replace(QLatin1String("[#Time#]"), shownTime(start))
                                        : Lang::windowNoNextStart());
    mTrouble->clear();
    mTrouble->hide();
    for (QCheckBox *day : mDays)
        day->setEnabled(mDaily->isChecked());
    mManual->setEnabled(mRepeat->isChecked());
    mTimes->setEnabled(mRepeat->isChecked() && !mManual->isChecked());
}

void TasksPage::add() {
    const ScheduleTaskInfo task = edited();
    QString trouble;
    if (task._taskName.isEmpty())
        trouble = Lang::windowEnterTaskName();
    else if (task._duration < 1)
        trouble = Lang::toolsScheduleTaskErrorDuration();
    else if (!nextStart(task).isValid())
        trouble = task._daily ? Lang::windowNoNextStart() : Lang::toolsScheduleTaskErrorStarTime();
    // The rules that programs and scripts keep hold here as well.
    else if (const auto checked = taskFromJson(jsonOfTask(task)); !checked)
        trouble = Lang::sentence(checked.failure().sentence);
    else if (const auto added = mList.add(task); !added)
        trouble = Lang::sentence(added.failure().sentence);
    if (trouble.isEmpty())
        beginAnew();
    mTrouble->setText(trouble);
    mTrouble->setVisible(!trouble.isEmpty());
}

void TasksPage::remove() {
    const auto row = static_cast<std::size_t>(mTasks->currentRow());
    if (row >= mShown.size())
        return;
    const auto removed = mList.remove(mShown[row]);
    mTrouble->setText(removed ? QString() : Lang::sentence(removed.failure().sentence));
    mTrouble->setVisible(!removed);
}

void TasksPage::showTasks() {
    const auto row = static_cast<std::size_t>(mTasks->currentRow());
    const auto chosen = row < mShown.size() ? mShown[row] : nullptr;
    mTasks->clear();
    mShown = mList.tasks();
    for (const auto &task : mShown)
        mTasks->addItem(summaryOf(*task));
    const auto found = std::find(mShown.begin(), mShown.end(), chosen);
    mTasks->setCurrentRow(found == mShown.end() ? -1 : static_cast<int>(found - mShown.begin()));
    mRemove->setEnabled(mTasks->currentRow() >= 0);
    mEmpty->setText(mTasks->count() == 0 ? Lang::toolsScheduleTaskNoScheduleTask() : QString());
}

void TasksPage::showTexts() {
    setTitle(Lang::toolsScheduleTaskTitle());
    mTasks->setAccessibleName(Lang::toolsScheduleTaskTaskList());
    mNameLabel->setText(Lang::toolsScheduleTaskTaskName());
    mSourceLabel->setText(Lang::settingsRecordAudioSource());
    mStartLabel->setText(Lang::toolsScheduleTaskStartTime());
    mLengthLabel->setText(Lang::windowLength());
    for (QSpinBox *number : {mMinutes, mSeconds})
        number->setAccessibleName(Lang::windowLength());
    const int source = qMax(0, mSource->currentIndex());
    mSource->clear();
    mSource->addItems({Lang::settingsRecordSystemSound(), Lang::windowMicrophone(), Lang::settingsRecordBoth()});
    mSource->setCurrentIndex(source);
    mDaily->setText(Lang::windowDaily());
    showDays();
    mRepeat->setText(Lang::toolsScheduleRepeat());
    mTimes->setAccessibleName(Lang::toolsScheduleRepeat());
    mManual->setText(Lang::toolsScheduleRepeatStopManually());
    mShutdown->setText(Lang::toolsScheduleTaskShutdown());
    mAdd->setText(Lang::toolsScheduleTaskCreateTak());
    mRemove->setText(Lang::windowRemoveTask());
    showEdited();
    showTasks();
}

// The week begins as the language in force has it. A locale counts the days from 1, Monday; a task from 0, Sunday.
void TasksPage::showDays() {
    const QLocale locale = Lang::locale();
    const QStringList names = ScheduleTaskInfo::getAllWeeks();
    QWidget *previous = mDaily;
    for (int place = 0; place < names.size(); ++place) {
        const int day = (static_cast<int>(locale.firstDayOfWeek()) + place) % 7;
        QCheckBox *box = mDays[static_cast<std::size_t>(day)];
        box->setText(locale.standaloneDayName(day == 0 ? 7 : day, QLocale::ShortFormat));
        box->setAccessibleName(names[day]);
        mDayRow->removeWidget(box);
        mDayRow->insertWidget(place, box);
        setTabOrder(previous, box);
        previous = box;
    }
}

void TasksPage::changeEvent(QEvent *event) {
    if (event->type() == QEvent::LanguageChange)
        showTexts();
    Page::changeEvent(event);
}

} // namespace cantorel::ui
