#pragma once

#include "platform/desktop/Services.h"
#include "recording/control/RecorderPanel.h"
#include "recording/control/RecordingNotices.h"
#include "recording/library/RecordedList.h"

#include <QMainWindow>
#include <QPointer>

class QMessageBox;
class QTabWidget;
class QToolButton;

namespace cantorel {
class RecordingSession;
class ScheduledSession;
struct UpdateDescription;
} // namespace cantorel

namespace cantorel::ui {

class AlertAsker;
class LibraryTab;
class RecordingTab;
class SettingsWindow;
class StatusItem;
class TasksWindow;

// The window: the recording and the library tab, and the ways to everything else. Owned by the application.
class MainWindow : public QMainWindow, public RecordedListView {
    Q_OBJECT

public:
    // What the window shows and controls. All outlive it.
    struct Parts {
        RecorderPanel &panel;
        ScheduledSession &recorder;
        RecordingSession &session;
        RecordedList &list;
        TaskList &tasks;
        desktop::Services &desktop;
    };
    explicit MainWindow(const Parts &parts);
    ~MainWindow() override;

    void changeLanguageText();
    // A newer version; or, for a check by hand, that there is none or nobody answered.
    void offerUpdate(const UpdateDescription &description);
    void tellNoUpdate(bool isLatest);
    // Asks what shall become of what a crash left of recordings; nothing where there is none.
    void offerLeftovers();
    void bringToFront();
    // The same for whoever starts the program anew: what was about to end once all is converted stays.
    void showAgain();
    // Ends the program, and what is recorded, without asking.
    void stopAndQuit();
    // How the hot keys for start, stop and pause are pressed, where the desktop says so.
    void showTriggers(const std::array<QString, 3> &triggers);
    bool isRecording() const;
    bool isPrepareStartRecording() const;
    bool isSettled() const;
    void openPreferencesWindowAndShowRecordInterface();
    void setAudioInputSelectedStatus();
    // The status of an item has changed.
    void showStatuses();

    AlertAsker &alerts() { return *mAlerts; }
    // Made when they are first wanted; the library behind the first picture.
    LibraryTab &library();
    SettingsWindow &settings();
    TasksWindow &tasks();

Q_SIGNALS:
    // The person wants the program to end, and nothing is recorded or converted any more.
    void mayEnd();
    // The window has been painted for the first time. What need not be in the first picture begins now.
    void firstShown();
    // Those of the settings.
    void hotkeysChanged();
    // Whether there is a newer version shall be told in any case.
    void updatesWanted();

private:
    void recordedListDidChange() override;
    void showPanel();
    void listen();
    void makeMenu();
    void showShutdown(int seconds);
    void showAbout();
    void recoverLeftovers();
    void askBeforeDiscarding();
    void showIcons();
    void showTexts();
    void showOrHide();
    // The person wants the program to end.
    void leave();
    void askToPlay(const QString &file);
    void askToLeave(const QString &why, const QString &stay, const QString &quit);
    void stayHidden();
    // What stands for the hidden window while it records, where there is no tray, is seen or has gone.
    void signDidChange(bool isThere);
    void endOnceSettled();
    void complete();
    StatusItem &statusItem();
    bool event(QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

    Parts mParts;
    std::unique_ptr<AlertAsker> mAlerts;
    QTabWidget *mTabs;
    QToolButton *mMenuButton;
    QAction *mTasksAction, *mSettingsAction, *mUpdateAction, *mAboutAction, *mQuitAction;
    RecordingTab *mRecordingTab;
    QWidget *mLibraryPage;
    LibraryTab *mLibraryTab = nullptr;
    SettingsWindow *mSettings = nullptr;
    TasksWindow *mTasks = nullptr;
    std::array<QString, 3> mTriggers;
    std::unique_ptr<StatusItem> mStatusItem;
    RecordingNotices mNotices;
    QPointer<QMessageBox> mShutdown; // counts down to it
    bool mWasPainted = false;
    bool mIsLeaving = false;
    bool mHasSign = false; // or asks for it
    bool mHasToldOfWaiting = false;
};

} // namespace cantorel::ui
