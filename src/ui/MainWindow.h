#pragma once

#include "recording/RecordedList.h"
#include "recording/RecorderPanel.h"

#include <QMainWindow>

class QTabWidget;
class QToolButton;

namespace cantorel {
class RecordingSession;
class ScheduledSession;
} // namespace cantorel

namespace cantorel::ui {

class LibraryTab;
class RecordingTab;

// The window: the recording and the library tab, and the ways to everything else. Owned by the application.
class MainWindow : public QMainWindow, public RecordedListView {
public:
    // What the window shows and controls. All outlive it.
    struct Parts {
        RecorderPanel &panel;
        ScheduledSession &recorder;
        RecordingSession &session;
        RecordedList &list;
    };
    explicit MainWindow(const Parts &parts);
    ~MainWindow() override;

    void changeLanguageText();
    LibraryTab &library() { return *mLibraryTab; }

private:
    void recordedListDidChange() override;
    void showPanel();
    void listen();
    void showIcons();
    void changeEvent(QEvent *event) override;

    Parts mParts;
    QTabWidget *mTabs;
    RecordingTab *mRecordingTab;
    LibraryTab *mLibraryTab;
};

} // namespace cantorel::ui
