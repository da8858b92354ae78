#include "app/start/AppDelegate.h"

#include "audio_device/AudioDeviceEngine.h"
#include "audio_device/AudioProperty.h"
#include "audio_device/ZQAudioKextKit.h"
#include "lang/Lang.h"
#include "log/CommLog.h"
#include "log/GuardedAction.h"
#include "platform/desktop/Services.h"
#include "platform/hal/HardwareSystem.h"
#include "settings/AppSettings.h"
#include "settings/SettingsTable.h"
#include "settings/UserDefaultFunctions.h"
#include "util/ToolFile.h"
#include "util/tools/Link.h"
#include "util/tools/ToolSystem.h"
#include "util/tools/Tools.h"

#include <QPointer>

namespace cantorel {

namespace {

constexpr double kToolTipDelay = 10; // seconds
constexpr std::chrono::seconds kFrontDelay{2};
constexpr std::chrono::milliseconds kPreferencesDelay{250};
constexpr float kRelaunchDelay = 1; // seconds
constexpr std::chrono::milliseconds kSettledPause{500};

// The names of the program's own devices.
bool isOwnDevice(const QString &name) {
    return name == QLatin1String(kTessolarAudioDeviceName) || name == QLatin1String(kOlderVirtualDeviceName)
           || name == QLatin1String(kTessolarAggregateDeviceName);
}

AlertSheet sheetOf(AlertStyle style, const QString &text, const QStringList &buttons,
                   AlertSheet::Subject subject = AlertSheet::Subject::Other) {
    return {style, AppSettings::appName(), Tools::fillTextMarkers(text), buttons, subject};
}

QString aggregateKey() { return QString::fromLatin1(setting::kOldAggregateSubDeivceUIDs); }

} // namespace

AppDelegate::AppDelegate(const Parts &parts) : mParts(parts) { mParts.application.delegate = this; }

AppDelegate::~AppDelegate() {
    mParts.background.finish();
    ZQAudioKextKit::removeSystemAudioDeviceChangeListener();
}

void AppDelegate::applicationDidFinishLaunching() {
    // The order is fixed; what was done before an exception stays.
    (void)guarded("applicationDidFinishLaunching", [this] {
        initSettings();
        ToolSystem::setSystemDefaultTooltipsShowTimeInterval(kToolTipDelay);
        initCommonUtils();
        startLog();
        ToolSystem::setAllowKeepSystemWakeEnable(true);
        mParts.commonUtils.checkSilent();
        parseLinks();
        showMainWindow();
        activateVirtualDevice();
        AppSettings::setRecordingOutputDeviceName({});
        observeDevices();
        bringToFrontLater();
    });
}

void AppDelegate::initSettings() {
    AppSettings::initSettingInNeed();
    UserDefaultInit();
}

void AppDelegate::initCommonUtils() {
    mParts.commonUtils.initWithCommAppInfo(CommAppInfo::current(), mParts.mainWindow);
    mRelaunchAfterUpdate = foundation::NotificationCenter::defaultCenter().subscribe<RelaunchRequest>(
        kNotificationRelaunchAfterUpdate, [this](const RelaunchRequest &) { handleRelaunchAfterUpdate(); });
}

void AppDelegate::startLog() {
    LogFileCheck(QString::fromLatin1(kApplicationLogName));
    LogStart();
    CommLog::I(
        QStringLiteral("%1, %2").arg(Tools::getOSversion(), desktop::InstalledServices::current().version.kernel));
    CommLog::I(QStringLiteral("App version: %1").arg(AppSettings::appVersion()));
}

void AppDelegate::parseLinks() {
    mParts.background.run([] {
        if (const QString path = Link::resource(); ToolFile::isFileExistsAtPath(path))
            Link::parseLinkWithFilePath(path);
    });
}

void AppDelegate::showMainWindow() {
    mParts.mainWindow.applicationDidFinishLaunching();
    mParts.mainWindow.changeLanguageText();
    mParts.mainWindow.makeKeyAndOrderFront();
    mParts.mainWindow.mainWindowDelegate = this;
}

void AppDelegate::activateVirtualDevice() {
    // Without a sound server nobody can tell yet whether the virtual device is installed.
    if (!hal::HardwareSystem::reach()) {
        mServer = foundation::NotificationCenter::defaultCenter().subscribe<bool>(
            kNotificationSoundDevicesDidChange, [this](const bool &carriesSound) {
                if (!carriesSound)
                    return;
                mServer.cancel();
                (void)guarded("activate the virtual device", [this] { activateVirtualDevice(); }); // logged there
            });
        return;
    }
    if (!ZQAudioKextKit::activateSVAD()) {
        beginSheet(sheetOf(AlertStyle::Warning, Lang::commErrorNoVirtualSoundCard(), {Lang::btnYes(), Lang::btnNo()},
                           AlertSheet::Subject::VirtualDeviceMissing),
                   &AppDelegate::alertDidEndSheetForInstallTessolarAudioDevice);
        return;
    }
    ZQAudioKextKit::resetDefaultAudioDevice();
    mParts.mainWindow.initCaptureSession();
    mParts.mainWindow.startCheckingUpdates(false);
    if (mParts.refreshRecognition && !AppSettings::appDebug())
        mParts.background.run(mParts.refreshRecognition);
}

void AppDelegate::observeDevices() {
    auto &center = foundation::NotificationCenter::defaultCenter();
    ZQAudioKextKit::addSystemAudioDeviceChangeListener();
    mDefaultInput =
        center.subscribe<QVariantMap>(kNotificationDefaultInputDidChange,
                                      [this](const QVariantMap &device) { AudioDeviceDefaultInputDidChange(device); });
    mDefaultOutput =
        center.subscribe<QVariantMap>(kNotificationDefaultOutputDidChange,
                                      [this](const QVariantMap &device) { AudioDeviceDefaultOutputDidChange(device); });
    mAppInfo = center.subscribe<CommAppInfo>(kNotificationAppInfoUpdate,
                                             [this](const CommAppInfo &info) { NeedUpdateAppInfo(info); });
}

void AppDelegate::bringToFrontLater() {
    // An open dialog keeps the focus: the person may be typing into it.
    const auto bringToFront = [this] {
        if (!mParts.mainWindow.isShowingDialog())
            mParts.mainWindow.makeKeyAndOrderFront();
    };
    mFirstFront = mParts.clock.after(kFrontDelay, [this, bringToFront] {
        (void)guarded("show the main window", [&] { // logged there
            mParts.mainWindow.changeLanguageText();
            bringToFront();
        });
    });
    mSecondFront = mParts.clock.after(kFrontDelay, [bringToFront] {
        (void)guarded("show the main window again", bringToFront); // logged there
    });
}

bool AppDelegate::applicationShouldTerminate() {
    ZQAudioKextKit::unsetSVAD();
    mParts.commonUtils.stopWaiting();
    if (!bIsNeedLaunch)
        mParts.commonUtils.dispose();
    return true;
}

void AppDelegate::needRelaunchApp() {
    // The end would cut a recording off, and leave it unconverted.
    if (!mParts.mainWindow.isSettled()) {
        mRelaunch = mParts.clock.after(kSettledPause, [this] { needRelaunchApp(); });
        return;
    }
    bIsNeedLaunch = true;
    if (const auto relaunched = mParts.application.relaunchAfterDelay(kRelaunchDelay); relaunched) {
        mParts.mainWindow.close();
    } else {
        Log(relaunched.failure().detail);
        Tools::showErrorMessage(Lang::sentence(relaunched.failure().sentence), mParts.mainWindow.window());
    }
    bIsNeedLaunch = false;
}

void AppDelegate::openPreferencesWindowAndShowRecordInterface() {
    mParts.mainWindow.openPreferencesWindowAndShowRecordInterface();
}

void AppDelegate::alertDidEndSheetForInstallTessolarAudioDevice(int returnCode) {
    (void)guarded("install the virtual device", [&] { // logged there
        if (returnCode == MainWindowFace::kFirstButton) {
            if (ZQAudioKextKit::loadAudioKext() && ZQAudioKextKit::activateSVAD()) {
                mParts.background.run([this] {
                    onMainQueue("offer a relaunch", [this] {
                        const QString text =
                            QStringLiteral("%1.%2").arg(Lang::commInstalledSuccess(), Lang::commNeedRelaunch());
                        beginSheet(sheetOf(AlertStyle::Critical, text, {Lang::btnYes()},
                                           AlertSheet::Subject::VirtualDeviceInstalled),
                                   &AppDelegate::alertDidLoadAudioDevice);
                    });
                });
            } else {
                Tools::showErrorMessage(Lang::commInstalledFailed(), mParts.mainWindow.window());
            }
        }
    });
    (void)guarded("check for updates", [this] { mParts.mainWindow.startCheckingUpdates(false); }); // logged there
}

void AppDelegate::alertDidLoadAudioDevice(int) { needRelaunchApp(); }

bool AppDelegate::MainWindowCheckAggreateDevice(MainWindowFace &) {
    constexpr int kSystemSoundAndMicrophone = 2;
    if (AppSettings::getAudioType() != kSystemSoundAndMicrophone)
        return true;
    if (!ZQAudioKextKit::isAggregateDeviceChanged(ZQUserDefaultGetObjectValue(aggregateKey(), {}).toMap()))
        return true;
    mParts.background.run([this] { recreateAggregateDevice(); });
    return false;
}

void AppDelegate::recreateAggregateDevice() {
    const QVariantMap saved = ZQUserDefaultGetObjectValue(aggregateKey(), {}).toMap();
    const QVariantMap made = ZQAudioKextKit::renewAggregateDevice(saved);
    if (made.isEmpty() || made == saved) // A recording has made it meanwhile.
        return;
    (void)ZQUserDefaultSetValue_Object(made, aggregateKey()); // a failure is logged by the store
    onMainQueue("tell of the new configuration", [this] {
        beginSheet(sheetOf(AlertStyle::Critical, Lang::settingsConfigureDidChange(), {Lang::btnYes()}),
                   &AppDelegate::alertDidCreateAggregateDevice);
    });
}

void AppDelegate::alertDidCreateAggregateDevice(int) { needRelaunchApp(); }

void AppDelegate::AudioDeviceDefaultInputDidChange(const QVariantMap &device) {
    const QString name = device.value(QString::fromLatin1(kAudioDeviceInfoName)).toString();
    if (isOwnDevice(name) && !mParts.mainWindow.isRecording())
        showDefaultDeviceChange(Lang::commDefaultAudioInputDeviceUnavailable());
}

void AppDelegate::AudioDeviceDefaultOutputDidChange(const QVariantMap &device) {
    const QString name = device.value(QString::fromLatin1(kAudioDeviceInfoName)).toString();
    if (isOwnDevice(name) && !mParts.mainWindow.isRecording() && !mParts.mainWindow.isPrepareStartRecording())
        showDefaultDeviceChange(Lang::commDefaultAudioOutputDeviceUnavailable());
}

void AppDelegate::showDefaultDeviceChange(const QString &text) {
    onMainQueue("tell of the default device", [this, text] {
        beginSheet(sheetOf(AlertStyle::Informational, text, {Lang::btnCancel(), Lang::btnOK()}),
                   &AppDelegate::alertDidShowDefaultDeviceChange);
    });
}

void AppDelegate::alertDidShowDefaultDeviceChange(int returnCode) {
    // Deliberately the first button, which says that it cancels.
    if (returnCode == MainWindowFace::kFirstButton)
        mPreferences = mParts.clock.after(kPreferencesDelay, [this] {
            (void)guarded("open the preferences", [this] { openPreferencesWindowAndShowRecordInterface(); }); // logged
        });
}

void AppDelegate::NeedUpdateAppInfo(const CommAppInfo &info) {
    mParts.commonUtils.setAppInfo(info);
    mParts.mainWindow.changeLanguageText();
}

void AppDelegate::beginSheet(const AlertSheet &sheet, void (AppDelegate::*ended)(int)) {
    mParts.mainWindow.beginSheet(sheet, [self = QPointer(this), ended](int returnCode) {
        if (self)
            (self->*ended)(returnCode);
    });
}

void AppDelegate::onMainQueue(const char *name, std::function<void()> action) {
    QMetaObject::invokeMethod(
        this, [name, action = std::move(action)] { (void)guarded(name, action); }, Qt::QueuedConnection);
}

} // namespace cantorel
