#include "ui/EditorPage.h"

#include "editor/KeptEdit.h"
#include "editor/views/ZQAudioCutInfoView.h"
#include "editor/views/ZQAudioTimeView.h"
#include "platform/desktop/recorded/RecordedServices.h"
#include "platform/foundation/SearchPaths.h"
#include "tags/AudioIdentify.h"
#include "tests/support/Wave.h"
#include "tests/window/Screen.h"
#include "tests/window/WindowFixture.h"
#include "ui/WaveArea.h"

#include <QAccessible>
#include <QDoubleSpinBox>
#include <QDropEvent>
#include <QFileDialog>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QSlider>
#include <QTabWidget>
#include <QTableView>

#include <cmath>

namespace cantorel {
namespace {

using State = ZQAudioEditorManager::State;

class EditorPage : public test::WindowFixture {
public:
    EditorPage() : WindowFixture(test::EmbeddedWorld::Virtual::Installed, desktop::recordedServices(record())) {
        AppSettings::setUserExportPath(folder.path());
        window.resize(984, 624);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        QApplication::setActiveWindow(&window);
    }
    static std::shared_ptr<desktop::CallRecord> record() {
        static const auto calls = std::make_shared<desktop::CallRecord>();
        return calls;
    }
    // Music of so many seconds, louder and softer.
    QString sound(const char *name, double seconds = 60) {
        std::vector<float> samples(static_cast<std::size_t>(seconds * 48'000) * 2);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const double t = static_cast<double>(i / 2) / 48'000;
            samples[i] =
                static_cast<float>(0.5 * std::abs(std::sin(t / 7)) * std::sin(t * 700 * (1 + 0.2 * std::sin(t))));
        }
        EXPECT_TRUE(test::writeWav(path(name), samples));
        return path(name);
    }
    void open(const QString &file) {
        window.beginAudioEditWithURL(QUrl::fromLocalFile(file));
        ASSERT_TRUE(isReady());
    }
    bool isReady() {
        return passUntil([&] { return manager().isReady() && manager().player().isPlayButtonEnabled(); });
    }
    ZQAudioEditorManager &manager() { return window.editorPage().manager(); }
    QWidget *wave() { return find<QWidget>("wave"); }
    int x(double seconds) { return qRound(manager().geometry().getPointWithTime(seconds).x()); }
    void press(int key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(key), modifiers);
    }
    void drag(double from, double to, int beside = 0) {
        const int y = wave()->height() / 2;
        QTest::mousePress(wave(), Qt::LeftButton, {}, {x(from) + beside, y});
        for (const double part : {0.3, 0.7, 1.0}) {
            QMouseEvent move(QEvent::MouseMove, QPointF(x(from) + beside + (x(to) - x(from)) * part, y), QPointF(),
                             Qt::NoButton, Qt::LeftButton, {});
            QApplication::sendEvent(wave(), &move);
        }
        QTest::mouseRelease(wave(), Qt::LeftButton, {}, {x(to) + beside, y});
    }
    // A selection, made with the mouse.
    void select(double start, double end) {
        QTest::mouseClick(wave(), Qt::LeftButton, {}, {x(start), wave()->height() / 3});
        click("addCut");
        drag(start, end, 4);
    }
    double pointWidth() { return manager().geometry().scaleOffset(); }
    std::vector<double> times() {
        std::vector<double> all;
        for (const auto &cut : manager().cuts().all())
            all.insert(all.end(), {cut->startTime(), cut->endTime()});
        return all;
    }
    void expectTimes(std::vector<double> expected) {
        const auto found = times();
        ASSERT_EQ(found.size(), expected.size());
        for (std::size_t i = 0; i < found.size(); ++i)
            EXPECT_NEAR(found[i], expected[i], 6 * pointWidth()) << i;
    }
    // Answers the dialog that asks for a file or a name.
    void answerDialog(const QString &file) {
        QFileDialog *dialog = nullptr;
        ASSERT_TRUE(passUntil([&] {
            dialog = window.findChild<QFileDialog *>("fileDialog");
            return dialog != nullptr;
        }));
        dialog->selectFile(file);
        QMetaObject::invokeMethod(dialog, "filesSelected", Q_ARG(QStringList, {file}));
        dialog->close();
        pass(50);
        QApplication::setActiveWindow(&window); // as a window manager would
    }
};

TEST_F(EditorPage, ASoundIsOpenedFromItsRowAndItsSelectionsAreMadeWithMouseAndKeys) {
    const QString file = sound("Evening concert.wav");
    list.append({{file, "00:01:00", "1.00 MB", {}, {}, {}, {}}});
    window.library().listDidChange();
    find<QTabWidget>("tabs")->setCurrentIndex(1);
    pass(50);
    find<QTableView>("recordings")->selectRow(0);
    EXPECT_EQ(window.findChild<QWidget *>("wave"), nullptr) << "nothing of the editor is made before";
    click("editSelected");
    ASSERT_TRUE(isReady());
    EXPECT_TRUE(window.editorPage().isVisible());
    EXPECT_EQ(find<QLabel>("title")->accessibleName(), "Evening concert.wav   00:01:00");
    EXPECT_EQ(manager().geometry().sampleData().size() > 500, true);
    photograph(window, "editor-opened");
    EXPECT_FALSE(find<QWidget>("deleteCut")->isEnabled());
    select(10, 20);
    select(40, 50);
    expectTimes({10, 20, 40, 50});
    EXPECT_EQ(find<QLabel>("whichCut")->text(), "Selection 2 of 2");
    drag(50, 80, 2);
    drag(40, 2, -2);
    expectTimes({10, 20, 20, 60});
    photograph(window, "editor-selections");
    press(Qt::Key_Z, Qt::ControlModifier);
    expectTimes({10, 20, 40, 60});
    press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    expectTimes({10, 20, 20, 60});
    press(Qt::Key_Up);
    EXPECT_TRUE(manager().cuts().all()[0]->isFocusOn());
    press(Qt::Key_Delete);
    expectTimes({20, 60});
    press(Qt::Key_Right);
    const double head = manager().playTime();
    press(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_NEAR(manager().playTime(), head - 0.1, 1e-3);
    press(Qt::Key_Insert);
    EXPECT_EQ(times().size(), 4u);
    const auto *interface = QAccessible::queryAccessibleInterface(wave());
    EXPECT_TRUE(interface->text(QAccessible::Name).startsWith("Waveform, Selection 2 of 2, 00:00:4"))
        << interface->text(QAccessible::Name).toStdString();
    click("clearCuts");
    EXPECT_TRUE(times().empty());
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(times().size(), 4u);
}

TEST_F(EditorPage, AStretchIsLookedAtCloselyAndMovedAndNothingElseChanges) {
    open(sound("Song.wav"));
    select(10, 20);
    const auto before = times();
    const WaveGeometry &geometry = manager().geometry();
    auto &overview = *find<QAbstractSlider>("waveOverview");
    EXPECT_FALSE(overview.isVisible());
    const int at = x(30);
    const auto wheel = [&](QPoint angle, Qt::KeyboardModifiers modifiers) {
        QWheelEvent event(QPointF(at, 20), wave()->mapToGlobal(QPointF(at, 20)), {}, angle, Qt::NoButton, modifiers,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(wave(), &event);
        pass(1); // The wave has made room for what stands above it.
    };
    for (int i = 0; i < 12; ++i)
        wheel({0, 120}, Qt::ControlModifier);
    EXPECT_NEAR(geometry.zoom(), std::pow(1.25, 12), 0.01);
    EXPECT_NEAR(x(30), at, 1);
    EXPECT_TRUE(overview.isVisible());
    const double start = geometry.viewStart();
    wheel({0, -120}, {});
    EXPECT_NEAR(geometry.viewStart(), start + 60 * pointWidth(), 0.01);
    QTest::mousePress(&overview, Qt::LeftButton, {}, {overview.width() / 4, 8});
    EXPECT_NEAR(geometry.viewStart() + geometry.viewSeconds() / 2, 15, 0.2) << "it comes there";
    QTest::mouseMove(&overview, {overview.width() / 2, 8});
    QMouseEvent move(QEvent::MouseMove, QPointF(overview.width() / 2.0, 8), QPointF(), Qt::NoButton, Qt::LeftButton,
                     {});
    QApplication::sendEvent(&overview, &move);
    EXPECT_NEAR(geometry.viewStart() + geometry.viewSeconds() / 2, 30, 0.2) << "and is led on";
    EXPECT_EQ(times(), before);
    select(29.9, 30.3);
    EXPECT_NEAR(times()[2], 29.9, 0.05);
    EXPECT_NEAR(times()[3], 30.3, 0.05) << "closer than the whole would let it be";
    manager().AudioPlayControlDelegate_ResetPlayCurrentTime(50);
    EXPECT_TRUE(geometry.sees(50)) << "the view goes with the head";
    photograph(window, "editor-zoomed");
    wave()->setFocus();
    press(Qt::Key_0, Qt::ControlModifier);
    EXPECT_EQ(geometry.zoom(), 1);
    EXPECT_FALSE(overview.isVisible());
    EXPECT_FALSE(find<QWidget>("zoomOut")->isVisible());
    click("zoomIn");
    EXPECT_EQ(geometry.zoom(), 2);
    EXPECT_NEAR(times()[0], before[0], 0);
    open(sound("Other.wav", 40));
    EXPECT_EQ(geometry.zoom(), 1);
}

TEST_F(EditorPage, ThePointerSaysWhatAPressWouldTake) {
    open(sound("Short.wav", 20));
    select(5, 10);
    const struct {
        int x;
        Qt::CursorShape shape;
    } cases[] = {{x(5) - 4, Qt::SizeHorCursor}, {x(5) - 8, Qt::CrossCursor}, {x(7), Qt::CrossCursor}};
    for (const auto &[at, shape] : cases) {
        QTest::mouseMove(wave(), {at, 40});
        QTest::qWait(1);
        QMouseEvent move(QEvent::MouseMove, QPointF(at, 40), QPointF(), Qt::NoButton, Qt::NoButton, {});
        QApplication::sendEvent(wave(), &move);
        EXPECT_EQ(wave()->cursor().shape(), shape) << at;
    }
    QTest::mouseClick(wave(), Qt::LeftButton, {}, {x(7), 40});
    EXPECT_EQ(wave()->cursor().shape(), Qt::OpenHandCursor);
    EXPECT_NEAR(manager().playTime(), 7, pointWidth());
    EXPECT_FALSE(find<QLabel>("waveReadout")->text().isEmpty());
}

TEST_F(EditorPage, WhatADragLeavesOnTheScreenIsWhatAWholePaintingShows) {
    open(sound("Short.wav", 20));
    select(5, 6);
    select(10, 12);
    drag(12, 15, 2);
    drag(10, 8, -2);
    press(Qt::Key_Up);
    drag(6, 4.5, 2);
    QTest::qWait(100);
    QWidget &area = *wave()->parentWidget();
    const QImage screen = window.screen()->grabWindow(window.winId()).toImage();
    const QImage shown = screen.copy(QRect(area.mapTo(&window, QPoint()), area.size()));
    EXPECT_EQ(shown.convertToFormat(QImage::Format_RGB32), area.grab().toImage().convertToFormat(QImage::Format_RGB32));
}

TEST_F(EditorPage, TimesAreTypedSteppedAndKeptBetweenTheNeighbours) {
    open(sound("Short.wav", 20));
    select(5, 10);
    auto *start = find<ui::ZQAudioTimeView>("startTime");
    const auto chooseIn = [&](ui::ZQAudioTimeView *field, TimeField::Part part) {
        QTest::mouseClick(field, Qt::LeftButton, {}, field->rectOf(part).center().toPoint());
    };
    chooseIn(start, TimeField::Second);
    for (const int key : {Qt::Key_0, Qt::Key_7})
        QTest::keyClick(start, static_cast<Qt::Key>(key));
    QTest::keyClick(start, Qt::Key_Right); // which ends the seconds
    for (const int key : {Qt::Key_0, Qt::Key_0, Qt::Key_1, Qt::Key_Return})
        QTest::keyClick(start, static_cast<Qt::Key>(key));
    EXPECT_EQ(times()[0], 7.001);
    photograph(window, "editor-typing");
    QTest::keyClick(start, Qt::Key_Up);
    EXPECT_EQ(times()[0], 7.011);
    QTest::keyClick(start, Qt::Key_Backspace);
    EXPECT_EQ(times().size(), 2u) << "while a field is edited it is its own";
    auto *end = find<ui::ZQAudioTimeView>("endTime");
    chooseIn(end, TimeField::Minute);
    QTest::keyClick(end, Qt::Key_Up);
    EXPECT_EQ(times()[1], 20) << "the end of the sound";
    EXPECT_EQ(end->time(), 20);
    QTest::mouseClick(end, Qt::LeftButton, {}, end->strppetRect().center().toPoint() + QPoint(0, 6));
    EXPECT_EQ(times()[1], 20) << "a minute less would be below zero";
    press(Qt::Key_Tab);
    EXPECT_NE(QApplication::focusWidget(), end);
    auto *said = QAccessible::queryAccessibleInterface(start);
    EXPECT_EQ(said->text(QAccessible::Name) + ' ' + said->text(QAccessible::Value), "Begin 00:00:07.011");
    said->valueInterface()->setCurrentValue(8.5);
    EXPECT_EQ(times()[0], 8.5);
}

TEST_F(EditorPage, SpacePlaysAndSelectionsArePlayedInTurn) {
    open(sound("Short.wav", 20));
    select(5, 6);
    select(10, 11);
    press(Qt::Key_Space);
    EXPECT_TRUE(manager().player().isPlaying());
    press(Qt::Key_Space);
    EXPECT_FALSE(manager().player().isPlaying());
    press(Qt::Key_Space, Qt::ShiftModifier);
    std::vector<int> seen;
    ASSERT_TRUE(passUntil([&] {
        if (const int second = static_cast<int>(manager().playTime()); seen.empty() || seen.back() != second)
            seen.push_back(second);
        return seen.size() >= 6;
    }));
    for (const int second : seen)
        EXPECT_TRUE((second >= 5 && second <= 6) || (second >= 10 && second <= 11)) << second;
    EXPECT_TRUE(find<QPushButton>("playCuts")->isChecked());
    click("clearCuts");
    EXPECT_FALSE(manager().player().isPlaying());
    EXPECT_FALSE(find<QPushButton>("playCuts")->isEnabled());
}

TEST_F(EditorPage, PlayingIntoARecordingIsAskedAboutOnce) {
    open(sound("Song.wav", 5));
    ASSERT_TRUE(session.startRecording());
    ASSERT_TRUE(passUntil([&] { return panel.state() == RecorderState::Recording; }));
    const auto sheets = [&] { return window.findChildren<QMessageBox *>("sheet").size(); };
    click("playEdited");
    ASSERT_EQ(sheets(), 1);
    answer(Lang::btnCancel());
    EXPECT_FALSE(manager().player().isPlaying());
    click("playEdited");
    answer(Lang::btnPlay());
    EXPECT_TRUE(passUntil([&] { return manager().player().isPlaying(); }));
    const auto before = sheets();
    click("playEdited");
    click("playEdited");
    EXPECT_EQ(sheets(), before) << "once a recording";
    session.stopRecording();
    ASSERT_TRUE(passUntil([&] { return session.isSettled(); }, 60'000));
}

TEST_F(EditorPage, WhatIsInsertedCanBeUndone) {
    open(sound("Short.wav", 20));
    select(5, 6);
    const auto before = times();
    manager().AudioPlayControlDelegate_ResetPlayCurrentTime(4);
    find<QToolButton>("insertAudio")->menu()->actions()[0]->trigger();
    photograph(window, "editor-silence");
    EXPECT_EQ(find<ui::ZQAudioTimeView>("insertPosition")->time(), 4);
    find<ui::ZQAudioTimeView>("insertLength")->change(0);
    click("confirmEdit");
    EXPECT_TRUE(find<QWidget>("editTrouble")->isVisible()) << "nothing would be inserted";
    find<ui::ZQAudioTimeView>("insertLength")->change(2.5);
    click("confirmEdit");
    ASSERT_TRUE(isReady());
    EXPECT_EQ(manager().AudioDataRequestDelegate_getCurrentAudioDuration(), 22);
    EXPECT_EQ(manager().audioFileName(), "Short + empty");
    EXPECT_NEAR(manager().playTime(), 4, 1e-6) << "where it was inserted";
    EXPECT_TRUE(times().empty());
    find<QToolButton>("insertAudio")->menu()->actions()[1]->trigger();
    answerDialog(sound("Other.wav", 3));
    ASSERT_TRUE(passUntil([&] { return manager().audioFileName() == "Short + empty + Other.wav"; }));
    ASSERT_TRUE(isReady());
    EXPECT_EQ(manager().AudioDataRequestDelegate_getCurrentAudioDuration(), 25);
    EXPECT_EQ(find<QLabel>("editorNews")->text(), "Append a sound: Other.wav");
    photograph(window, "editor-appended");
    click("undoEdit");
    ASSERT_TRUE(isReady());
    press(Qt::Key_Z, Qt::ControlModifier);
    ASSERT_TRUE(isReady());
    EXPECT_EQ(manager().audioFileName(), "Short.wav");
    EXPECT_EQ(times(), before);
}

TEST_F(EditorPage, WhatLiesBetweenSilencesIsSelectedWhileTheThresholdIsTriedOutAndIsOneStep) {
    std::vector<float> samples(20 * 48'000 * 2); // soft from 5 to 7 seconds, silent from 12 to 12.7
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double t = static_cast<double>(i / 2) / 48'000;
        const double volume = t >= 5 && t < 7 ? 0.002 : t >= 12 && t < 12.7 ? 0 : 0.5;
        samples[i] = static_cast<float>(volume * std::sin(t * 700));
    }
    ASSERT_TRUE(test::writeWav(path("Pieces.wav"), samples));
    open(path("Pieces.wav"));
    select(2, 3);
    const auto before = times();
    const auto expectFound = [&](const char *told, const std::vector<double> &expected) {
        EXPECT_EQ(find<QLabel>("editTrouble")->text().toStdString(), told);
        ASSERT_EQ(times().size(), expected.size()) << told;
        for (std::size_t i = 0; i < expected.size(); ++i)
            EXPECT_NEAR(times()[i], expected[i], 0.03) << told;
        EXPECT_EQ(find<QWidget>("confirmEdit")->isVisible(), expected != before) << told;
    };
    click("findCuts");
    expectFound("Selection: 2", {0, 5, 7, 20});
    auto *threshold = find<QSlider>("silenceThreshold");
    EXPECT_EQ(threshold, QApplication::focusWidget());
    photograph(window, "editor-silences");
    threshold->setValue(-70);
    expectFound("No silence is that long; the longest is 0.68 s.", before);
    press(Qt::Key_Return);
    EXPECT_TRUE(threshold->isVisible()) << "there is nothing to accept";
    threshold->setValue(-1);
    expectFound("Nothing is louder than that; the loudest reaches -6 dB.", before);
    threshold->setValue(-40);
    find<QDoubleSpinBox>("shortestSilence")->setValue(0.5);
    expectFound("Selection: 3", {0, 5, 7, 12, 12.7, 20});
    window.editorPage().goBack();
    EXPECT_EQ(times(), before) << "it is not wanted";
    click("findCuts");
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(times(), before) << "nor here";
    threshold->setValue(-41);
    press(Qt::Key_Return);
    EXPECT_FALSE(threshold->isVisible());
    EXPECT_EQ(times().size(), 6u);
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(times(), before) << "one step";
    click("findCuts");
    find<QToolButton>("insertAudio")->menu()->actions()[0]->trigger();
    click("cancelEdit");
    EXPECT_EQ(times().size(), 6u) << "who goes on with what is found accepts it";
}

TEST_F(EditorPage, AnExportAsksForTypeTagsAndNameAndJoinsTheLibrary) {
    open(sound("Mr. Smith.wav", 20));
    select(5, 6);
    click("exportAudio");
    EXPECT_FALSE(find<QWidget>("exportMode")->isVisible()) << "there is one selection";
    EXPECT_TRUE(find<QWidget>("exportTitle")->isVisible());
    photograph(window, "editor-export");
    click("cancelEdit");
    select(10, 12);
    click("exportAudio");
    EXPECT_TRUE(find<QWidget>("exportMode")->isVisible());
    auto *format = find<QComboBox>("exportFormat");
    format->setCurrentIndex(2);
    Q_EMIT format->activated(2);
    EXPECT_FALSE(find<QWidget>("exportTitle")->isVisible()) << "WAV takes no tags";
    click("confirmEdit");
    answerDialog(path("Mr. Smith"));
    ASSERT_TRUE(passUntil([&] { return manager().isReady() && !find<QLabel>("editorNews")->text().isEmpty(); }, 60000));
    EXPECT_EQ(find<QLabel>("editorNews")->text(), "The sound has been exported to 'Mr. Smith-2.wav'.");
    EXPECT_TRUE(record()->calls().contains("reveal " + path("Mr. Smith-2.wav")));
    EXPECT_TRUE(passUntil([&] { return list.itemWithFile(path("Mr. Smith-2.wav")) != nullptr; }));
    EXPECT_EQ(times().size(), 4u) << "the selections stay";
    photograph(window, "editor-exported");
}

TEST_F(EditorPage, PartsAreNamedAndTaggedInATableByTheKeyboard) {
    open(sound("Song.wav", 20));
    select(5, 6);
    select(10, 12);
    click("exportAudio");
    auto *table = find<QTableView>("exportParts");
    EXPECT_FALSE(table->isVisible()) << "they are joined";
    auto *mode = find<QComboBox>("exportMode");
    mode->setCurrentIndex(1);
    Q_EMIT mode->activated(1);
    QTest::keyClicks(find<QLineEdit>("exportArtist"), "Choir");
    const auto cell = [&](int row, int column) { return table->model()->index(row, column).data().toString(); };
    EXPECT_EQ(cell(0, 0) + ", " + cell(1, 0) + ", " + cell(1, 2), "Song, Song-2, Choir");
    const auto type = [&](const QString &text, Qt::Key last) {
        QTest::keyClicks(QApplication::focusWidget(), text.first(1)); // which opens the cell
        QTest::keyClicks(QApplication::focusWidget(), text.mid(1));
        QTest::keyClick(QApplication::focusWidget(), last);
        QTest::qWait(1); // The cell closes from the event loop.
    };
    table->setFocus();
    type("Intro.mp3", Qt::Key_Tab);
    type("First", Qt::Key_Return);
    table->setCurrentIndex(table->model()->index(1, 0));
    type("Intro", Qt::Key_Return);
    press(Qt::Key_Return);
    EXPECT_EQ(find<QLabel>("editTrouble")->text(), "\"Intro\" is no free name for a file here; choose another.");
    type("a/b", Qt::Key_Return);
    click("confirmEdit");
    EXPECT_EQ(find<QLabel>("editTrouble")->text(), "\"a/b\" cannot be the name of a file; choose another name.");
    photograph(window, "editor-parts");
    table->setFocus();
    type("Mr. End", Qt::Key_Return);
    manager().AudioPlayControlDelegate_ResetPlayCurrentTime(8);
    manager().addNewCutEntity();
    EXPECT_EQ(cell(0, 0) + ", " + cell(1, 0) + ", " + cell(2, 0), "Intro, Song, Mr. End") << "with their selections";
    manager().undo();
    click("confirmEdit");
    answerDialog(folder.path()); // No name is asked for.
    ASSERT_TRUE(passUntil([&] { return manager().isReady() && !find<QLabel>("editorNews")->text().isEmpty(); }, 60000));
    const auto first = AudioIdentify::getID3TagFromFile(path("Intro.mp3")),
               second = AudioIdentify::getID3TagFromFile(path("Mr. End.mp3"));
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->id3Title + ", " + first->id3Artist, "First, Choir");
    EXPECT_EQ(second->id3Title + ", " + second->id3Artist, ", Choir");
}

TEST_F(EditorPage, WhatWasOpenIsOfferedAgainOrDiscarded) {
    const QString file = sound("Song.wav", 20);
    const auto work = [&] {
        ZQAudioEditorManager earlier(*world.clock, std::make_shared<KeptEdit>());
        earlier.waveSizeDidChange({500, 100});
        earlier.editAudioWithURL(QUrl::fromLocalFile(file));
        ASSERT_TRUE(passUntil([&] { return earlier.isReady(); }));
        earlier.AudioCutInfoDelegate_UpdateSelectedCutEntityStartTime(7, 7, kStartTimeControl);
    };
    work();
    window.offerEdit();
    pass(50);
    EXPECT_TRUE(find<QWidget>("edit1")->isVisible());
    photograph(window, "editor-offered");
    click("edit0");
    ASSERT_TRUE(isReady());
    EXPECT_TRUE(window.editorPage().isVisible());
    EXPECT_EQ(times().at(0), 7);
}

// The program itself, led by keys; what it leaves is taken up by the window of this test.
TEST_F(EditorPage, WhatIsSelectedOutlivesAKillOfTheProgram) {
    constexpr xcb_keysym_t kControl = 0xffe3, kInsert = 0xff63, kRight = 0xff53, kDown = 0xff54;
    list.addRecordedFile(sound("Song.wav", 20), "00:00:20", "3.66 MB");
    list.saveRecordedList();
    window.hide();
    qputenv("CANTOREL_DEBUG", "1"); // nothing is asked of the maker
    QProcess program;
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.start(QStringLiteral(CANTOREL_PROGRAM), {"--backend=embedded"});
    const auto kept = [] { return test::contents(foundation::stateFolder() + "/cantorel/editor.json"); };
    // Struck again where the program was not ready for it.
    const auto until = [&](std::initializer_list<std::initializer_list<xcb_keysym_t>> strikes, const QByteArray &text) {
        return test::eventually(
            [&] {
                for (const auto &keys : strikes)
                    test::screenOfThisProcess->strike(keys);
                return test::eventually([&] { return kept().contains(text); }, 4000);
            },
            60'000);
    };
    ASSERT_TRUE(until({{kControl, '2'}, {kDown}, {kControl, 'e'}}, "Song.wav")) << kept().toStdString();
    ASSERT_TRUE(until({{kRight}, {kInsert}, {kRight}, {kRight}, {']'}}, "]],")) << kept().toStdString();
    ASSERT_TRUE(until({{kRight}, {kInsert}, {kRight}, {']'}}, "],[")) << kept().toStdString();
    program.kill();
    ASSERT_TRUE(program.waitForFinished());
    const QJsonObject left = QJsonDocument::fromJson(kept()).object();
    window.show();
    window.offerEdit();
    ASSERT_TRUE(passUntil([&] { return find<QWidget>("edit0")->isVisible(); }));
    click("edit0");
    ASSERT_TRUE(isReady());
    QJsonArray cuts;
    for (const CutList::Range &cut : manager().cuts().ranges())
        cuts << QJsonArray{cut.start, cut.end, cut.isFocusOn};
    EXPECT_EQ(manager().audioFileName(), "Song.wav");
    EXPECT_GE(cuts.size(), 2);
    EXPECT_EQ(cuts, left["cuts"].toArray());
    EXPECT_EQ(manager().playTime(), left["head"].toDouble());
}

TEST_F(EditorPage, ADroppedFileIsOpenedAtOnceAndWhatHoldsNoSoundSaysSo) {
    open(sound("First.wav", 5));
    QMimeData data;
    test::store(path("Rubbish.mp3"), "no sound");
    for (const char *name : {"Rubbish.mp3", "Second.wav"}) {
        if (QByteArray(name) == "Second.wav")
            sound(name, 3);
        data.setUrls({QUrl::fromLocalFile(path(name))});
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&window.editorPage(), &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDropEvent event({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&window.editorPage(), &event);
        EXPECT_EQ(manager().state(), State::Analysing) << name;
        if (QByteArray(name) == "Rubbish.mp3") {
            ASSERT_TRUE(passUntil([&] { return manager().state() == State::Unreadable; }));
            EXPECT_TRUE(find<QLabel>("editorProgress")->text().contains("Rubbish.mp3"));
            photograph(window, "editor-unreadable");
        }
    }
    ASSERT_TRUE(isReady());
    EXPECT_EQ(manager().audioFileName(), "Second.wav");
    window.editorPage().goBack();
    EXPECT_FALSE(window.editorPage().isVisible());
    window.beginAudioEditWithURL(QUrl::fromLocalFile(path("First.wav")));
    window.editorPage().goBack(); // in the middle of the reading
    pass(1500);
    EXPECT_EQ(manager().state(), State::Analysing);
    window.showEditor();
    EXPECT_TRUE(isReady()) << "it is read once it is shown again";
}

} // namespace
} // namespace cantorel
