#include "ui/RecordDeck.h"

#include "lang/Lang.h"
#include "recording/control/RecorderPanel.h"
#include "recording/control/ScheduledSession.h"
#include "recording/session/RecordingSession.h"
#include "ui/Icons.h"
#include "ui/KeyCaps.h"
#include "ui/PageParts.h"
#include "ui/RecordButton.h"
#include "ui/WindowKeys.h"
#include "ui/look/Look.h"

#include <QBoxLayout>
#include <QEvent>
#include <QToolButton>

namespace cantorel::ui {

namespace {

constexpr int kControlIcon = 22, kControlWidth = 88, kTaskWidth = 140;

} // namespace

RecordDeck::RecordDeck(const RecorderPanel &panel, ScheduledSession &recorder, RecordingSession &session,
                       QWidget *parent)
    : Deck(parent),
      mPanel(panel),
      mRecorder(recorder),
      mRecord(new RecordButton(this)),
      mRecordText(new QLabel(this)),
      mPause(new QToolButton(this)),
      mSplit(new QToolButton(this)),
      mTaskIcon(new QLabel(this)),
      mTask(new QLabel(this)),
      mTaskStart(new QLabel(this)),
      mKeys(new KeyCaps(this)),
      mKeysText(new QLabel(this)),
      mCorners{new QWidget(this), new QWidget(this)} {
    for (QToolButton *button : {mPause, mSplit}) {
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::StrongFocus);
    }
    mRecord->setObjectName(QStringLiteral("record"));
    mRecordText->setAlignment(Qt::AlignCenter);
    mPause->setObjectName(QStringLiteral("pause"));
    mSplit->setObjectName(QStringLiteral("split"));
    connect(mRecord, &RecordButton::clicked, this, [this] { start(); });
    connect(mPause, &QToolButton::clicked, this, [this] { mRecorder.onPauseRecording(); });
    connect(mSplit, &QToolButton::clicked, this, [&session] { session.splitRecording(); });

    mTask->setObjectName(QStringLiteral("nextTask"));
    auto *lines = new QVBoxLayout;
    lines->setSpacing(0);
    lines->addStretch();
    lines->addWidget(mTask);
    lines->addWidget(mTaskStart);
    lines->addStretch();
    auto *task = rowIn(mCorners[0], measure::kGap);
    task->addWidget(mTaskIcon);
    task->addLayout(lines, 1);
    auto *keys = new QVBoxLayout(mCorners[1]);
    keys->setContentsMargins({});
    keys->setSpacing(measure::kGap / 2);
    keys->addStretch();
    keys->addWidget(mKeys, 0, Qt::AlignRight);
    keys->addWidget(mKeysText, 0, Qt::AlignRight);
    keys->addStretch();

    auto *middle = new QVBoxLayout;
    middle->setSpacing(measure::kGap / 2);
    middle->addStretch();
    middle->addWidget(mRecord, 0, Qt::AlignHCenter);
    middle->addWidget(mRecordText);
    middle->addStretch();
    // Both sides of the record button are equally wide, so that it stands in the middle whatever the language.
    auto *left = new QHBoxLayout, *right = new QHBoxLayout;
    left->addWidget(mCorners[0], 1);
    left->addWidget(mPause);
    right->addWidget(mSplit);
    right->addWidget(mCorners[1], 1);
    auto *row = rowIn(this, 2 * measure::kGap);
    row->addLayout(left, 1);
    row->addLayout(middle);
    row->addLayout(right, 1);
    showIcons();
}

// What lacks room goes, and words stand beside icons where the window is low.
void RecordDeck::fit(bool isNarrow, bool isLow, int margin) {
    layout()->setContentsMargins(margin, measure::kGap, margin, measure::kGap);
    setMinimumHeight(Look::tall(*this, isLow ? 84 : 112));
    mRecord->setLow(isLow);
    mRecordText->setVisible(!isLow);
    for (QToolButton *button : {mPause, mSplit}) {
        button->setToolButtonStyle(isLow ? Qt::ToolButtonTextBesideIcon : Qt::ToolButtonTextUnderIcon);
        button->setMinimumWidth(isLow ? 0 : kControlWidth);
    }
    for (QWidget *corner : mCorners)
        corner->setVisible(!isNarrow);
}

void RecordDeck::showNumbers() { mSplit->setEnabled(mPanel.isRunning() && mPanel.display().seconds > 0); }

void RecordDeck::showState() {
    const bool isIdle = !mPanel.isRunning();
    const RecordingControls &controls = mPanel.controls();
    mRecord->setRecording(!isIdle);
    mRecord->setText(isIdle ? Lang::windowRecord() : Lang::btnStop());
    mRecord->setToolTip(withKeys(mRecord->text(), Command::Record));
    mRecord->setAccessibleName(mRecord->text());
    mRecordText->setText(mRecord->text());
    mRecordText->setFont(Look::font(*this, text_size::kSecondLine, QFont::Bold));
    mPause->setVisible(!isIdle);
    mPause->setEnabled(controls.pauseEnabled);
    mPause->setText(controls.pauseShowsResume ? Lang::btnResume() : Lang::windowPause());
    mPause->setToolTip(withKeys(mPause->text(), Command::Pause));
    mSplit->setVisible(!isIdle && !mRecorder.recordsMovie());
    const QString keys = mTriggers[isIdle ? 0 : 1];
    mKeys->setKeys(keys);
    mKeysText->setText(keys.isEmpty() ? QString()
                       : isIdle       ? Lang::windowStartsFromAnywhere()
                                      : Lang::windowStopsFromAnywhere());
    mKeysText->setFont(Look::font(*this, text_size::kLabel));
    setInk(*mKeysText, Look::tokens().text2);
    showTask();
    showNumbers();
}

void RecordDeck::showTask() {
    const QString name = mPanel.countdown().taskName;
    mTaskIcon->setVisible(!name.isEmpty());
    if (mTask->toolTip() != name)
        mTaskIcon->setPixmap(drawing(QStringLiteral("tasks"), Look::tokens().text2, Look::scaled(*this, measure::kIcon),
                                     devicePixelRatioF()));
    mTask->setFont(Look::font(*this, text_size::kSecondLine, QFont::Bold));
    mTask->setToolTip(name);
    mTask->setText(mTask->fontMetrics().elidedText(name, Qt::ElideMiddle, Look::scaled(*this, kTaskWidth)));
    mTaskStart->setText(mPanel.taskStartText());
    mTaskStart->setFont(Look::font(*this, text_size::kLabel));
    setInk(*mTaskStart, Look::tokens().text2);
}

void RecordDeck::start() { mRecorder.onStartRecording(); }

void RecordDeck::showTexts() {
    mSplit->setText(Lang::windowSplitNow());
    mSplit->setToolTip(withKeys(mSplit->text(), Command::Split));
}

void RecordDeck::begin() { mRecord->setFocus(Qt::OtherFocusReason); }

void RecordDeck::setTriggers(const std::array<QString, 3> &triggers) {
    mTriggers = triggers;
    showState();
}

void RecordDeck::showIcons() {
    for (QToolButton *button : {mPause, mSplit})
        button->setIconSize(QSize(1, 1) * Look::scaled(*this, kControlIcon));
    mPause->setIcon(icon(QStringLiteral("pause"), palette()));
    mSplit->setIcon(icon(QStringLiteral("split"), palette()));
}

void RecordDeck::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange)
        showIcons();
    Deck::changeEvent(event);
}

} // namespace cantorel::ui
