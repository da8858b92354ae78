#pragma once

#include <QPointer>
#include <QWidget>

class QBoxLayout;
class QToolButton;

namespace cantorel::ui {

class PageHeader;
class PagePanel;

// A page that takes the place of the tabs: a header with the way back, a title and what can be done, and below it the
// content. A panel may open beside the content; where the page is narrow it covers the content.
class Page : public QWidget {
    Q_OBJECT

public:
    explicit Page(QWidget *parent);

    void setTitle(const QString &title);
    // A button in the header, with a word where there is room for it.
    QToolButton &addAction(const QString &objectName);
    void setContent(QWidget &content);
    void setPanel(PagePanel &panel);
    // The strip of what goes on elsewhere stands at the bottom.
    void takeStrip(QWidget &strip);
    // The running recording stands in the header of the page that is shown.
    void takePill(QWidget &pill);

    void openPanel();
    // The focus goes back to where it was.
    void closePanel();
    // Closes what is open on the page, else the page.
    void goBack();
    // To the next or previous of the page's own pages.
    virtual void turn(int /*step*/) {}
    // The page is shown: the focus goes to where one begins.
    virtual void begin();

Q_SIGNALS:
    void closed();
    void panelClosed();

protected:
    // The colours, or the language, have changed.
    virtual void showIcons() = 0;
    virtual void showTexts() = 0;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void fit();

    PageHeader *mHeader;
    QBoxLayout *mBody;
    QWidget *mContent = nullptr;
    PagePanel *mPanel = nullptr;
    QPointer<QWidget> mBeforePanel; // had the focus
    QString mTitle;
};

} // namespace cantorel::ui
