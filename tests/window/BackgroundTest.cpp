// The window out of sight: what the desktop tells of it, and how it is left and found again.

#include "platform/desktop/recorded/RecordedMediaControls.h"
#include "platform/desktop/recorded/RecordedNotifications.h"
#include "recording/control/ListRequests.h"
#include "tests/support/PrivateBus.h"
#include "tests/window/WindowFixture.h"
#include "ui/LibraryTab.h"

#include <QAbstractButton>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QLabel>
#include <QSystemTrayIcon>

namespace cantorel {
namespace {

using desktop::Notification;

const QString kReady = "ready", kSign = "sign";
const QString kFolder = "show-in-folder", kStop = "stop";

class Background : public test::WindowFixture {
public:
    explicit Background(std::shared_ptr<desktop::CallRecord> calls = std::make_shared<desktop::CallRecord>())
        : WindowFixture(test::EmbeddedWorld::Virtual::Installed, withoutSleep(calls)), record(std::move(calls)) {
        QObject::connect(&window, &ui::MainWindow::mayEnd, &window, [this] { ++quits; });
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    }
    static desktop::Services withoutSleep(const std::shared_ptr<desktop::CallRecord> &calls) {
        desktop::Services services = desktop::recordedServices(calls);
        services.sleep.reset(); // It would note each recording.
        return services;
    }
    static desktop::RecordedNotifications &desktopMessages() {
        return static_cast<desktop::RecordedNotifications &>(*desktop::InstalledServices::current().notifications);
    }
    void stop() {
        recorder.stopByHand();
        ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
        pass(50);
    }
    void hideWhileRecording() {
        recordByButton();
        window.close();
        press("leave0");
        ASSERT_TRUE(session.isRecording());
    }
    void press(const char *button) {
        click(button);
        pass(50);
    }
    // A task of tomorrow.
    void addTask(const char *name) {
        const QDateTime start = QDateTime::currentDateTime().addDays(1);
        ASSERT_TRUE(taskList.add({name, start, start.addSecs(60), 1, false}));
        pass(1100);
    }
    bool asks() { return find<QWidget>("leave")->isVisible(); }

    std::shared_ptr<desktop::CallRecord> record;
    int quits = 0;
};

TEST_F(Background, TheLatestFileIsTakenToItsFolderOrTheWindow) {
    recordByButton();
    session.splitRecording();
    ASSERT_TRUE(passUntil([&] { return list.items().size() == 2 && panel.state() == RecorderState::Recording; }));
    pass(2000);
    stop();
    const QString file = list.items().back()->getFileName();
    EXPECT_EQ(record->calls().filter("notify ready: "),
              (QStringList{QStringLiteral("notify ready: The recording is ready | Track1.mp3 | Show the main window | "
                                          "Show in folder"),
                           QStringLiteral("notify ready: The recording is ready | Track2.mp3 | Show the main window | "
                                          "Show in folder")}));
    window.showMinimized();
    desktopMessages().press(kReady, kFolder);
    EXPECT_EQ(record->calls().last(), "reveal " + file);
    EXPECT_TRUE(window.isMinimized());

    recordByButton();
    stop();
    window.showMinimized();
    desktopMessages().press(kReady, Notification::click());
    EXPECT_FALSE(window.isMinimized());
}

TEST_F(Background, AFileThatHasGoneIsLookedForInTheWindow) {
    recordByButton();
    stop();
    ASSERT_TRUE(QFile::remove(list.items().back()->getFileName()));
    window.showMinimized();
    desktopMessages().press(kReady, kFolder);
    EXPECT_FALSE(window.isMinimized());
}

TEST_F(Background, WhoLooksAtTheWindowIsNotTold) {
    QApplication::setActiveWindow(&window); // There is no window manager to do it.
    recordByButton();
    stop();
    EXPECT_TRUE(record->calls().filter("notify").isEmpty());
}

TEST_F(Background, WithoutATrayALastingMessageStandsForTheHiddenRecording) {
    hideWhileRecording();
    EXPECT_FALSE(window.isVisible());
    EXPECT_TRUE(desktopMessages().isShown(kSign));
    session.splitRecording();
    ASSERT_TRUE(passUntil([&] { return list.items().size() == 2 && panel.state() == RecorderState::Recording; }));
    EXPECT_TRUE(desktopMessages().isShown(kSign)) << "the next file is the same recording";
    pass(2000);
    desktopMessages().press(kSign, kStop);
    EXPECT_FALSE(session.isRecording());
    EXPECT_FALSE(desktopMessages().isShown(kSign));
    EXPECT_TRUE(window.isMinimized()) << "nothing else would lead to it";
    ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
    EXPECT_TRUE(desktopMessages().isShown(kReady));
    EXPECT_EQ(quits, 0);
}

TEST_F(Background, AMessageThatIsPutAwayGivesTheWindowBackAndAShownWindowNeedsNone) {
    hideWhileRecording();
    desktopMessages().putAway(kSign);
    EXPECT_TRUE(window.isMinimized());
    window.close();
    press("leave0");
    EXPECT_FALSE(window.isVisible());
    desktopMessages().press(kSign, Notification::click());
    EXPECT_TRUE(window.isVisible() && !window.isMinimized());
    EXPECT_FALSE(desktopMessages().isShown(kSign));
    stop();
    EXPECT_FALSE(window.isMinimized());
}

TEST_F(Background, WhereNobodyShowsMessagesTheWindowIsMinimised) {
    desktopMessages().hasServer = false;
    hideWhileRecording();
    EXPECT_TRUE(window.isMinimized());
    stop();
    EXPECT_TRUE(window.isMinimized());
}

TEST_F(Background, ATaskAheadIsNamedBeforeTheProgramEnds) {
    recorder.schedule().initScheduleTaskList();
    addTask("News [#AppName#]");
    window.close();
    EXPECT_TRUE(find<QLabel>("leaveText")->text().contains("'News [#AppName#]'"));
    photograph(window, "task-ahead");
    press("leaveClose");
    EXPECT_FALSE(window.isMinimized());
    window.close();
    press("leave0");
    EXPECT_TRUE(window.isMinimized()) << "no tray here";
    EXPECT_TRUE(record->calls().filter("notify").isEmpty());
    EXPECT_EQ(quits, 0);
    window.close();
    press("leave1");
    EXPECT_EQ(quits, 1);
}

TEST_F(Background, ATaskThatIsOverKeepsNothingOpen) {
    recorder.schedule().initScheduleTaskList();
    addTask("News");
    ASSERT_TRUE(taskList.removeNamed("News"));
    pass(1100);
    window.close();
    EXPECT_EQ(quits, 1);
}

TEST_F(Background, WhoeverAsksForTheWindowWhileItIsAboutToEndKeepsIt) {
    recordByButton();
    window.close();
    press("leave1");
    EXPECT_FALSE(window.isVisible());
    ASSERT_FALSE(session.isSettled()) << "it waits for the conversion";
    window.showAgain();
    ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
    pass(50);
    EXPECT_EQ(quits, 0);
    EXPECT_TRUE(window.isVisible());
}

TEST_F(Background, MediaKeysReachTheLibraryAndTheWindow) {
    recordByButton();
    stop();
    auto &player = window.library().player();
    ASSERT_TRUE(player.play(list.items().back()->getFileName()));
    auto &media = static_cast<desktop::RecordedMediaControls &>(*desktop::InstalledServices::current().media);
    ASSERT_NE(media.commands, nullptr);
    media.commands->playOrPause();
    EXPECT_FALSE(player.isPlaying());
    media.commands->seek(1);
    EXPECT_EQ(record->calls().last(), "media jump");
    window.showMinimized();
    media.commands->showWindow();
    EXPECT_FALSE(window.isMinimized());
    recordByButton();
    EXPECT_FALSE(media.state.canPlay) << "it would be recorded";
    media.commands->quit();
    EXPECT_TRUE(asks()) << "something is recorded";
    press("leaveClose");
    stop();
    EXPECT_TRUE(media.state.canPlay);
}

// A desktop with a tray; it has to be there before the window.
struct DesktopTray {
    DesktopTray() {
        tray.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        tray.start(QStringLiteral(CANTOREL_TRAY));
        EXPECT_TRUE(tray.waitForReadyRead());
        EXPECT_EQ(tray.readLine(), "ready\n");
    }
    ~DesktopTray() {
        tray.terminate();
        tray.waitForFinished();
    }
    test::PrivateBus bus;
    QProcess tray;
};

class BackgroundWithTray : public DesktopTray, public Background {};

TEST_F(BackgroundWithTray, AClosedWindowWaitsForTheTaskThereAndSaysSoOnce) {
    ASSERT_TRUE(QSystemTrayIcon::isSystemTrayAvailable());
    recorder.schedule().initScheduleTaskList();
    addTask("News");
    for (int round = 0; round < 2; ++round) {
        window.close();
        EXPECT_FALSE(window.isVisible());
        EXPECT_FALSE(asks());
        EXPECT_EQ(quits, 0);
        window.bringToFront();
    }
    const QStringList told = record->calls().filter("notify ");
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told.first().contains("'News'"));

    QApplication::setActiveWindow(&window);
    QTest::keyClick(&window, Qt::Key_Q, Qt::ControlModifier);
    EXPECT_TRUE(asks()) << "whoever quits means it, but is told";
    press("leave0");
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(quits, 0);
}

TEST_F(BackgroundWithTray, AHiddenRecordingNeedsNoOtherSign) {
    hideWhileRecording();
    EXPECT_FALSE(window.isVisible());
    EXPECT_FALSE(desktopMessages().isShown(kSign));
    stop();
    EXPECT_FALSE(window.isVisible()) << "it stays in the tray";
}

class StatusItemTest : public BackgroundWithTray {
public:
    StatusItemTest() {
        window.library(); // The item comes with what stands behind the first picture.
        EXPECT_TRUE(test::eventually([this] {
            QTest::qWait(10);
            return tray.canReadLine();
        }));
        mItem = QString::fromUtf8(tray.readLine()).trimmed();
    }
    // A click on the item, as the desktop tells it.
    void clickItem() {
        QDBusMessage call =
            QDBusMessage::createMethodCall(mItem, "/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate");
        call << 0 << 0;
        auto pending = QDBusConnection::sessionBus().asyncCall(call);
        ASSERT_TRUE(QTest::qWaitFor([&] { return pending.isFinished(); }));
        EXPECT_FALSE(pending.isError()) << pending.error().message().toStdString();
        pass(50);
    }

private:
    QString mItem;
};

TEST_F(StatusItemTest, AClickHidesAndShowsTheWindow) {
    clickItem();
    EXPECT_FALSE(window.isVisible());
    clickItem();
    EXPECT_TRUE(window.isVisible());
}

TEST_F(StatusItemTest, KeepsARecordingInSightWhoseWindowIsClosed) {
    click("record");
    ASSERT_TRUE(passUntil([&] { return panel.state() == RecorderState::Recording; }));
    window.close();
    clickItem();
    EXPECT_TRUE(window.isVisible()) << "the question is not hidden";
    press("leave0");
    EXPECT_FALSE(window.isVisible());
    EXPECT_TRUE(session.isRecording());
    clickItem();
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(panel.state(), RecorderState::Recording);
}

} // namespace
} // namespace cantorel
