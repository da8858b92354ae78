#include "ui/Page.h"

#include "ui/PageHeader.h"
#include "ui/PagePanel.h"
#include "ui/look/Look.h"

#include <QBoxLayout>
#include <QEvent>
#include <QToolButton>

namespace cantorel::ui {

namespace {

constexpr int kRoomForPanel = 880; // width of a page that shows one beside its content

} // namespace

Page::Page(QWidget *parent) : QWidget(parent), mHeader(new PageHeader(this)), mBody(new QHBoxLayout) {
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(0);
    column->addWidget(mHeader);
    column->addLayout(mBody, 1);
    mBody->setSpacing(0);
    connect(&mHeader->back(), &QToolButton::clicked, this, &Page::goBack);
}

void Page::setTitle(const QString &title) {
    mTitle = title;
    fit();
}

QToolButton &Page::addAction(const QString &objectName) { return mHeader->addAction(objectName); }

void Page::setContent(QWidget &content) {
    mContent = &content;
    mBody->insertWidget(0, mContent, 1);
}

void Page::setPanel(PagePanel &panel) {
    mPanel = &panel;
    mBody->addWidget(mPanel);
    connect(mPanel, &QWidget::windowTitleChanged, this, &Page::fit);
}

void Page::takePill(QWidget &pill) { mHeader->takePill(pill); }

void Page::takeStrip(QWidget &strip) { layout()->addWidget(&strip); }

void Page::openPanel() {
    if (mPanel->isHidden())
        mBeforePanel = focusWidget();
    mPanel->show();
    fit();
}

void Page::closePanel() {
    mPanel->hide();
    fit();
    if (mBeforePanel && mBeforePanel->isVisible())
        mBeforePanel->setFocus(Qt::OtherFocusReason);
    else
        begin();
    Q_EMIT panelClosed();
}

void Page::goBack() {
    if (mPanel && !mPanel->isHidden())
        closePanel();
    else
        Q_EMIT closed();
}

void Page::begin() { mHeader->back().setFocus(Qt::OtherFocusReason); }

void Page::fit() {
    const bool isCovered = mPanel && !mPanel->isHidden() && width() < Look::scaled(*this, kRoomForPanel);
    if (mPanel)
        mPanel->setCovering(isCovered);
    if (mContent)
        mContent->setHidden(isCovered);
    mHeader->setTitle(isCovered ? mPanel->title() : mTitle);
    mHeader->showActions(!isCovered);
}

void Page::resizeEvent(QResizeEvent *event) {
    fit();
    QWidget::resizeEvent(event);
}

void Page::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange)
        showIcons();
    if (event->type() == QEvent::LanguageChange)
        showTexts();
    QWidget::changeEvent(event);
}

} // namespace cantorel::ui
