#include "ui/PagePanel.h"

#include "ui/look/Look.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QScrollArea>

namespace cantorel::ui {

namespace {

constexpr int kWidth = 304, kWideWidth = 440;

} // namespace

PagePanel::PagePanel(QWidget *parent) : QWidget(parent), mTitle(new QLabel(this)), mForm(new QWidget) {
    mTitle->setFont(Look::font(*this, text_size::kTitle, QFont::Bold));
    mTitle->setWordWrap(true);
    auto *scrolled = new QScrollArea(this);
    scrolled->setFrameShape(QFrame::NoFrame);
    scrolled->setWidgetResizable(true);
    scrolled->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrolled->setFocusPolicy(Qt::NoFocus);
    mFields = new QVBoxLayout(mForm);
    mFields->setContentsMargins(measure::kMargin, measure::kGap, measure::kMargin, 2 * measure::kGap);
    mFields->setSpacing(measure::kGap / 2);
    scrolled->setWidget(mForm); // which it owns now
    mNotes = new QVBoxLayout;
    mNotes->setContentsMargins(measure::kMargin, measure::kGap, measure::kMargin, 0);
    mNotes->setSpacing(measure::kGap / 2);
    mButtons = new QHBoxLayout;
    mButtons->setSpacing(measure::kGap);
    mButtons->setContentsMargins(measure::kMargin, measure::kGap, measure::kMargin, 2 * measure::kGap);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(0);
    mTitle->setContentsMargins(measure::kMargin, 2 * measure::kGap, measure::kMargin, measure::kGap);
    column->addWidget(mTitle);
    column->addWidget(scrolled, 1);
    column->addLayout(mNotes);
    column->addLayout(mButtons);
    setCovering(false);
    hide();
}

void PagePanel::setTitle(const QString &title) {
    mTitle->setText(title);
    setWindowTitle(title); // which tells whoever shows it
}

QString PagePanel::title() const { return mTitle->text(); }

QLabel &PagePanel::addField(QWidget &field) {
    auto *label = new QLabel(this);
    label->setFont(Look::font(*this, text_size::kLabel));
    label->setForegroundRole(QPalette::PlaceholderText);
    label->setBuddy(&field);
    label->setWordWrap(true);
    mFields->addWidget(label);
    mFields->addWidget(&field);
    mFields->addSpacing(measure::kGap);
    return *label;
}

void PagePanel::setWide(bool isWide) {
    mIsWide = isWide;
    setCovering(mIsCovering);
}

void PagePanel::setCovering(bool isCovering) {
    mIsCovering = isCovering;
    mTitle->setHidden(isCovering);
    const int line = isCovering ? 0 : 1; // beside what lies in it
    layout()->setContentsMargins(isLeftToRight() ? line : 0, 0, isLeftToRight() ? 0 : line, 0);
    const int width = qMax(Look::scaled(*this, mIsWide ? kWideWidth : kWidth),
                           qMax(mForm->minimumSizeHint().width(), mButtons->minimumSize().width()));
    setMinimumWidth(isCovering ? 0 : width);
    setMaximumWidth(isCovering ? QWIDGETSIZE_MAX : width);
}

void PagePanel::paintEvent(QPaintEvent *) {
    if (!mIsCovering)
        QPainter(this).fillRect(layoutDirection() == Qt::RightToLeft ? width() - 1 : 0, 0, 1, height(),
                                Look::tokens().line);
}

} // namespace cantorel::ui
