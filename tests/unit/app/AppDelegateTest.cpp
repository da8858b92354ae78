#include "lang/Lang.h"
#include "log/Log.h"
#include "recording/library/RecordedAudioInfo.h"
#include "settings/SettingsTable.h"
#include "settings/UserDefaultFunctions.h"
#include "tests/unit/app/AppFixture.h"
#include "util/tools/Tools.h"

#include <QTemporaryDir>

namespace cantorel::test {
namespace {

constexpr int kAgree = 1000, kRefuse = 1001;

const QStringList kLaunch = {"initWithCommAppInfo",
                             "checkSilent",
                             "background", // the links
                             "setAudioInputSelectedStatus",
                             "setUpTitleBar",
                             "changeLanguageText",
                             "makeKeyAndOrderFront",
                             "initCaptureSession",
                             "startCheckingUpdates",
                             "background"}; // the recognition service

QString aggregateKey() { return setting::kOldAggregateSubDeivceUIDs; }

struct LaunchTest : AppFixture {};
struct MissingDriverTest : AppFixture {
    MissingDriverTest() : AppFixture(EmbeddedWorld::Virtual::Missing) {}
};

TEST_F(LaunchTest, FollowsTheFixedOrderAndFrontsTheWindowTwiceAfterTwoSeconds) {
    AppSettings::setRecordingOutputDeviceName("of the run before");
    launch();
    EXPECT_EQ(calls.take(), kLaunch);
    EXPECT_EQ(AppSettings::getRecordingOutputDeviceName(), QString());
    EXPECT_EQ(ZQUserDefaultGetNSIntegerValue("NSInitialToolTipDelay", 0), 10);
    EXPECT_EQ(utils.current.identify, "Cantorel");
    EXPECT_EQ(utils.current.version, "2.5.0");
    EXPECT_TRUE(log().contains("App version: 2.5.0\n"));

    background.runAll();
    EXPECT_EQ(calls.take(), QStringList{"refreshRecognition"});
    world.advance(1999);
    EXPECT_TRUE(calls.take().isEmpty());
    world.advance(1);
    EXPECT_EQ(calls.take(), (QStringList{"changeLanguageText", "makeKeyAndOrderFront", "makeKeyAndOrderFront"}));
    world.advance(10'000);
    EXPECT_TRUE(calls.take().isEmpty());
}

TEST_F(LaunchTest, ADialogKeepsTheFocusWhenTheWindowComesToTheFrontAgain) {
    launch();
    calls.take();
    window.hasDialog = true;
    world.advance(2000);
    EXPECT_EQ(calls.take(), QStringList{"changeLanguageText"});
}

TEST_F(LaunchTest, AnExceptionEndsTheSequenceIsLoggedAndLeavesWhatWasDone) {
    Tools::log("the program begins");
    for (const QString &failing : kLaunch) {
        calls.failing = failing;
        window.mainWindowDelegate = nullptr;
        launch();
        EXPECT_EQ(calls.take(), kLaunch.first(kLaunch.indexOf(failing))) << failing.toStdString();
        EXPECT_TRUE(log().contains("*NSException*\n std::runtime_error -> planned failure of " + failing.toUtf8()))
            << failing.toStdString();
        calls.failing.clear();
        world.advance(3000);
        EXPECT_TRUE(calls.take().isEmpty()) << "no later step after " << failing.toStdString();
    }
    launch();
    EXPECT_EQ(calls.take(), kLaunch);
}

TEST_F(LaunchTest, ALeftBehindVirtualDefaultIsResetBeforeTheCaptureSessionIsMade) {
    ASSERT_TRUE(ZQAudioKextKit::activateSVAD());
    ASSERT_TRUE(ZQAudioKextKit::changeAudioOutputDeviceWithName(kTessolarAudioDeviceName));
    ZQAudioKextKit::end();
    launch();
    EXPECT_EQ(ZQAudioKextKit::getDefaultAudioOutputName(), "Built-in Output");
}

TEST_F(LaunchTest, DebugModeAsksNoRecognitionService) {
    qputenv("CANTOREL_DEBUG", "1");
    launch();
    EXPECT_EQ(calls.take(), kLaunch.first(kLaunch.size() - 1));
}

TEST_F(LaunchTest, EditorAndConverterHideBelowTheirToolkit) {
    const struct {
        double toolkit;
        bool hidden;
    } cases[] = {{1137.49, true}, {1137.5, false}, {1138, false}, {0, true}};
    for (const auto &[toolkit, hidden] : cases) {
        desktop::InstalledServices::current().version.toolkitVersion = toolkit;
        window.applicationDidFinishLaunching();
        EXPECT_EQ(calls.take().contains("hideEditorAndConverter"), hidden) << toolkit;
    }
}

TEST_F(LaunchTest, TheWindowLoadsTheSavedLanguageAndListensToTheNextOnes) {
    const QTemporaryDir resources;
    QDir(resources.path()).mkdir("lang");
    store(resources.filePath("lang/German.xml"), "<l><common Title='Auf Deutsch'/></l>");
    qputenv("CANTOREL_RESOURCES", resources.path().toUtf8());
    AppSettings::setAppLanguage("German");
    window.applicationDidFinishLaunching();
    EXPECT_EQ(Lang::commTitle(), "Auf Deutsch");
    calls.take();
    auto &center = foundation::NotificationCenter::defaultCenter();
    center.post(kNotificationChangeLanguage, QStringLiteral("French"));
    center.post(kNotificationRecordedAudioInfoStatusDidChange, RecordedStatusChange{});
    EXPECT_EQ(calls.take(), (QStringList{"changeLanguageText", "list"}));
}

TEST_F(LaunchTest, NewProductInformationIsHandedOnAndShown) {
    launch();
    calls.take();
    CommAppInfo info = CommAppInfo::current();
    info.forumURL = "https://elsewhere.example/";
    foundation::NotificationCenter::defaultCenter().post(kNotificationAppInfoUpdate, info);
    EXPECT_EQ(calls.take(), (QStringList{"setAppInfo", "changeLanguageText"}));
    EXPECT_EQ(utils.current, info);
}

TEST_F(MissingDriverTest, IsOfferedInASheetAndARefusalChangesNothing) {
    launch();
    const QString text = Tools::fillTextMarkers(Lang::commErrorNoVirtualSoundCard());
    EXPECT_FALSE(text.contains("[#"));
    QStringList expected = kLaunch.first(kLaunch.indexOf("initCaptureSession"));
    expected << "sheet " + text;
    EXPECT_EQ(calls.take(), expected);
    ASSERT_EQ(window.sheets.size(), 1U);
    EXPECT_EQ(window.sheets[0].style, AlertStyle::Warning);
    EXPECT_EQ(window.sheets[0].messageText, AppSettings::appName());
    EXPECT_EQ(window.sheets[0].buttons, (QStringList{Lang::btnYes(), Lang::btnNo()}));
    window.answer(kRefuse);
    background.runAll();
    EXPECT_EQ(calls.take(), QStringList{"startCheckingUpdates"});
    EXPECT_FALSE(world.virtualInstalled);
}

TEST_F(MissingDriverTest, IsOfferedOnceASoundServerHasComeForTheFirstTimeThoughItHasNoDevices) {
    for (const char *device : {"builtin_output", "builtin_microphone"})
        world.backend->unplug(device);
    for (const bool launched : {false, true, true}) {
        world.backend->loseServer(true);
        QCoreApplication::processEvents();
        if (!launched)
            launch();
        EXPECT_EQ(window.sheets.size(), launched ? 1U : 0U);
        world.backend->loseServer(false);
        QCoreApplication::processEvents();
        EXPECT_EQ(window.sheets.size(), 1U);
    }
}

TEST_F(MissingDriverTest, IsInstalledOnYesAndThenTheProgramStartsAgain) {
    launch();
    background.runAll();
    calls.take();
    window.answer(kAgree);
    EXPECT_EQ(calls.take(), (QStringList{"background", "startCheckingUpdates"}));
    background.runAll();
    ASSERT_EQ(window.sheets.size(), 2U);
    EXPECT_EQ(window.sheets[1].informativeText,
              Tools::fillTextMarkers(Lang::commInstalledSuccess() + "." + Lang::commNeedRelaunch()));
    EXPECT_EQ(window.sheets[1].style, AlertStyle::Critical);
    EXPECT_EQ(window.sheets[1].buttons, QStringList{Lang::btnYes()});
    calls.take();
    window.answer(kAgree);
    EXPECT_EQ(calls.take(), (QStringList{"sh sleep 1.000000; open \"/opt/cantorel\"", "quit", "close"}));
}

TEST_F(MissingDriverTest, AFailedInstallIsToldAndNothingStartsAgain) {
    scripts->fails = true;
    launch();
    background.runAll();
    calls.take();
    window.answer(kAgree);
    background.runAll();
    EXPECT_EQ(calls.take(), (QStringList{"told " + Lang::commInstalledFailed(), "startCheckingUpdates"}));
}

TEST_F(MissingDriverTest, AnExceptionOfTheInstallIsLoggedAndUpdatesAreCheckedStill) {
    launch();
    calls.take();
    calls.failing = "background";
    window.answer(kAgree);
    EXPECT_EQ(calls.take(), QStringList{"startCheckingUpdates"});
    EXPECT_TRUE(log().contains("planned failure of background"));
}

TEST_F(LaunchTest, TheAggregateIsMadeAnewOnlyForBothSourcesAndOnlyWhenItsMicrophoneChanged) {
    for (const int type : {0, 1}) {
        AppSettings::setAudioType(type);
        launch();
        EXPECT_TRUE(calls.take().contains("initCaptureSession")) << type;
        EXPECT_EQ(background.tasks.size(), 2U);
        background.tasks.clear();
    }
    AppSettings::setAudioType(2);
    launch();
    EXPECT_TRUE(calls.take().contains("initCaptureSession waits")) << "there is none yet";
    background.runAll();
    const QVariantMap saved = ZQUserDefaultGetObjectValue(aggregateKey(), {}).toMap();
    EXPECT_FALSE(saved.value(kAggregateInputUID).toString().isEmpty());
    ASSERT_EQ(window.sheets.size(), 1U);
    EXPECT_EQ(window.sheets[0].informativeText, Lang::settingsConfigureDidChange());
    EXPECT_EQ(window.sheets[0].style, AlertStyle::Critical);
    EXPECT_EQ(window.sheets[0].buttons, QStringList{Lang::btnYes()});

    EXPECT_TRUE(delegate->MainWindowCheckAggreateDevice(window)) << "now it matches";
    QVariantMap other = saved;
    other[kAggregateInputUID] = "another microphone";
    ZQUserDefaultSetValue_Object(other, aggregateKey());
    EXPECT_FALSE(delegate->MainWindowCheckAggreateDevice(window));
    background.runAll();
    EXPECT_EQ(ZQUserDefaultGetObjectValue(aggregateKey(), {}).toMap(), saved);
    calls.take();
    window.settled = false;
    window.answer(kAgree);
    world.advance(60000);
    EXPECT_FALSE(calls.take().contains("quit")) << "a recording is closed and converted first";
    EXPECT_TRUE(utils.waits);
    window.settled = true;
    world.advance(500);
    EXPECT_EQ(calls.take(), (QStringList{"sh sleep 1.000000; open \"/opt/cantorel\"", "quit", "close"}));
    EXPECT_FALSE(utils.waits) << "an update server that does not answer holds up nobody";
}

// A recording that begins meanwhile has the device made at once; it is not made again, and nobody is told.
TEST_F(LaunchTest, TheAggregateThatARecordingHasMadeIsNotMadeAgain) {
    AppSettings::setAudioType(2);
    launch();
    ZQUserDefaultSetValue_Object(ZQAudioKextKit::renewAggregateDevice({}), aggregateKey());
    const AudioDeviceID made = EmbeddedWorld::deviceNamed("Tessolar_AggregateDevice");
    background.runAll();
    EXPECT_TRUE(window.sheets.empty());
    EXPECT_EQ(EmbeddedWorld::deviceNamed("Tessolar_AggregateDevice"), made);
}

TEST_F(MissingDriverTest, AnAggregateThatCannotBeMadeIsNeitherSavedNorTold) {
    AppSettings::setAudioType(2);
    world.backend->unplug("builtin_output"); // whose sound would take the virtual device's place
    launch();
    background.runAll();
    calls.take();
    EXPECT_FALSE(delegate->MainWindowCheckAggreateDevice(window));
    background.runAll();
    EXPECT_EQ(calls.take(), QStringList{"background"});
    EXPECT_TRUE(ZQUserDefaultGetObjectValue(aggregateKey(), {}).isNull());
}

TEST_F(LaunchTest, AChangedDefaultIsToldOnlyForOwnDevicesAndOutsideOfRecordings) {
    launch();
    background.runAll();
    const struct {
        QVariantMap device;
        bool recording, preparing, input, output;
    } cases[] = {
        {{{"AudioDevice_name", "Tessolar_AudioDevice"}}, false, false, true, true},
        {{{"AudioDevice_name", "System Sound"}}, false, false, true, true},
        {{{"AudioDevice_name", "Tessolar_AggregateDevice"}}, false, false, true, true},
        {{{"AudioDevice_name", "System Sound"}}, false, true, true, false},
        {{{"AudioDevice_name", "System Sound"}}, true, false, false, false},
        {{{"AudioDevice_name", "system sound"}}, false, false, false, false},
        {{{"AudioDevice_name", "Built-in Output"}}, false, false, false, false},
        {{{"AudioDevice_id", 3}}, false, false, false, false},
        {{}, false, false, false, false},
    };
    auto &center = foundation::NotificationCenter::defaultCenter();
    const auto told = [&](const QString &text) {
        calls.take();
        QCoreApplication::processEvents();
        return calls.take().contains("sheet " + text);
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.device.value("AudioDevice_name").toString().toStdString());
        window.recording = c.recording;
        window.preparing = c.preparing;
        center.post(kNotificationDefaultInputDidChange, c.device);
        EXPECT_EQ(told(Lang::commDefaultAudioInputDeviceUnavailable()), c.input);
        center.post(kNotificationDefaultOutputDidChange, c.device);
        EXPECT_EQ(told(Lang::commDefaultAudioOutputDeviceUnavailable()), c.output);
    }
}

TEST_F(LaunchTest, TheSystemsOwnNewsOfADefaultReachesTheWindow) {
    launch();
    ASSERT_TRUE(ZQAudioKextKit::changeAudioOutputDeviceWithName(kTessolarAudioDeviceName));
    for (int i = 0; i < 100 && window.sheets.empty(); ++i) {
        world.advance(10);
        QCoreApplication::processEvents();
    }
    ASSERT_EQ(window.sheets.size(), 1U);
    EXPECT_EQ(window.sheets[0].style, AlertStyle::Informational);
    EXPECT_EQ(window.sheets[0].buttons, (QStringList{Lang::btnCancel(), Lang::btnOK()}));
}

TEST_F(LaunchTest, TheFirstButtonWhichSaysCancelDeliberatelyOpensThePreferences) {
    launch();
    world.advance(3000);
    for (const int code : {kRefuse, kAgree}) {
        foundation::NotificationCenter::defaultCenter().post(kNotificationDefaultInputDidChange,
                                                             QVariantMap{{"AudioDevice_name", "System Sound"}});
        QCoreApplication::processEvents();
        calls.take();
        window.answer(code);
        world.advance(249);
        EXPECT_TRUE(calls.take().isEmpty());
        world.advance(1);
        EXPECT_EQ(calls.take(), code == kAgree ? QStringList{"preferences"} : QStringList());
    }
}

TEST_F(LaunchTest, QuittingGivesTheDevicesBackAndThenReleasesTheServices) {
    launch();
    ASSERT_TRUE(ZQAudioKextKit::setSVAD());
    ASSERT_EQ(ZQAudioKextKit::getDefaultAudioOutputName(), kTessolarAudioDeviceName);
    calls.take();
    application.terminate();
    EXPECT_EQ(calls.take(), (QStringList{"dispose", "quit"}));
    EXPECT_EQ(ZQAudioKextKit::getDefaultAudioOutputName(), "Built-in Output");
    application.terminate();
    EXPECT_TRUE(calls.take().isEmpty());
}

TEST_F(LaunchTest, QuittingForARelaunchGivesTheDevicesBackButKeepsTheServices) {
    launch();
    ASSERT_TRUE(ZQAudioKextKit::setSVAD());
    calls.take();
    application.willEnd = [this] { calls.note("willEnd"); };
    foundation::NotificationCenter::defaultCenter().post(kNotificationRelaunchAfterUpdate, RelaunchRequest{});
    EXPECT_EQ(calls.take(), (QStringList{"sh sleep 1.000000; open \"/opt/cantorel\"", "willEnd", "quit", "close"}));
    EXPECT_EQ(ZQAudioKextKit::getDefaultAudioOutputName(), "Built-in Output");
    EXPECT_TRUE(delegate->applicationShouldTerminate());
    EXPECT_EQ(calls.take(), QStringList{"dispose"}) << "the relaunch is over";
}

TEST_F(LaunchTest, ARelaunchWithoutAShellLosesNothing) {
    launch();
    calls.take();
    application.hasShell = false;
    delegate->needRelaunchApp();
    EXPECT_EQ(calls.take(), QStringList{"told no shell"});
}

TEST_F(LaunchTest, NothingReachesADelegateThatIsGone) {
    AppSettings::setAudioType(2);
    launch();
    background.runAll();
    foundation::NotificationCenter::defaultCenter().post(kNotificationDefaultInputDidChange,
                                                         QVariantMap{{"AudioDevice_name", "System Sound"}});
    delegate.reset();
    calls.take();
    QCoreApplication::processEvents();
    world.advance(5000);
    window.answer(kAgree);
    application.terminate();
    EXPECT_EQ(calls.take(), QStringList{"quit"});
}

} // namespace
} // namespace cantorel::test
