#include "ui/Regions.h"

#include "ui/Deck.h"
#include "ui/PageHeader.h"
#include "ui/PagePanel.h"
#include "ui/Pill.h"
#include "ui/Strip.h"

#include <QAbstractButton>
#include <QButtonGroup>

namespace cantorel::ui {

namespace {

// Whatever stands in none of the others is the page.
enum class Region { Header, Page, Strip, Panel, Deck };

Region regionOf(const QWidget *widget) {
    for (; widget; widget = widget->parentWidget()) {
        if (dynamic_cast<const PageHeader *>(widget) || qobject_cast<const Pill *>(widget)
            || widget->objectName() == QLatin1String("corner")
            || widget->objectName() == QLatin1String("qt_tabwidget_tabbar"))
            return Region::Header;
        if (qobject_cast<const Strip *>(widget))
            return Region::Strip;
        if (dynamic_cast<const PagePanel *>(widget))
            return Region::Panel;
        if (dynamic_cast<const Deck *>(widget))
            return Region::Deck;
    }
    return Region::Page;
}

bool takesFocus(const QWidget &widget) {
    // Of several choices the chosen one.
    const auto *button = qobject_cast<const QAbstractButton *>(&widget);
    const bool isOther = button && button->group() && button->group()->exclusive() && !button->isChecked();
    return widget.isVisible() && widget.isEnabled() && (widget.focusPolicy() & Qt::TabFocus) == Qt::TabFocus
           && !widget.focusProxy() && !isOther;
}

} // namespace

void focusNextRegion(QWidget &window) {
    QWidget *from = window.focusWidget() ? window.focusWidget() : &window;
    const Region region = regionOf(from);
    for (QWidget *next = from->nextInFocusChain(); next != from; next = next->nextInFocusChain())
        if (takesFocus(*next) && regionOf(next) != region) {
            next->setFocus(Qt::TabFocusReason);
            return;
        }
}

} // namespace cantorel::ui
