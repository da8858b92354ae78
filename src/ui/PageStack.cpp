#include "ui/PageStack.h"

#include "ui/Page.h"
#include "ui/Pill.h"
#include "ui/look/Look.h"

#include <QBoxLayout>

namespace cantorel::ui {

namespace {

constexpr int kRoomForPause = 600; // width of a window whose pill has a pause button

} // namespace

PageStack::PageStack(QWidget &home, QBoxLayout &corner, Pill &pill, QWidget *parent)
    : QStackedWidget(parent), mHome(home), mCorner(corner), mPill(pill) {
    addWidget(&mHome);
}

Page *PageStack::page() const { return qobject_cast<Page *>(currentWidget()); }

void PageStack::open(Page &page) {
    if (currentWidget() == &page)
        return;
    if (indexOf(&page) < 0) {
        addWidget(&page);
        connect(&page, &Page::closed, this, &PageStack::close);
    }
    page.takePill(mPill);
    setCurrentWidget(&page);
    page.begin();
}

void PageStack::close() {
    if (currentWidget() == &mHome)
        return;
    mCorner.insertWidget(0, &mPill);
    setCurrentWidget(&mHome); // which has kept the place of its focus
}

void PageStack::resizeEvent(QResizeEvent *event) {
    mPill.setNarrow(width() < Look::scaled(*this, kRoomForPause));
    QStackedWidget::resizeEvent(event);
}

} // namespace cantorel::ui
