#include "recording/library/RecordingsModel.h"
#include "tests/support/Unfinished.h"
#include "tests/window/WindowFixture.h"
#include "ui/AlertAsker.h"
#include "ui/LibraryTab.h"
#include "ui/look/Look.h"
#include "util/tools/UpdateCheck.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTableView>
#include <QToolButton>

namespace cantorel {
namespace {

using MainWindow = test::WindowFixture;

TEST_F(MainWindow, RecordsPausesSplitsAndStops) {
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    photograph(window, "record-idle");
    click("record");
    ASSERT_TRUE(passUntil([&] { return panel.state() == RecorderState::Recording; }));
    pass(12'000);
    EXPECT_EQ(find<QLabel>("elapsed")->text(), "00:00:12");
    photograph(window, "record-running");
    click("pause");
    pass(1000);
    EXPECT_EQ(panel.state(), RecorderState::Paused);
    EXPECT_EQ(find<QAbstractButton>("pause")->text(), Lang::btnResume());
    photograph(window, "record-paused");
    click("pause");
    pass(1000);
    click("split");
    ASSERT_TRUE(passUntil([&] { return list.items().size() == 2; }));
    pass(3000);
    click("record");
    ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
    EXPECT_EQ(panel.state(), RecorderState::Idle);
    EXPECT_EQ(list.items().size(), 2u);
    photograph(window, "record-ended");
}

TEST_F(MainWindow, TheMicrophoneIsChosenFromItsNameAndFollowsTheDesktop) {
    const QString own = "Built-in Microphone", other = "USB & Stage";
    world.backend->plug(hal::EmbeddedBackend::plainDevice("usb", other, 2, 0));
    ZQAudioKextKit::addSystemAudioDeviceChangeListener();
    window.show();
    auto *microphone = find<QToolButton>("microphone");
    EXPECT_FALSE(microphone->isVisible()) << "system sound needs none";
    click("source1");
    EXPECT_TRUE(microphone->isVisible());
    EXPECT_EQ(microphone->text(), own);
    Q_EMIT microphone->menu()->aboutToShow();
    QStringList names, checked;
    for (const QAction *action : microphone->menu()->actions()) {
        names << action->text();
        if (action->isChecked())
            checked << action->text();
    }
    EXPECT_EQ(names, QStringList({own, "USB && Stage"})) << "without our own devices";
    EXPECT_EQ(checked, QStringList{own});
    microphone->menu()->actions().constLast()->trigger();
    EXPECT_TRUE(passUntil([&] { return ZQAudioKextKit::getDefaultAudioInputName() == other; }));
    EXPECT_TRUE(passUntil([&] { return microphone->text() == other; }));
    EXPECT_EQ(AppSettings::getMicrophone(), other);
    world.backend->unplug("usb");
    EXPECT_TRUE(passUntil([&] { return microphone->text() == own; })) << "the desktop takes another one";
    click("source2");
    EXPECT_EQ(find<QLabel>("device")->text(), "Built-in Output + ");
    click("record");
    ASSERT_TRUE(passUntil([&] { return panel.state() == RecorderState::Recording; }));
    EXPECT_FALSE(microphone->isEnabled());
}

TEST_F(MainWindow, EachSourceHasALaneAndTheOtherTakesNothingFromIt) {
    window.show();
    AppSettings::setAudioType(2);
    world.backend->setSource("builtin_microphone", test::constant(0));
    recordByButton();
    const auto lit = [this](const char *meter) {
        return QAccessible::queryAccessibleInterface(find<QWidget>(meter))->valueInterface()->currentValue().toInt();
    };
    EXPECT_GT(lit("meter"), 5);
    EXPECT_LE(lit("microphoneMeter"), 1);
    EXPECT_GT(panel.history().column(panel.history().size() - 1).level, 0.25F) << "the picture shows the louder one";
    EXPECT_NE(find<QWidget>("meter")->accessibleName(), find<QWidget>("microphoneMeter")->accessibleName());
    photograph(window, "record-both");
    window.resize(560, 420);
    photograph(window, "record-both-smallest");
    click("record");
    ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
    AppSettings::setAudioType(0);
    recordByButton();
    EXPECT_FALSE(find<QWidget>("microphoneMeter")->isVisible());
}

TEST_F(MainWindow, WhereTheSourceLineHasNoRoomTheChosenSourceAloneIsNamed) {
    AppSettings::setAudioType(2);
    window.resize(560, 420);
    window.show();
    for (const int type : {0, 1, 2}) {
        auto *choice = find<QAbstractButton>(qPrintable(QStringLiteral("source%1").arg(type)));
        EXPECT_EQ(choice->text().isEmpty(), type != 2);
        EXPECT_FALSE(choice->accessibleName().isEmpty());
    }
    photograph(window, "record-idle-smallest");
    window.resize(820, 600);
    pass(50);
    EXPECT_FALSE(find<QAbstractButton>("source0")->text().isEmpty());
}

TEST_F(MainWindow, AResultIsRenamedWhereItIsShown) {
    window.show();
    AppSettings::setAudioFormat(4);
    recordByButton();
    click("record");
    ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
    test::store(path("Taken.wav"), "x");
    auto *name = find<QLineEdit>("resultName");
    const struct {
        const char *entered;
        Qt::Key key;
        bool isRenamed, goesOn;
    } cases[] = {{"Rain", Qt::Key_Escape, false, false},
                 {"Taken", Qt::Key_Return, false, true},
                 {"", Qt::Key_Return, false, true},
                 {"Rain", Qt::Key_Return, true, false}};
    const QString before = list.items().front()->getFileName();
    for (const auto &[entered, key, isRenamed, goesOn] : cases) {
        if (!name->isVisible())
            click("renameResult");
        EXPECT_TRUE(name->hasSelectedText() || goesOn || isRenamed);
        name->setText(entered);
        photograph(window, QStringLiteral("result-rename-%1").arg(entered));
        QTest::keyClick(name, key);
        EXPECT_EQ(name->isVisible(), goesOn) << entered;
        EXPECT_NE(find<QLabel>("result")->isVisible(), goesOn) << entered;
        EXPECT_EQ(list.items().front()->getFileName(), isRenamed ? path("Rain.wav") : before) << entered;
    }
    EXPECT_TRUE(find<QLabel>("result")->text().startsWith("Rain.wav"));
    EXPECT_TRUE(QFile::exists(path("Rain.wav")));
}

TEST_F(MainWindow, ARecordingThatIsNamedByHandIsNamedOnThePage) {
    const InstalledAsker asker(window.alerts());
    AppSettings::setIsAutoGenFileName(false);
    AppSettings::setAudioFormat(4);
    test::store(path("Rain.wav"), "x");
    window.show();
    auto *name = find<QLineEdit>("recordingName");
    ASSERT_TRUE(name->isVisible());
    click("record");
    pass(50);
    EXPECT_EQ(panel.state(), RecorderState::Idle);
    EXPECT_EQ(find<QLabel>("sentence")->text(), Lang::windowEnterRecordingName());
    photograph(window, "record-unnamed");
    QTest::keyClicks(name, " Rain ");
    QTest::keyClick(name, Qt::Key_Return);
    ASSERT_TRUE(passUntil([&] { return panel.state() == RecorderState::Recording; })) << "Enter starts";
    EXPECT_EQ(QFileInfo(panel.file()).fileName(), "Rain(1).m4a") << "what has the name keeps it";
    EXPECT_FALSE(name->isVisible());
    pass(2000);
    click("record");
    ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
    EXPECT_EQ(name->text(), QString()) << "for one recording";
    EXPECT_EQ(test::contents(path("Rain.wav")), "x");
}

TEST_F(MainWindow, SilenceThatIsSkippedIsSaidAndCanBeKept) {
    AppSettings::setAutoSkipSilence(true);
    silencePlayer();
    window.show();
    EXPECT_EQ(find<QLabel>("silence")->text(), Lang::windowSilenceIsSkipped()) << "before it does it";
    EXPECT_TRUE(find<QLabel>("silence")->isVisible());
    click("record");
    ASSERT_TRUE(passUntil([&] { return panel.state() == RecorderState::WaitingForSound; }));
    EXPECT_TRUE(find<QLabel>("waiting")->isVisible());
    photograph(window, "record-waiting");
    click("keepSilence");
    ASSERT_TRUE(passUntil([&] { return panel.state() == RecorderState::Recording; }));
    EXPECT_FALSE(find<QLabel>("waiting")->isVisible());
    EXPECT_FALSE(AppSettings::isAutoSkipSilence());
}

TEST_F(MainWindow, AShutdownIsCountedDownOnThePageAndCancelledThere) {
    window.show();
    find<QTabWidget>("tabs")->setCurrentIndex(1);
    recorder.schedule().initScheduleTaskList();
    recorder.schedule().requestShutdown();
    pass(2100);
    EXPECT_TRUE(find<QLabel>("shutdown")->isVisible()) << "on whatever page";
    photograph(window, "shutdown");
    click("cancelShutdown");
    EXPECT_FALSE(find<QLabel>("shutdown")->isVisible());
    EXPECT_FALSE(recorder.schedule().isShutdownRequested());
}

class Leaving : public MainWindow {
public:
    Leaving() {
        QObject::connect(&window, &ui::MainWindow::mayEnd, &window, [this] { ++quits; });
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    }
    int quits = 0;
};

TEST_F(Leaving, WithoutARecordingEndsAtOnce) {
    window.close();
    EXPECT_EQ(quits, 1);
}

TEST_F(Leaving, TheNextWindowIsWhereThisOneWasLeft) {
    window.setGeometry(40, 50, 900, 640);
    pass(50);
    window.close();
    ui::MainWindow next({panel, recorder, session, list, taskList, converter, identification, songs, *world.clock,
                         desktop::InstalledServices::current()});
    EXPECT_EQ(next.geometry(), QRect(40, 50, 900, 640));
    ASSERT_TRUE(ZQUserDefaultSetValue_Object(QByteArray("no geometry"), "mainWindowGeometry"));
    EXPECT_EQ(ui::MainWindow({panel, recorder, session, list, taskList, converter, identification, songs, *world.clock,
                              desktop::InstalledServices::current()})
                  .size(),
              QSize(820, 600));
}

TEST_F(Leaving, WhileRecordingAsksInTheWindowAndNothingIsLost) {
    recordByButton();
    find<QTabWidget>("tabs")->setCurrentIndex(1);
    window.close();
    ASSERT_TRUE(find<QWidget>("leave0")->isVisible()) << "on whatever page";
    photograph(window, "leaving");
    QTest::keyClick(find<QWidget>("leave0"), Qt::Key_Escape);
    EXPECT_TRUE(session.isRecording());
    EXPECT_FALSE(window.isMinimized());

    window.close();
    window.close();
    EXPECT_TRUE(session.isRecording());
    EXPECT_TRUE(window.isMinimized()) << "who closes it again keeps it; no tray here: it stays where it can be found";
    EXPECT_EQ(quits, 0);

    window.close();
    session.stopRecording();
    pass(50);
    EXPECT_FALSE(find<QWidget>("leave")->isVisible()) << "nothing is recorded any more";
    ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
    recordByButton();
    window.close();
    click("leave1");
    EXPECT_FALSE(session.isRecording());
    ASSERT_TRUE(passUntil([&] { return quits > 0; }));
    EXPECT_TRUE(session.isSettled()) << "the conversion is waited for";
    EXPECT_TRUE(QFile::exists(list.items().back()->getFileName()));
}

TEST_F(MainWindow, AnUpdateIsOfferedAsPlainTextAndCanBeSkipped) {
    window.show();
    UpdateDescription update;
    update.AppVersion = "9.9.9";
    update.AppChangeLogs = "<b>New</b>\nFaster";
    update.AppUpdateAddress = "file:///etc/passwd";
    window.offerUpdate(update);
    QTest::qWait(1);
    EXPECT_EQ(find<QPlainTextEdit>("changes")->toPlainText(), update.AppChangeLogs);
    EXPECT_FALSE(find<QAbstractButton>("download")->isEnabled()) << "no page of the web";
    EXPECT_TRUE(update.isOffered());
    click("skip");
    EXPECT_FALSE(update.isOffered());
}

class Leftovers : public MainWindow {
public:
    Leftovers() {
        test::unfinished(left);
        before = test::contents(left);
        EXPECT_TRUE(RecordingJournal(state).begin(left));
        list.addRecordedFile(left, "00:00:00", {});
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        window.offerLeftovers();
        pass(50);
    }
    bool isUntouched() const {
        return test::contents(left) == before && RecordingJournal(state).leftovers().size() == 1
               && list.itemWithFile(left);
    }
    bool isAsking() { return find<QWidget>("leftovers")->isVisible(); }
    QString text() { return find<QLabel>("leftoversText")->text(); }

    const QString state = QDir::homePath() + "/state", left = path("Evening concert.m4a");
    QByteArray before;
};

TEST_F(Leftovers, AreRecoveredIntoTheLibraryAndToldInOneSentence) {
    photograph(window, "leftover");
    EXPECT_TRUE(text().contains("Evening concert.m4a"));
    EXPECT_TRUE(isUntouched()) << "nothing happens before the answer";
    click("leftovers0");
    ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
    EXPECT_TRUE(find<QLabel>("sentence")->text().contains("Evening concert.m4a"));
    photograph(window, "leftover-recovered");
    EXPECT_FALSE(media::isUnfinished(left));
    EXPECT_GE(list.itemWithFile(left)->Seconds, 1.0);
    window.offerLeftovers();
    EXPECT_FALSE(isAsking()) << "once";
}

TEST_F(Leftovers, LaterIsTheSafeAnswerAndRecordsBesideThem) {
    for (const char *later : {"leftovers1", "leftoversClose"}) {
        click(later);
        EXPECT_FALSE(isAsking());
        click("record");
        ASSERT_TRUE(passUntil([&] { return panel.state() == RecorderState::Recording; }));
        click("record");
        ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
        EXPECT_FALSE(isAsking()) << "once in a start";
        EXPECT_TRUE(isUntouched());
        window.offerLeftovers();
        pass(50);
    }
}

TEST_F(Leftovers, AreDiscardedOnlyWithASecondWord) {
    for (const Qt::Key no : {Qt::Key_Return, Qt::Key_Escape}) {
        click("leftovers2");
        pass(50);
        ASSERT_TRUE(isAsking());
        EXPECT_EQ(find<QWidget>("leftovers")->accessibleName(), Lang::windowDiscardConfirm());
        photograph(window, "leftover-discard");
        QTest::keyClick(find<QWidget>("leftovers0"), no);
        EXPECT_FALSE(isAsking());
        EXPECT_TRUE(isUntouched());
        window.offerLeftovers();
        pass(50);
    }
    click("leftovers2");
    pass(50);
    click("leftovers1");
    EXPECT_FALSE(QFile::exists(left));
    EXPECT_EQ(list.itemWithFile(left), nullptr);
    EXPECT_TRUE(RecordingJournal(state).leftovers().empty());
    EXPECT_TRUE(QFile::exists(QDir::homePath() + "/.local/share/Trash/files/Evening concert.m4a"));
}

class Library : public test::WindowFixture {
public:
    // A recording of two seconds under that name, in the list.
    void record(const char *name) {
        AppSettings::setAudioFormat(4);
        ASSERT_TRUE(session.startRecording());
        ASSERT_TRUE(passUntil([&] { return panel.state() == RecorderState::Recording; }));
        pass(2000);
        session.stopRecording();
        ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
        ASSERT_TRUE(list.rename(*list.items().back(), name));
    }
    void open() {
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
        QApplication::setActiveWindow(&window); // There is no window manager to do it.
        find<QTabWidget>("tabs")->setCurrentIndex(1);
        table = find<QTableView>("recordings");
    }
    QStringList titles() const {
        QStringList titles;
        for (int row = 0; row < table->model()->rowCount(); ++row)
            titles << table->model()->index(row, 0).data().toString();
        return titles;
    }
    void select(int row) { table->setCurrentIndex(table->model()->index(row, 0)); }
    void key(QWidget *widget, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        widget->setFocus();
        QTest::keyClick(widget, key, modifiers);
    }

    QTableView *table = nullptr;
};

TEST_F(Library, SearchesSortsRenamesRemovesAndGivesBack) {
    open();
    photograph(window, "library-empty");
    for (const char *name : {"Rain", "concert in may", "Interview"})
        record(name);
    EXPECT_EQ(titles(), QStringList({"Interview.wav", "concert in may.wav", "Rain.wav"})) << "the newest first";
    photograph(window, "library");
    select(2);
    key(table, Qt::Key_F2);
    auto *editor = table->viewport()->findChild<QLineEdit *>();
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor->text(), "Rain");
    editor->selectAll();
    QTest::keyClicks(editor, "Interview");
    QTest::keyClick(editor, Qt::Key_Return);
    pass(50); // The editor goes.
    EXPECT_EQ(titles().last(), "Rain.wav") << "that name is taken";
    EXPECT_FALSE(find<QLabel>("notice")->text().isEmpty());
    key(table, Qt::Key_F2);
    editor = table->viewport()->findChild<QLineEdit *>();
    ASSERT_NE(editor, nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, "Storm");
    QTest::keyClick(editor, Qt::Key_Return);
    pass(50); // The editor goes.
    EXPECT_EQ(titles().last(), "Storm.wav");
    EXPECT_TRUE(QFile::exists(path("Storm.wav")));

    for (const auto modifier : {Qt::NoModifier, Qt::ShiftModifier}) {
        select(0);
        table->selectRow(0);
        table->selectionModel()->select(table->model()->index(2, 0),
                                        QItemSelectionModel::Select | QItemSelectionModel::Rows);
        key(table, Qt::Key_Delete, modifier);
        EXPECT_EQ(titles(), QStringList{"concert in may.wav"});
        EXPECT_EQ(QFile::exists(path("Storm.wav")), modifier == Qt::NoModifier) << "moved only when asked";
        photograph(window, "library-removed");
        click("undo");
        EXPECT_EQ(titles().size(), 3);
        EXPECT_TRUE(QFile::exists(path("Storm.wav")));
    }
}

TEST_F(Library, PlaysPausesSeeksAndFallsSilentWhenARecordingBegins) {
    open();
    record("Rain");
    select(0);
    auto &player = window.library().player();
    key(table, Qt::Key_Return);
    EXPECT_TRUE(player.isPlaying());
    ASSERT_TRUE(passUntil([&] { return player.position() > 0.2; }));
    photograph(window, "library-playing");
    click("play");
    EXPECT_FALSE(player.isPlaying());
    const double paused = player.position();
    pass(500);
    EXPECT_EQ(player.position(), paused);
    click("play");
    EXPECT_TRUE(player.isPlaying());
    auto *seek = find<QWidget>("seek");
    key(seek, Qt::Key_Home);
    ASSERT_TRUE(passUntil([&] { return player.position() < 0.3; }));
    click("play");
    key(seek, Qt::Key_PageUp);
    key(seek, Qt::Key_PageUp);
    key(seek, Qt::Key_PageUp);
    ASSERT_TRUE(passUntil([&] { return player.position() > player.length() * 0.25; })) << "by a page at a time";
    EXPECT_LT(player.position(), player.length() * 0.75);
    click("play");
    key(seek, Qt::Key_End);
    ASSERT_TRUE(passUntil([&] { return player.file().isEmpty(); })) << "heard to its end";
    key(table, Qt::Key_Space);
    EXPECT_TRUE(player.isPlaying());
    ASSERT_TRUE(session.startRecording());
    EXPECT_FALSE(player.isPlaying());
    session.stopRecording();
    ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
}

} // namespace
} // namespace cantorel
