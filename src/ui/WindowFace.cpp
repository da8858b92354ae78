#include "ui/WindowFace.h"

#include "ui/MainWindow.h"
#include "ui/RecordCards.h"
#include "ui/RecordingTab.h"

#include <QApplication>

namespace cantorel::ui {

void WindowFace::changeLanguageText() { mWindow.changeLanguageText(); }

void WindowFace::makeKeyAndOrderFront() { mWindow.bringToFront(); }

bool WindowFace::isShowingDialog() const {
    return mAlerts.isShowingSheet() || QApplication::activeModalWidget() || QApplication::activePopupWidget()
           || (QApplication::activeWindow() && QApplication::activeWindow() != &mWindow);
}

void WindowFace::close() { mWindow.hide(); }

void WindowFace::initCaptureSession() { mainWindowDelegate->MainWindowCheckAggreateDevice(*this); }

void WindowFace::startCheckingUpdates(bool byHand) {
    if (checkUpdates)
        checkUpdates(byHand);
}

bool WindowFace::isRecording() const { return mWindow.isRecording(); }

bool WindowFace::isPrepareStartRecording() const { return mWindow.isPrepareStartRecording(); }

bool WindowFace::isSettled() const { return mWindow.isSettled(); }

void WindowFace::openPreferencesWindowAndShowRecordInterface() {
    mWindow.openPreferencesWindowAndShowRecordInterface();
}

void WindowFace::beginSheet(const AlertSheet &sheet, std::function<void(int)> completion) {
    RecordCards &cards = mWindow.recordPage().cards();
    switch (sheet.subject) {
    case AlertSheet::Subject::VirtualDeviceMissing:
        cards.offerVirtualDevice([completion = std::move(completion)](bool installs) {
            completion(installs ? kFirstButton : kFirstButton + 1);
        });
        return;
    case AlertSheet::Subject::VirtualDeviceInstalled:
        // Deliberately nobody answers: the device works from now on, so nothing has to start again.
        cards.tellVirtualDeviceInstalled();
        return;
    case AlertSheet::Subject::Other:
        mAlerts.beginSheet(sheet, std::move(completion));
        return;
    }
}

QObject *WindowFace::window() { return &mWindow; }

// Neither is in the window yet; their commands are not shown.
void WindowFace::hideEditorAndConverter() {}

void WindowFace::notificationRecordedAudioInfoStatusDidChnage() { mWindow.showStatuses(); }

void WindowFace::setAudioInputSelectedStatus() { mWindow.setAudioInputSelectedStatus(); }

} // namespace cantorel::ui
