#pragma once

#include <QList>
#include <QWidget>

class QHBoxLayout;
class QLabel;
class QToolButton;

namespace cantorel::ui {

// The top of a page: back arrow, title, at the right what can be done and the running recording.
class PageHeader : public QWidget {
public:
    explicit PageHeader(QWidget *parent);

    QToolButton &back() { return *mBack; }
    void setTitle(const QString &title);
    QToolButton &addAction(const QString &objectName);
    void showActions(bool areShown);
    void takePill(QWidget &pill);
    void showTexts();

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool event(QEvent *event) override;

private:
    void fit();
    void showIcons();

    QHBoxLayout *mRow;
    QToolButton *mBack;
    QLabel *mTitle;
    QString mWhole; // the title
    QWidget *mActionBox;
    QList<QToolButton *> mActions;
};

} // namespace cantorel::ui
