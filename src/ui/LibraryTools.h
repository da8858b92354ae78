#pragma once

#include <QString>
#include <QWidget>

class QAction;
class QLineEdit;
class QToolButton;

namespace cantorel::ui {

// Above the list: its search, and what can be done with what is chosen. Owned by the library tab.
class LibraryTools : public QWidget {
    Q_OBJECT

public:
    explicit LibraryTools(QWidget *parent);

    QLineEdit &search() { return *mSearch; }
    void showEdit(bool isShown);
    void showConvert(bool isShown);
    void showReveal(bool isShown);
    void setDetailsShown(bool areShown);
    // Within that width; in a narrow window the tools are their icons.
    void fit(int width);

Q_SIGNALS:
    void addWanted();
    void editWanted();
    void convertWanted();
    void revealWanted();
    void detailsWanted();

private:
    QToolButton *addTool(const char *name, void (LibraryTools::*wanted)());
    void showIcons();
    void showTexts();
    void changeEvent(QEvent *event) override;

    QLineEdit *mSearch;
    QAction *mGlass, *mClearSearch;
    QToolButton *mAdd, *mEdit, *mConvert, *mReveal, *mDetails;
    int mRoom = QWIDGETSIZE_MAX;
};

} // namespace cantorel::ui
