#pragma once

#include "app/start/MainWindowFace.h"
#include "ui/AlertAsker.h"

namespace cantorel::ui {

class MainWindow;

// The main window as the application's start and end see it. Owned by the application; main thread.
class WindowFace : public MainWindowFace {
public:
    // Both outlive it.
    WindowFace(MainWindow &window, AlertAsker &alerts) : mWindow(window), mAlerts(alerts) {}

    // Asks for an update beside the main thread and tells of it; set by the composition.
    std::function<void(bool byHand)> checkUpdates;

    void changeLanguageText() override;
    void makeKeyAndOrderFront() override;
    bool isShowingDialog() const override;
    void close() override;
    void initCaptureSession() override;
    void startCheckingUpdates(bool byHand) override;
    bool isRecording() const override;
    bool isPrepareStartRecording() const override;
    bool isSettled() const override;
    void openPreferencesWindowAndShowRecordInterface() override;
    void beginSheet(const AlertSheet &sheet, std::function<void(int returnCode)> completion) override;
    QObject *window() override;

protected:
    void hideEditorAndConverter() override;
    void notificationRecordedAudioInfoStatusDidChnage() override;
    void setAudioInputSelectedStatus() override;
    void setUpTitleBar() override {}

private:
    MainWindow &mWindow;
    AlertAsker &mAlerts;
};

} // namespace cantorel::ui
