#pragma once

#include <QMenu>

class QToolButton;

namespace cantorel::ui {

enum class Command;

// The menu of the whole window, and the button it hangs at. Owned by the main window.
class WindowMenu : public QMenu {
    Q_OBJECT

public:
    explicit WindowMenu(QWidget *window);

    QToolButton &button() { return *mButton; }
    // Of a command that stands in the menu; else null.
    QAction *actionOf(Command command) const;
    void showTexts();
    // In the colours of the window: a menu hears later of new ones, its button sooner.
    void showIcons(const QPalette &palette);
    // Also from a page, where the button is not shown: at its right edge.
    void open(const QWidget &page);

Q_SIGNALS:
    void tasksWanted();
    void settingsWanted();
    void updatesWanted();
    void quitWanted();

private:
    void showAbout();

    QToolButton *mButton;
    QAction *mTasks, *mSettings, *mUpdates, *mAbout, *mQuit;
};

} // namespace cantorel::ui
