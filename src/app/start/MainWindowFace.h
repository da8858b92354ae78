#pragma once

#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/WeakDelegate.h"
#include "util/Asker.h"

#include <QString>
#include <QStringList>

#include <functional>

namespace cantorel {

class MainWindowFace;

// An alert that hangs on the main window.
struct AlertSheet {
    // What it is about, for a window that has its own way to ask that.
    enum class Subject { Other, VirtualDeviceMissing, VirtualDeviceInstalled };

    AlertStyle style = AlertStyle::Informational;
    QString messageText;
    QString informativeText;
    QStringList buttons; // Escape presses the last
    Subject subject = Subject::Other;
};

// What the main window asks of the application.
class MainWindowDelegate {
public:
    virtual ~MainWindowDelegate() = default;

    // True when the capture set-up may go on now. Spelling is fixed.
    virtual bool MainWindowCheckAggreateDevice(MainWindowFace &) { return true; }
};

// The main window as the application's start and end see it, and what of its own start needs no widgets. Implemented by
// the window; main thread.
class MainWindowFace {
public:
    // What a sheet's completion receives: this number for the first button, one more for each further one.
    static constexpr int kFirstButton = 1000;

    virtual ~MainWindowFace() = default;

    foundation::WeakDelegate<MainWindowDelegate> mainWindowDelegate;

    // The saved language, what the window listens to, and the controls as the settings and the platform have them.
    void applicationDidFinishLaunching();

    virtual void changeLanguageText() = 0;
    // Shows the window and gives it the focus.
    virtual void makeKeyAndOrderFront() = 0;
    // Whether a sheet or another dialog of the program waits for the person.
    virtual bool isShowingDialog() const = 0;
    virtual void close() = 0;
    // Asks the delegate whether it may go on.
    virtual void initCaptureSession() = 0;
    // byHand: the person asked for it, and also hears that there is nothing new.
    virtual void startCheckingUpdates(bool byHand) = 0;
    virtual bool isRecording() const = 0;
    virtual bool isPrepareStartRecording() const = 0;
    // No recording is under way, and every one is closed and converted.
    virtual bool isSettled() const = 0;
    virtual void openPreferencesWindowAndShowRecordInterface() = 0;
    // Shows the sheet, behind those that are open, and returns. The completion is called once the sheet is closed; a
    // window that need not start again to use the virtual device only says that it is installed.
    virtual void beginSheet(const AlertSheet &sheet, std::function<void(int returnCode)> completion) = 0;
    // What Asker takes for the window.
    virtual QObject *window() = 0;

protected:
    // The Tools menu and all that leads to the editor and the converter.
    virtual void hideEditorAndConverter() = 0;
    // Redraws the list. Spelling is fixed.
    virtual void notificationRecordedAudioInfoStatusDidChnage() = 0;
    // The input-source selector by the saved input type.
    virtual void setAudioInputSelectedStatus() = 0;
    virtual void setUpTitleBar() = 0;

private:
    foundation::NotificationCenter::Subscription mLanguage;
    foundation::NotificationCenter::Subscription mStatus;
};

} // namespace cantorel
