#pragma once

#include "platform/desktop/Services.h"
#include "platform/foundation/Clock.h"
#include "recording/control/RecorderPanel.h"
#include "recording/control/RecordingNotices.h"
#include "recording/library/RecordedList.h"
#include "ui/LeftoversQuestion.h"
#include "ui/WindowLeaving.h"

#include <QMainWindow>

#include <memory>

class QAction;
class QTabWidget;

namespace cantorel {
class KeptEdit;
class RecordingSession;
class ScheduledSession;
class OwnSongs;
class RecordingIdentification;
class ZQAudioConvertManager;
struct UpdateDescription;
} // namespace cantorel

namespace cantorel::ui {

class AlertAsker;
class ConvertStrip;
class EditorPage;
class LibraryTab;
class PageStack;
class Pill;
class RecordingTab;
class SettingsPage;
class StatusItem;
class TasksPage;
class WindowMenu;
class ZQAudioConvertController;
enum class Command;

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
        ZQAudioConvertManager &converter;
        RecordingIdentification &identification;
        OwnSongs &songs;
        foundation::Clock &clock;
        desktop::Services &desktop;
    };
    explicit MainWindow(const Parts &parts);
    ~MainWindow() override;

    void changeLanguageText();
    // Shows a newer version; or, after a check by hand, that there is none (isLatest) or that the server did not
    // answer.
    void offerUpdate(const UpdateDescription &description);
    void tellNoUpdate(bool isLatest);
    // Asks the person what to do with recordings that a crash left unfinished, if there are any.
    void offerLeftovers();
    // Offers to go on with what was open in the editor of an earlier program, if there is any.
    void offerEdit();
    void bringToFront();
    // The same when the program is started a second time; also cancels an end that waits for conversions.
    void showAgain();
    // Ends the program, and what is recorded, without asking.
    void stopAndQuit();
    // Shows how the hot keys for start, stop and pause are pressed, if the desktop tells.
    void showTriggers(const std::array<QString, 3> &triggers);
    // Why a key does not work; said where the keys are chosen.
    void showHotkeyTrouble(const foundation::Sentence &sentence);
    bool isRecording() const;
    bool isPrepareStartRecording() const;
    bool isSettled() const;
    void openPreferencesWindowAndShowRecordInterface();
    void setAudioInputSelectedStatus();
    // The status of an item has changed.
    void showStatuses();

    AlertAsker &alerts() { return *mAlerts; }
    RecordingTab &recordPage() { return *mRecordingTab; }
    // Made when first needed; the library after the window was painted.
    LibraryTab &library();
    SettingsPage &settings();
    TasksPage &tasks();
    ZQAudioConvertController &convertPage();
    // With these files and folders in its list as well.
    void openConverter(const QStringList &files);
    EditorPage &editorPage();
    void showEditor();
    void showRecordPage();
    void showLibrary();
    StatusItem &statusItem();
    // Where it is opened the next time.
    void rememberPlace();
    // Opens the editor with that file.
    void beginAudioEditWithURL(const QUrl &url);

Q_SIGNALS:
    // The person wants to quit, and nothing is recorded or converted any more.
    void mayEnd();
    // The window has been painted for the first time. What need not be in the first picture begins now.
    void firstShown();
    // The hot keys of the settings have changed.
    void hotkeysChanged();
    // The person asks for a newer version and expects an answer in any case.
    void updatesWanted();
    // The person wants the virtual device installed.
    void virtualDeviceWanted();

private:
    void recordedListDidChange() override;
    void showPanel();
    void listen();
    QWidget *makeHome();
    void makeKeys();
    void run(Command command);
    void turn(int step);
    void openSettings();
    void openTasks();
    void placeStrip();
    void reveal(const QStringList &files);
    void conversionDidEnd();
    void showShutdown(int seconds);
    const std::shared_ptr<KeptEdit> &keptEdit(); // made when first needed
    void showTexts();
    void showRecordingEverywhere();
    void showTab(QWidget *tab);
    void showOrHide();
    void askToPlay(std::function<void()> play);
    bool recordsSystemSound() const;
    void complete();
    bool event(QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

    Parts mParts;
    std::unique_ptr<AlertAsker> mAlerts;
    QWidget *mRecordingLine; // on top while something is recorded
    QTabWidget *mTabs;
    Pill *mPill;
    WindowMenu *mMenu;
    PageStack *mPages = nullptr;
    QAction *mBackAction = nullptr;
    RecordingTab *mRecordingTab;
    QWidget *mLibraryPage;
    LibraryTab *mLibraryTab = nullptr;
    SettingsPage *mSettings = nullptr;
    TasksPage *mTasks = nullptr;
    ZQAudioConvertController *mConvert = nullptr;
    ConvertStrip *mConvertStrip = nullptr;
    std::shared_ptr<KeptEdit> mKeptEdit;
    EditorPage *mEditor = nullptr;
    std::array<QString, 3> mTriggers;
    foundation::Sentence mHotkeyTrouble;
    std::unique_ptr<StatusItem> mStatusItem;
    RecordingNotices mNotices;
    WindowLeaving mLeaving;
    LeftoversQuestion mLeftovers;
    bool mWasPainted = false;
};

} // namespace cantorel::ui
