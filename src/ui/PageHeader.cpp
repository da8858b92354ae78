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
    mWhole = title;
    mTitle->setAccessibleName(title);
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

// Words of actions give way where there is no room for them, then the middle of the title.
void PageHeader::fit() {
    const QMargins margins = mRow->contentsMargins();
    int room = width() - margins.left() - margins.right();
    for (int i = 0; i < mRow->count(); ++i)
        if (const QWidget *widget = mRow->itemAt(i)->widget();
            widget && widget != mActionBox && widget != mTitle && !widget->isHidden())
            room -= widget->sizeHint().width() + 2 * measure::kGap;
    int icons = 0, words = 0;
    for (const QToolButton *action : mActions)
        if (!action->isHidden() && !mActionBox->isHidden()) {
            icons += qMax(Look::tall(*this, measure::kTarget), action->iconSize().width()) + measure::kGap;
            words += action->fontMetrics().horizontalAdvance(action->text()) + 4 * measure::kGap;
        }
    const QFontMetrics metrics(mTitle->font());
    const bool hasRoom = metrics.horizontalAdvance(mWhole) + icons + words <= room;
    mTitle->setText(metrics.elidedText(mWhole, Qt::ElideMiddle, room - icons - (hasRoom ? words : 0)));
    mTitle->setToolTip(mTitle->text() == mWhole ? QString() : mWhole);
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
