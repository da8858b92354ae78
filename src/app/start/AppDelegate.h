#pragma once

#include "app/start/Application.h"
#include "app/start/BackgroundTasks.h"
#include "app/start/MainWindowFace.h"
#include "app/start/ZQCommonUtils.h"
#include "platform/foundation/Clock.h"

#include <QObject>
#include <QVariantMap>

#include <memory>

namespace cantorel {

// Starts the program in its fixed order, offers the driver, keeps the aggregate device in step with the microphone,
// tells of changed default devices, gives the devices back at the end, and starts the program again where that is
// needed. Made by the composition root; main thread.
class AppDelegate : public QObject, public ApplicationDelegate, public MainWindowDelegate {
public:
    // All outlive the delegate.
    struct Parts {
        Application &application;
        MainWindowFace &mainWindow;
        ZQCommonUtils &commonUtils;
        BackgroundTasks &background;
        foundation::Clock &clock;
        // Renews the access to the recognition service, on a worker; empty where there is no such service.
        std::function<void()> refreshRecognition = {};
    };
    explicit AppDelegate(const Parts &parts);
    ~AppDelegate() override;

    // The first exception ends the sequence and is logged; what has been done by then stays.
    void applicationDidFinishLaunching() override;
    // Gives the person's devices back. Always true: a recording that runs is not asked about here.
    bool applicationShouldTerminate() override;

    // Installs the virtual device, and tells what came of it.
    void installVirtualDevice() { alertDidEndSheetForInstallTessolarAudioDevice(MainWindowFace::kFirstButton); }
    void needRelaunchApp();
    void openPreferencesWindowAndShowRecordInterface();

    bool MainWindowCheckAggreateDevice(MainWindowFace &window) override;

private:
    void initSettings();
    void initCommonUtils();
    void startLog();
    void parseLinks();
    void showMainWindow();
    void activateVirtualDevice();
    void observeDevices();
    void bringToFrontLater();

    void alertDidEndSheetForInstallTessolarAudioDevice(int returnCode);
    void alertDidLoadAudioDevice(int returnCode);
    void alertDidCreateAggregateDevice(int returnCode);
    void alertDidShowDefaultDeviceChange(int returnCode);
    void AudioDeviceDefaultInputDidChange(const QVariantMap &device);
    void AudioDeviceDefaultOutputDidChange(const QVariantMap &device);
    void NeedUpdateAppInfo(const CommAppInfo &info);
    void handleRelaunchAfterUpdate() { needRelaunchApp(); }

    void beginSheet(const AlertSheet &sheet, void (AppDelegate::*ended)(int returnCode));
    void showDefaultDeviceChange(const QString &text);
    void recreateAggregateDevice();
    void onMainQueue(const char *name, std::function<void()> action);

    Parts mParts;
    bool bIsNeedLaunch = false; // only while a relaunch is under way
    std::unique_ptr<foundation::Timer> mFirstFront;
    std::unique_ptr<foundation::Timer> mSecondFront;
    std::unique_ptr<foundation::Timer> mPreferences;
    std::unique_ptr<foundation::Timer> mRelaunch; // while a recording has to be closed first
    foundation::NotificationCenter::Subscription mRelaunchAfterUpdate;
    foundation::NotificationCenter::Subscription mServer; // until one carries sound for the first time
    foundation::NotificationCenter::Subscription mDefaultInput;
    foundation::NotificationCenter::Subscription mDefaultOutput;
    foundation::NotificationCenter::Subscription mAppInfo;
};

} // namespace cantorel
