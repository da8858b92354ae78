#pragma once

#include <QStackedWidget>

class QBoxLayout;

namespace cantorel::ui {

class Page;
class Pill;

// The tabs, and in their place a page while one is open. The running recording stands in the header of what is shown.
// Owned by the main window.
class PageStack : public QStackedWidget {
public:
    // corner: beside the tabs, where the pill stands first. Both outlive the stack.
    PageStack(QWidget &home, QBoxLayout &corner, Pill &pill, QWidget *parent);

    void open(Page &page);
    // Back to the tabs, with the focus where it was.
    void close();
    // The page that is open; null while the tabs are shown.
    Page *page() const;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    QWidget &mHome;
    QBoxLayout &mCorner;
    Pill &mPill;
};

} // namespace cantorel::ui
