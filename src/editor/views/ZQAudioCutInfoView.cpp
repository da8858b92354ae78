#include "editor/views/ZQAudioCutInfoView.h"

#include "ui/look/Look.h"

#include <QBoxLayout>
#include <QEvent>
#include <QLabel>
#include <QPushButton>

#include <cstring>

namespace cantorel::ui {

ZQAudioCutInfoView::ZQAudioCutInfoView(AudioCutInfoDelegate &infoDelegate, QWidget *lead, QWidget *parent)
    : QWidget(parent),
      mInfoDelegate(infoDelegate),
      mLead(lead),
      mFieldBox(new QWidget(this)),
      mStartLabel(new QLabel(mFieldBox)),
      mEndLabel(new QLabel(mFieldBox)),
      mStart(new ZQAudioTimeView(mFieldBox)),
      mEnd(new ZQAudioTimeView(mFieldBox)),
      mAdd(new QPushButton(this)),
      mDelete(new QPushButton(this)),
      mClear(new QPushButton(this)),
      mRow(new QHBoxLayout(this)),
      mFields(new QHBoxLayout(mFieldBox)),
      mButtons(new QHBoxLayout) {
    mStart->setObjectName(QStringLiteral("startTime"));
    mEnd->setObjectName(QStringLiteral("endTime"));
    mAdd->setObjectName(QStringLiteral("addCut"));
    mDelete->setObjectName(QStringLiteral("deleteCut"));
    mClear->setObjectName(QStringLiteral("clearCuts"));
    mFields->setContentsMargins({});
    mFields->setSpacing(measure::kMargin);
    const auto addField = [this](QLabel &label, ZQAudioTimeView &field) {
        label.setFont(Look::font(*this, text_size::kLabel));
        label.setForegroundRole(QPalette::PlaceholderText);
        label.setBuddy(&field);
        auto *column = new QVBoxLayout;
        column->setSpacing(measure::kGap / 2);
        column->addWidget(&label);
        column->addWidget(&field);
        mFields->addLayout(column);
        field.delegate = this;
    };
    addField(*mStartLabel, *mStart);
    addField(*mEndLabel, *mEnd);
    mDelete->setFlat(true);
    mClear->setFlat(true);
    mButtons->setSpacing(measure::kGap);
    for (QPushButton *button : {mAdd, mDelete, mClear})
        mButtons->addWidget(button);
    mRow->setContentsMargins({});
    mRow->setSpacing(measure::kMargin);
    mRow->addWidget(mLead);
    mRow->addWidget(mFieldBox);
    mRow->addStretch();
    mRow->addLayout(mButtons);
    mRectDidChange = foundation::NotificationCenter::defaultCenter().subscribe<const ZQAudioCutEntity *>(
        kNotificationCutEntityRectDidChangeRegister, [this](const ZQAudioCutEntity *const &entity) {
            showCutAudioInfoWithStartTime(entity->startTime(), entity->endTime());
        });
}

void ZQAudioCutInfoView::showCutAudioInfoWithStartTime(double startTime, double endTime) {
    mStart->setTime(startTime, mMinTimeValue, endTime);
    mEnd->setTime(endTime, startTime, mMaxTimeValue);
}

void ZQAudioCutInfoView::setTimeControlID(const char *id, double CurrentValue, double minTime, double maxTime) {
    (std::strcmp(id, kStartTimeControl) == 0 ? mStart : mEnd)->setTime(CurrentValue, minTime, maxTime);
}

void ZQAudioCutInfoView::setClearButtonEnable(bool isEnabled) { mClear->setEnabled(isEnabled); }

void ZQAudioCutInfoView::setcutAreaTimeControllerEnable(bool isEnabled) {
    mStart->setEnable(isEnabled);
    mEnd->setEnable(isEnabled);
}

void ZQAudioCutInfoView::setAddCutAreaFunctionEnable(bool isEnabled) { mAdd->setEnabled(isEnabled); }

void ZQAudioCutInfoView::setDeleteAreaFunctionEnable(bool isEnabled) { mDelete->setEnabled(isEnabled); }

void ZQAudioCutInfoView::AudioTime_UpdateTime(ZQAudioTimeView &view, double) {
    mInfoDelegate.AudioCutInfoDelegate_UpdateSelectedCutEntityStartTime(
        mStart->time(), mEnd->time(), &view == mStart ? kStartTimeControl : kEndTimeControl);
}

void ZQAudioCutInfoView::showTexts(const QString &start, const QString &end) {
    mStartLabel->setText(start);
    mEndLabel->setText(end);
    mStart->setAccessibleName(start);
    mEnd->setAccessibleName(end);
    fit();
}

// Buttons go below the fields where there is no room beside them, then below each other, and so do the fields.
void ZQAudioCutInfoView::fit() {
    using Direction = QBoxLayout::Direction;
    const int room = width();
    mFields->setDirection(Direction::LeftToRight);
    mButtons->setDirection(Direction::LeftToRight);
    const int fields = mFieldBox->sizeHint().width(), buttons = mButtons->sizeHint().width();
    if (fields > room)
        mFields->setDirection(Direction::TopToBottom);
    if (buttons > room)
        mButtons->setDirection(Direction::TopToBottom);
    const bool isRow = mLead->sizeHint().width() + fields + buttons + 2 * measure::kMargin <= room;
    mRow->setDirection(isRow ? Direction::LeftToRight : Direction::TopToBottom);
    mRow->setSpacing(isRow ? measure::kMargin : measure::kGap);
}

void ZQAudioCutInfoView::resizeEvent(QResizeEvent *event) {
    fit();
    QWidget::resizeEvent(event);
}

bool ZQAudioCutInfoView::event(QEvent *event) {
    if (event->type() == QEvent::LayoutRequest)
        fit();
    return QWidget::event(event);
}

} // namespace cantorel::ui
