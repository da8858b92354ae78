#pragma once

#include <QMenu>
#include <QSystemTrayIcon>

#include <functional>

namespace cantorel {
class RecorderPanel;
}

namespace cantorel::ui {

// The recorder in the desktop's tray, where there is one: whether it records, for how long, and the controls. Owned by
// the main window.
class StatusItem : public QObject {
public:
    // What its menu and a click on it do. All are set.
    struct Actions {
        std::function<void()> showWindow, showOrHide, record, pause, split, quit;
    };
    StatusItem(RecorderPanel &panel, Actions actions);
    ~StatusItem() override;

    // Whether the desktop shows it.
    bool isThere() const { return QSystemTrayIcon::isSystemTrayAvailable() && mItem.isVisible(); }
    void showPanel();
    void showTexts();
    void notify(const QString &title, const QString &text);

private:
    RecorderPanel &mPanel;
    const Actions mActions;
    QMenu mMenu;
    QSystemTrayIcon mItem;
    QAction *mShow, *mRecord, *mPause, *mSplit, *mQuit;
    QIcon mIdle, mRecording, mWaiting;
};

} // namespace cantorel::ui
