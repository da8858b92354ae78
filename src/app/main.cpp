// The window program's entry point and composition root.

#include "app/start/AppDelegate.h"
#include "app/start/CommonUtils.h"
#include "app/start/DesktopPictures.h"
#include "app/start/DesktopServices.h"
#include "app/start/EntryPoint.h"
#include "app/start/Hardware.h"
#include "app/start/SignalWatch.h"
#include "audio_device/ZQAudioKextKit.h"
#include "convert/queue/ZQAudioConvertManager.h"
#include "lang/Lang.h"
#include "platform/foundation/Console.h"
#include "recording/control/RecordingControl.h"
#include "recording/control/RecordingHotkeys.h"
#include "recording/control/ScheduledSession.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaultFunctions.h"
#include "tags/identify/OwnSongs.h"
#include "tags/identify/RecordingIdentification.h"
#include "tags/index/SongStore.h"
#include "ui/Accessibility.h"
#include "ui/Icons.h"
#include "ui/MainWindow.h"
#include "ui/WindowFace.h"
#include "ui/look/Look.h"
#include "util/tools/ToolSystem.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QMessageBox>
#include <QTimer>

#include <cstdio>
#include <stop_token>
#include <thread>
#include <utility>

namespace cantorel {

namespace {

// How long the start waits for a sound server before it goes on without, and for the recorder before it says that
// another has it.
constexpr std::chrono::seconds kServerPatience(1), kPatience(3);
constexpr std::chrono::milliseconds kBetweenClaims(50);
// How long the window may take to be painted before the rest of the start stops waiting for it.
constexpr std::chrono::seconds kUnpainted(1);

// Everything of one run, from the sound hardware to the window, in the order in which it stands on each other.
class WindowProgram {
public:
    explicit WindowProgram(std::unique_ptr<Hardware> hardware)
        : mHardware(std::move(hardware)),
          mList(Hardware::stateFolder(), hal::HardwareSystem::clock()),
          mCommons(Hardware::stateFolder(), hal::HardwareSystem::clock(),
                   desktop::InstalledServices::current().sleep.get()),
          mSession(mPanel, mList, mCommons),
          mMovies(mPanel, mList, mCommons),
          mRecorder(mSession, &mMovies, mTasks, mPanel, hal::HardwareSystem::clock()) {}

    ~WindowProgram() {
        mHotkeys.reset();
        mDesktopKeys.reset();
        ToolSystem::setAllowKeepSystemWakeEnable(false);
    }

    bool claim() { return mCommons.journal.claim(); }

    int run() {
        mWindow.emplace(ui::MainWindow::Parts{mPanel, mRecorder, mSession, mList, mTasks, mConverter, mIdentification,
                                              mSongs, hal::HardwareSystem::clock(),
                                              desktop::InstalledServices::current()});
        const InstalledAsker asker(mWindow->alerts());
        ui::WindowFace face(*mWindow, mWindow->alerts());
        face.checkUpdates = [this](bool byHand) { byHand ? mCommonUtils.checkByHand() : mCommonUtils.checkSilent(); };
        AppDelegate delegate(
            {mApplication, face, mCommonUtils, mBackground, hal::HardwareSystem::clock(),
             [stop = mStop.get_token()] { refreshRecognitionAccess(AppSettings::supportServer(), stop); }});
        const SignalWatch signals([this] { mWindow->stopAndQuit(); });
        QObject::connect(&*mWindow, &ui::MainWindow::mayEnd, qApp, [this] { mApplication.terminate(); });
        mApplication.willEnd = [this] {
            mStop.request_stop();
            giveNameBack();
        };
        QObject::connect(&*mWindow, &ui::MainWindow::virtualDeviceWanted, &delegate,
                         &AppDelegate::installVirtualDevice);
        QObject::connect(&*mWindow, &ui::MainWindow::updatesWanted, qApp, [this] { mCommonUtils.checkByHand(); });
        mCommonUtils.updateIsOffered = [this](const UpdateDescription &update) { mWindow->offerUpdate(update); };
        mCommonUtils.nothingIsOffered = [this](const std::optional<UpdateDescription> &update) {
            mWindow->tellNoUpdate(update.has_value());
        };
        QObject::connect(&*mWindow, &ui::MainWindow::hotkeysChanged, qApp, [this] { registerHotkeys(); });

        QObject::connect(&mPanel, &RecorderPanel::finished, &delegate, [this](const FinishedRecording &finished) {
            if (const RecordedAudioInfo *item = mList.itemWithFile(finished.file))
                (void)mIdentification.identifyFinished(*item); // not what is too short, for one
        });

        // The list loads behind the window; a window that nothing paints keeps nothing waiting either.
        QObject::connect(&*mWindow, &ui::MainWindow::firstShown, qApp, [this] { takeUp(); });
        QTimer::singleShot(kUnpainted, &delegate, [this] { takeUp(); });
        QTimer::singleShot(0, &delegate, [&] { delegate.applicationDidFinishLaunching(); });
        const int result = QApplication::exec();
        mCommonUtils.updateIsOffered = {};
        mCommonUtils.nothingIsOffered = {};
        mControl.reset();
        mWindow.reset();
        return result;
    }

private:
    // The library, the schedule and what controls them.
    void takeUp() {
        if (std::exchange(mIsTakenUp, true))
            return;
        mBackground.begin();
        mList.initRecordedListBehind([this] { takeUpControl(); });
    }

    void takeUpControl() {
        mWindow->offerLeftovers();
        mWindow->offerEdit();
        mSongs.update();
        mRecorder.schedule().initScheduleTaskList();
        mControl.emplace(mSession, mList, mTasks, RecordingControl::Begins::Any,
                         desktop::InstalledServices::current().remote.get(), &mMovies);
        mControl->show = [this] { mWindow->showAgain(); };
        mControl->offer();
        if (auto hotKeys = desktopHotKeys(); hotKeys)
            mDesktopKeys = std::move(hotKeys.value());
        registerHotkeys();
    }

    // A second start from now on is not sent to this process, which is ending.
    void giveNameBack() {
        if (!mControl)
            return;
        mControl->show = {};
        // From the event loop, since it may be the control that has asked for the end.
        QMetaObject::invokeMethod(
            qApp, [this] { mControl.reset(); }, Qt::QueuedConnection);
    }

    void registerHotkeys() {
        if (!mHotkeys)
            mHotkeys.emplace(mRecorder, mDesktopKeys,
                             [this](const foundation::Sentence &sentence) { mWindow->showHotkeyTrouble(sentence); });
        mHotkeys->registerEnabled();
        mWindow->showTriggers(mHotkeys->triggers());
    }

    std::unique_ptr<Hardware> mHardware;
    PooledBackgroundTasks mBackground;
    std::stop_source mStop; // of what waits for the maker's server
    UpdateCheck mUpdates;
    CommonUtils mCommonUtils{mUpdates, mBackground};
    Application mApplication;
    RecorderPanel mPanel;
    RecordedList mList;
    TaskList mTasks;
    RecorderCommons mCommons;
    RecordingSession mSession;
    MovieSession mMovies;
    ScheduledSession mRecorder;
    ZQAudioConvertManager mConverter{hal::HardwareSystem::clock()};
    OwnSongs mSongs{AppSettings::TessolarConverterPath(), songStorePath()};
    RecordingIdentification mIdentification{mList, [](std::stop_token stop) {
                                                return CommAudioIdentify(AppSettings::TessolarConverterPath(),
                                                                         RecognitionServices::fromSettings(), stop);
                                            }};
    std::optional<ui::MainWindow> mWindow;
    std::optional<RecordingControl> mControl;
    std::shared_ptr<desktop::HotKeys> mDesktopKeys; // null where the desktop has none
    std::optional<RecordingHotkeys> mHotkeys;
    bool mIsTakenUp = false;
};

void showTrouble(const foundation::Sentence &sentence) {
    QMessageBox box(QMessageBox::Warning, AppSettings::appName(), Lang::sentence(sentence));
    box.setWindowIcon(ui::applicationIcon());
    box.setTextFormat(Qt::PlainText);
    box.addButton(Lang::btnOK(), QMessageBox::AcceptRole);
    const SignalWatch signals([&box] { box.reject(); });
    box.exec();
}

// Whether a Cantorel that runs has shown its window.
bool showsAnother() {
    const auto &remote = desktop::InstalledServices::current().remote;
    const auto shown = remote ? remote->ask(QString::fromLatin1(control::kShow), {}) : std::nullopt;
    return shown && shown->ok();
}

int runWindow(BackendChoice backend) {
    // A second start shows the window of the first.
    if (showsAnother())
        return 0;
    WindowProgram program(Hardware::openInAnyCase(backend, kServerPatience));
    // Another one that is ending leaves the recorder soon.
    const QDeadlineTimer patience(kPatience);
    while (!program.claim() && !patience.hasExpired()) {
        if (showsAnother())
            return 0;
        std::this_thread::sleep_for(kBetweenClaims);
    }
    if (!program.claim()) {
        showTrouble(kAnotherRecorder());
        return 1;
    }
    return program.run();
}

} // namespace

} // namespace cantorel

int main(int argc, char **argv) {
    using namespace cantorel;
    QStringList given;
    for (int i = 1; i < argc; ++i)
        given << QString::fromLocal8Bit(argv[i]);
    if (const auto answer = answeredByArguments(given)) {
        std::fputs(answer->toUtf8().constData(), stdout);
        return 0;
    }
    foundation::ignoreBrokenPipes();
    SignalWatch::holdBack(); // before the application object and the sound server begin their threads
    ui::Look::prepare();
    QApplication application(argc, argv);
    ui::installAccessibility();
    QApplication::setApplicationName(AppSettings::appIdenitfyName());
    QApplication::setDesktopFileName(QString::fromLatin1(kBundleIdentifier));
    QApplication::setQuitOnLastWindowClosed(false); // It lives on in the tray.
    AppSettings::initSettingInNeed();
    Lang::useLanguage(AppSettings::appLanguage());
    const desktop::InstalledServices services(desktopServices());
    const media::InstalledPictureSources pictures(desktopPictures());
    const ui::Look look(desktop::InstalledServices::current().appearance.get());
    const QStringList arguments = QApplication::arguments();
    const auto backend =
        arguments.contains(QStringLiteral("--backend=embedded")) ? BackendChoice::Embedded : BackendChoice::Automatic;
    return runMain(arguments, [&] { return runWindow(backend); });
}
