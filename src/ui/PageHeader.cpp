#include "ui/PageHeader.h"

#include "lang/Lang.h"
#include "ui/Icons.h"
#include "ui/WindowKeys.h"
#include "ui/look/Look.h"

#include <QBoxLayout>
#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QToolButton>

namespace cantorel::ui {

PageHeader::PageHeader(QWidget *parent)
    : QWidget(parent),
      mRow(new QHBoxLayout(this)),
      mBack(new QToolButton(this)),
      mTitle(new QLabel(this)),
      mActionBox(new QWidget(this)) {
    setMinimumHeight(Look::tall(*this, measure::kHeader));
    mRow->setContentsMargins(measure::kMargin - measure::kGap, 0, measure::kMargin - measure::kGap, 0);
    mBack->setAutoRaise(true);
    mBack->setFocusPolicy(Qt::StrongFocus);
    mBack->setObjectName(QStringLiteral("back"));
    mTitle->setFont(Look::font(*this, text_size::kTitle, QFont::Bold));
    mTitle->setObjectName(QStringLiteral("title"));
    mRow->addWidget(mBack);
    mRow->addSpacing(measure::kGap);
    mRow->addWidget(mTitle);
    mRow->addStretch();
    (new QHBoxLayout(mActionBox))->setContentsMargins({});
    mRow->addWidget(mActionBox);
    showIcons();
    showTexts();
}

void PageHeader::setTitle(const QString &title) {
    mTitle->setText(title);
    fit();
}

QToolButton &PageHeader::addAction(const QString &objectName) {
    auto *button = new QToolButton(mActionBox);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::StrongFocus);
    button->setObjectName(objectName);
    mActionBox->layout()->addWidget(button);
    mActions << button;
    return *button;
}

void PageHeader::showActions(bool areShown) { mActionBox->setVisible(areShown); }

void PageHeader::takePill(QWidget &pill) { mRow->addWidget(&pill); }

// Words give way where there is no room for them.
void PageHeader::fit() {
    const QMargins margins = mRow->contentsMargins();
    int needed = margins.left() + margins.right();
    for (int i = 0; i < mRow->count(); ++i)
        if (const QWidget *widget = mRow->itemAt(i)->widget(); widget && widget != mActionBox && !widget->isHidden())
            needed += widget->sizeHint().width() + 2 * measure::kGap;
    for (const QToolButton *action : mActions)
        if (!action->isHidden())
            needed += action->fontMetrics().horizontalAdvance(action->text()) + action->iconSize().width()
                      + 5 * measure::kGap;
    const bool hasRoom = needed <= width();
    for (QToolButton *button : mActions) {
        button->setToolButtonStyle(hasRoom ? Qt::ToolButtonTextBesideIcon : Qt::ToolButtonIconOnly);
        button->setToolTip(hasRoom ? QString() : button->text());
    }
}

void PageHeader::showTexts() {
    mBack->setAccessibleName(Lang::windowBack());
    mBack->setToolTip(withKeys(Lang::windowBack(), Command::Back));
}

void PageHeader::showIcons() {
    mBack->setIconSize(QSize(1, 1) * Look::scaled(*this, measure::kIcon));
    mBack->setIcon(icon(QStringLiteral("back"), palette()));
}

void PageHeader::paintEvent(QPaintEvent *) {
    QPainter(this).fillRect(0, height() - 1, width(), 1, Look::tokens().line);
}

void PageHeader::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange)
        showIcons();
    if (event->type() == QEvent::LanguageChange)
        showTexts();
    QWidget::changeEvent(event);
}

void PageHeader::resizeEvent(QResizeEvent *event) {
    fit();
    QWidget::resizeEvent(event);
}

bool PageHeader::event(QEvent *event) {
    if (event->type() == QEvent::LayoutRequest) // a text is another, or the pill has come
        fit();
    return QWidget::event(event);
}

} // namespace cantorel::ui
