#include "editor/views/ZQAudioCutInfoView.h"

#include "ui/look/Look.h"

#include <QBoxLayout>
#include <QEvent>
#include <QLabel>
#include <QPushButton>

#include <algorithm>
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
      mFind(new QPushButton(this)),
      mRow(new QHBoxLayout(this)),
      mFields(new QHBoxLayout(mFieldBox)),
      mButtons(new QHBoxLayout) {
    mStart->setObjectName(QStringLiteral("startTime"));
    mEnd->setObjectName(QStringLiteral("endTime"));
    mAdd->setObjectName(QStringLiteral("addCut"));
    mDelete->setObjectName(QStringLiteral("deleteCut"));
    mClear->setObjectName(QStringLiteral("clearCuts"));
    mFind->setObjectName(QStringLiteral("findCuts"));
    mFields->setContentsMargins({});
    mFields->setSpacing(measure::kMargin);
    const auto addField = [this](QLabel &label, ZQAudioTimeView &field) {
        label.setFont(Look::font(*this, text_size::kLabel));
        label.setForegroundRole(QPalette::PlaceholderText);
        label.setBuddy(&field);
        auto *column = new QVBoxLayout;
        column->setSpacing(measure::kGap / 2);
        column->addStretch();
        column->addWidget(&label);
        column->addWidget(&field);
        column->addStretch();
        mFields->addLayout(column);
        field.delegate = this;
    };
    addField(*mStartLabel, *mStart);
    addField(*mEndLabel, *mEnd);
    mDelete->setFlat(true);
    mClear->setFlat(true);
    mFind->setFlat(true);
    mButtons->setSpacing(measure::kGap);
    for (QPushButton *button : {mAdd, mDelete, mClear, mFind})
        mButtons->addWidget(button, 0, Qt::AlignLeft);
    mButtons->addStretch();
    mRow->setContentsMargins({});
    mRow->setSizeConstraint(QLayout::SetNoConstraint);
    mRow->setSpacing(measure::kMargin);
    mRow->addWidget(mLead);
    mRow->addWidget(mFieldBox, 0, Qt::AlignLeft);
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

QSize ZQAudioCutInfoView::minimumSizeHint() const {
    int width = std::max(mLead->minimumSizeHint().width(), mStart->sizeHint().width());
    for (const QPushButton *button : {mAdd, mDelete, mClear, mFind})
        width = std::max(width, button->sizeHint().width());
    return {width, mRow->minimumSize().height()};
}

// Buttons go below the fields where there is no room beside them, then below each other, and so do the fields.
void ZQAudioCutInfoView::fit() {
    const int fields = 2 * mStart->sizeHint().width() + measure::kMargin;
    int buttons = 0;
    for (const QPushButton *button : {mAdd, mDelete, mClear, mFind})
        buttons += button->sizeHint().width() + measure::kGap;
    const auto turn = [this](QBoxLayout &layout, bool isRow) {
        const auto wanted = isRow ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom;
        if (layout.direction() == wanted)
            return;
        layout.setDirection(wanted);
        updateGeometry();
    };
    turn(*mFields, fields <= width());
    turn(*mButtons, buttons <= width());
    turn(*mRow, mLead->sizeHint().width() + fields + buttons + 2 * measure::kMargin <= width());
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
