#include "ui/Pill.h"

#include "lang/Lang.h"
#include "ui/DigitLabel.h"
#include "ui/Icons.h"
#include "ui/WindowKeys.h"
#include "ui/look/Look.h"

#include <QBoxLayout>
#include <QEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QToolButton>

#include <utility>

namespace cantorel::ui {

namespace {

constexpr int kDot = 8, kBeside = 14, kHeight = 34;
constexpr int kCome = 120; // milliseconds

} // namespace

Pill::Pill(QWidget *parent)
    : QWidget(parent), mTime(new DigitLabel(this)), mPause(new QToolButton(this)), mStop(new QToolButton(this)) {
    setFocusPolicy(Qt::StrongFocus);
    setFixedHeight(Look::tall(*this, kHeight));
    setObjectName(QStringLiteral("pill"));
    mPause->setObjectName(QStringLiteral("pillPause"));
    mStop->setObjectName(QStringLiteral("pillStop"));
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(kBeside + kDot + measure::kGap, 0, measure::kGap, 0);
    row->setSpacing(measure::kGap / 2);
    row->addWidget(mTime);
    for (QToolButton *button : {mPause, mStop}) {
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::StrongFocus);
        row->addWidget(button);
    }
    mComing.setStartValue(0.0);
    mComing.setEndValue(1.0);
    mComing.setEasingCurve(QEasingCurve::OutCubic);
    connect(&mComing, &QVariantAnimation::valueChanged, this, [this] { uncover(); });
    connect(&mComing, &QVariantAnimation::finished, this, [this] { clearMask(); });
    connect(mPause, &QToolButton::clicked, this, &Pill::paused);
    connect(mStop, &QToolButton::clicked, this, &Pill::stopped);
    showIcons();
    showTexts();
    hide();
}

void Pill::tell(const QString &time, bool isPaused) {
    mTime->setText(time);
    setAccessibleName(Lang::tabRecordStatusRecording() + QStringLiteral(", ") + time);
    if (std::exchange(mIsPaused, isPaused) != isPaused) {
        showIcons();
        showTexts();
        update();
    }
}

void Pill::setInSight(bool isInSight) {
    setVisible(isInSight);
    if (std::exchange(mIsInSight, isInSight) == isInSight)
        return;
    mComing.stop();
    mComing.setDuration(Look::hasMotion() && window()->isVisible() ? kCome : 0);
    clearMask();
    if (!isInSight || mComing.duration() == 0)
        return;
    mComing.start();
    uncover();
}

// It takes its place from the start, so that nothing beside it moves.
void Pill::uncover() {
    const int hidden = qRound((1 - mComing.currentValue().toReal()) * width());
    setMask(QRegion(hidden, 0, qMax(1, width() - hidden), height()));
}

void Pill::setPauseEnabled(bool isEnabled) { mPause->setEnabled(isEnabled); }

void Pill::setNarrow(bool isNarrow) { mPause->setHidden(isNarrow); }

void Pill::showTexts() {
    const QString pause = mIsPaused ? Lang::btnResume() : Lang::windowPause();
    mPause->setToolTip(withKeys(pause, Command::Pause));
    mPause->setAccessibleName(pause);
    mStop->setToolTip(withKeys(Lang::btnStop(), Command::Record));
    mStop->setAccessibleName(Lang::btnStop());
    setToolTip(Lang::windowRecord());
}

void Pill::showIcons() {
    mPause->setIcon(icon(mIsPaused ? QStringLiteral("play") : QStringLiteral("pause"), palette()));
    mStop->setIcon(icon(QStringLiteral("stop"), palette()));
}

void Pill::paintEvent(QPaintEvent *) {
    const Tokens &tokens = Look::tokens();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF place = QRectF(rect()).adjusted(1, 1, -1, -1);
    painter.setPen(hasFocus() ? QPen(tokens.focus, measure::kFocus)
                              : QPen(mIsPaused ? tokens.amber : tokens.redFill, 1.5));
    painter.setBrush(tokens.surface);
    painter.drawRoundedRect(place, place.height() / 2, place.height() / 2);
    painter.setPen(Qt::NoPen);
    painter.setBrush(mIsPaused ? tokens.amber : tokens.red);
    painter.drawEllipse(QRectF(kBeside, (height() - kDot) / 2.0, kDot, kDot));
}

void Pill::mouseReleaseEvent(QMouseEvent *) { Q_EMIT shown(); }

void Pill::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter || event->key() == Qt::Key_Space)
        Q_EMIT shown();
    else
        QWidget::keyPressEvent(event);
}

void Pill::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange)
        showIcons();
    if (event->type() == QEvent::LanguageChange)
        showTexts();
    QWidget::changeEvent(event);
}

} // namespace cantorel::ui
