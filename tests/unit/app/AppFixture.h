#pragma once

#include "app/start/AppDelegate.h"
#include "audio_device/ZQAudioKextKit.h"
#include "log/Log.h"
#include "platform/desktop/Services.h"
#include "settings/AppSettings.h"
#include "tests/support/EmbeddedWorld.h"
#include "tests/support/OrdinaryFile.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <deque>
#include <stdexcept>

namespace cantorel::test {

// What was called, in order; a call that is planned to fail throws.
struct Calls {
    QStringList made;
    QString failing;
    void note(const QString &call) {
        if (call == failing)
            throw std::runtime_error("planned failure of " + call.toStdString());
        made.append(call);
    }
    QStringList take() { return std::exchange(made, {}); }
};

struct FakeWindow : MainWindowFace {
    explicit FakeWindow(Calls &calls) : calls(calls) {}

    void changeLanguageText() override { calls.note("changeLanguageText"); }
    void makeKeyAndOrderFront() override { calls.note("makeKeyAndOrderFront"); }
    bool isShowingDialog() const override { return hasDialog; }
    void close() override { calls.note("close"); }
    void initCaptureSession() override {
        const bool ready = mainWindowDelegate->MainWindowCheckAggreateDevice(*this);
        calls.note(ready ? "initCaptureSession" : "initCaptureSession waits");
    }
    void startCheckingUpdates(bool byHand) override { calls.note(byHand ? "check by hand" : "startCheckingUpdates"); }
    bool isRecording() const override { return recording; }
    bool isPrepareStartRecording() const override { return preparing; }
    bool isSettled() const override { return settled; }
    void openPreferencesWindowAndShowRecordInterface() override { calls.note("preferences"); }
    void beginSheet(const AlertSheet &sheet, std::function<void(int)> completion) override {
        calls.note("sheet " + sheet.informativeText);
        sheets.push_back(sheet);
        completions.push_back(std::move(completion));
    }
    QObject *window() override { return &object; }
    void hideEditorAndConverter() override { calls.note("hideEditorAndConverter"); }
    void notificationRecordedAudioInfoStatusDidChnage() override { calls.note("list"); }
    void setAudioInputSelectedStatus() override { calls.note("setAudioInputSelectedStatus"); }
    void setUpTitleBar() override { calls.note("setUpTitleBar"); }

    void answer(int returnCode) {
        ASSERT_FALSE(completions.empty());
        const auto completion = completions.front();
        completions.pop_front();
        completion(returnCode);
    }

    Calls &calls;
    bool hasDialog = false, recording = false, preparing = false, settled = true;
    std::vector<AlertSheet> sheets;
    std::deque<std::function<void(int)>> completions;
    QObject object;
};

struct FakeUtils : ZQCommonUtils {
    explicit FakeUtils(Calls &calls) : calls(calls) {}
    void initWithCommAppInfo(const CommAppInfo &info, MainWindowFace &) override {
        calls.note("initWithCommAppInfo");
        current = info;
    }
    void setAppInfo(const CommAppInfo &info) override {
        calls.note("setAppInfo");
        current = info;
    }
    void checkSilent() override { calls.note("checkSilent"); }
    void stopWaiting() override { waits = false; }
    void dispose() override { calls.note("dispose"); }

    Calls &calls;
    CommAppInfo current;
    bool waits = true;
};

struct FakeApplication : Application {
    explicit FakeApplication(Calls &calls) : calls(calls) {}
    QString bundlePath() const override { return "/opt/cantorel"; }
    foundation::Result<void> startShell(const QString &command) override {
        if (!hasShell)
            return foundation::Failure{QStringLiteral("no shell"), QStringLiteral("no shell")};
        calls.note("sh " + command);
        return {};
    }
    void quit() override { calls.note("quit"); }

    Calls &calls;
    bool hasShell = true;
};

// Tasks that wait for the test to run them.
struct HeldTasks : BackgroundTasks {
    explicit HeldTasks(Calls &calls) : calls(calls) {}
    void run(std::function<void()> task) override {
        calls.note("background");
        tasks.push_back(std::move(task));
    }
    void finish() override { tasks.clear(); }
    void runAll() {
        for (const auto &task : std::exchange(tasks, {}))
            task();
        QCoreApplication::processEvents();
    }

    Calls &calls;
    std::vector<std::function<void()>> tasks;
};

struct FakeAsker : Asker {
    explicit FakeAsker(Calls &calls) : calls(calls) {}
    void tell(const QString &, const QString &message, AlertStyle, QObject *) override {
        calls.note("told " + message);
    }
    int ask(const QString &, const QString &, const QStringList &, QObject *) override { return 0; }
    QString askForNewFile(const QString &, const QString &) override { return {}; }
    Calls &calls;
};

// A script host whose script installs the virtual device, unless it is told to fail.
struct InstallingHost : desktop::ScriptHost {
    explicit InstallingHost(EmbeddedWorld &world) : world(world) {}
    foundation::Result<void> compile(const QString &) override { return {}; }
    foundation::Result<QString> execute(const QString &) override {
        if (fails)
            return foundation::Failure{QStringLiteral("It failed."), QStringLiteral("status 1")};
        world.virtualInstalled = true;
        world.clock->sleepFor(
            std::chrono::seconds(1)); // The devices are looked at now and then; no timer calls meanwhile.
        return QString();
    }
    EmbeddedWorld &world;
    bool fails = false;
};

// The program's start and end over software devices, with a window, services and an application that only note.
struct AppFixture : testing::Test {
    explicit AppFixture(EmbeddedWorld::Virtual installed = EmbeddedWorld::Virtual::Installed) : world(installed) {
        auto owned = std::make_unique<InstallingHost>(world);
        scripts = owned.get();
        desktop::Services made;
        made.scripts = std::move(owned);
        services = std::make_unique<desktop::InstalledServices>(std::move(made));
    }
    ~AppFixture() override {
        delegate.reset();
        ZQAudioKextKit::end();
    }
    void launch() { delegate->applicationDidFinishLaunching(); }
    static QByteArray log() { return contents(LogFilePath(kApplicationLogName)); }

    EmbeddedWorld world;
    Calls calls;
    FakeWindow window{calls};
    FakeUtils utils{calls};
    FakeApplication application{calls};
    HeldTasks background{calls};
    FakeAsker asker{calls};
    InstalledAsker installedAsker{asker};
    InstallingHost *scripts = nullptr;
    std::unique_ptr<desktop::InstalledServices> services;
    std::unique_ptr<AppDelegate> delegate = std::make_unique<AppDelegate>(
        AppDelegate::Parts{.application = application,
                           .mainWindow = window,
                           .commonUtils = utils,
                           .background = background,
                           .clock = *world.clock,
                           .refreshRecognition = [this] { calls.note("refreshRecognition"); }});
};

} // namespace cantorel::test
