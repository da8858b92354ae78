#pragma once

#include "recording/RecorderPanel.h"

#include <QMainWindow>

class QTabWidget;
class QToolButton;

namespace cantorel {
class RecordedList;
class RecordingSession;
class ScheduledSession;
} // namespace cantorel

namespace cantorel::ui {

class RecordingTab;

// The window: the recording and the library tab, and the ways to everything else. Owned by the application.
class MainWindow : public QMainWindow {
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

private:
    void listen();
    void showIcons();
    void changeEvent(QEvent *event) override;

    Parts mParts;
    QTabWidget *mTabs;
    RecordingTab *mRecordingTab;
};

} // namespace cantorel::ui
