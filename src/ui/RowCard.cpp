#include "ui/RowCard.h"

#include "ui/look/Look.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>

namespace cantorel::ui {

namespace {

constexpr int kLineFrom = 16, kLowRow = 48;

} // namespace

CardRow::CardRow(QWidget *parent, int beside)
    : QWidget(parent),
      mBeside(beside),
      mGrid(new QGridLayout(this)),
      mTitle(new QLabel(this)),
      mSecond(new QLabel(this)) {
    mGrid->setContentsMargins(mBeside, measure::kGap - 1, mBeside, measure::kGap - 1);
    mGrid->setHorizontalSpacing(2 * measure::kGap);
    mGrid->setVerticalSpacing(measure::kGap / 2);
    mGrid->setColumnStretch(0, 1);
    auto *texts = new QVBoxLayout;
    texts->setSpacing(0);
    for (QLabel *label : {mTitle, mSecond}) {
        label->setWordWrap(true);
        texts->addWidget(label);
    }
    mSecond->setFont(Look::font(*this, text_size::kSecondLine));
    mSecond->setForegroundRole(QPalette::PlaceholderText);
    mGrid->addLayout(texts, 0, 0, Qt::AlignVCenter);
    setTexts({});
}

void CardRow::setTexts(const QString &title, const QString &second) {
    mTitle->setText(title);
    mSecond->setText(second);
    mSecond->setHidden(second.isEmpty());
    setMinimumHeight(Look::tall(*this, second.isEmpty() ? kLowRow : measure::kRow));
    for (QWidget *widget : {mControl, static_cast<QWidget *>(mSwitch)})
        if (widget)
            name(*widget);
}

void CardRow::name(QWidget &widget) const {
    widget.setAccessibleName(mTitle->text());
    widget.setAccessibleDescription(mSecond->text());
}

void CardRow::setControl(QWidget &control) {
    mControl = &control;
    mGrid->addWidget(mControl, 0, 1, Qt::AlignVCenter);
}

void CardRow::setSwitch(QCheckBox &choice) {
    mSwitch = &choice;
    mGrid->addWidget(mSwitch, 0, 2, Qt::AlignVCenter);
    QMargins margins = mGrid->contentsMargins(); // its edge is in line with that of other rows' controls
    margins.setRight(qMax(0, mBeside - measure::kRing));
    mGrid->setContentsMargins(margins);
}

void CardRow::setNarrow(bool isNarrow) {
    if (mControl)
        mGrid->addWidget(mControl, isNarrow ? 1 : 0, isNarrow ? 0 : 1,
                         isNarrow ? Qt::AlignLeft | Qt::AlignTop : Qt::Alignment(Qt::AlignVCenter));
}

void CardRow::mouseReleaseEvent(QMouseEvent *event) {
    if (mSwitch && rect().contains(event->pos()))
        mSwitch->click();
}

RowCard::RowCard(QWidget *parent) : QWidget(parent), mColumn(new QVBoxLayout(this)) {
    mColumn->setContentsMargins(1, 1, 1, 1); // the edge
    mColumn->setSpacing(1);                  // the hairlines
}

CardRow &RowCard::addRow() {
    mRows.push_back(new CardRow(this)); // which the layout's widget owns
    mColumn->addWidget(mRows.back());
    return *mRows.back();
}

void RowCard::setNarrow(bool isNarrow) {
    for (CardRow *row : mRows)
        row->setNarrow(isNarrow);
}

void RowCard::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Tokens &tokens = Look::tokens();
    painter.setPen(tokens.line);
    painter.setBrush(tokens.surface);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), measure::kCardRadius, measure::kCardRadius);
    for (const CardRow *row : mRows)
        if (row->isVisible() && row->y() > 1)
            painter.fillRect(QRect(kLineFrom, row->y() - 1, width() - kLineFrom - 1, 1), tokens.line);
}

} // namespace cantorel::ui
