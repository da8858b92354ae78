#pragma once

#include "convert/queue/ZQAudioConvertManager.h"
#include "lang/Lang.h"
#include "recording/control/RecorderPanel.h"
#include "recording/control/ScheduledSession.h"
#include "tags/identify/OwnSongs.h"
#include "tags/identify/RecordingIdentification.h"
#include "tags/index/SongStore.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/Wave.h"
#include "tests/unit/recording/RecordingFixture.h"
#include "ui/EditorPage.h"
#include "ui/LibraryTab.h"
#include "ui/MainWindow.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QMenu>
#include <QMessageBox>
#include <QTabWidget>
#include <QTableView>
#include <QTest>
#include <QToolButton>

#include <cmath>

namespace cantorel::test {

// The main window with all that it stands on, as the program has it.
struct WindowParts {
    explicit WindowParts(foundation::Clock &time, desktop::Services desktop = {})
        : services(std::move(desktop)), clock(time) {
        list.initRecordedList();
        commons.journal.claim();
    }
    template <class Widget> Widget *find(const char *name) {
        auto *found = window.findChild<Widget *>(name);
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    void click(const char *name) {
        auto *widget = find<QWidget>(name);
        // A check box is as wide as its column, and hears clicks on its sign and text only.
        const bool isBox = qobject_cast<QCheckBox *>(widget) != nullptr;
        QTest::mouseClick(widget, Qt::LeftButton, {},
                          isBox ? QPoint(8, widget->height() / 2) : widget->rect().center());
    }

    desktop::InstalledServices services;
    foundation::Clock &clock;
    RecorderPanel panel;
    RecordedList list{QDir::homePath() + "/state", clock};
    RecorderCommons commons{QDir::homePath() + "/state", clock, desktop::InstalledServices::current().sleep.get()};
    RecordingSession session{panel, list, commons};
    TaskList taskList;
    MovieSession movies{panel, list, commons};
    ScheduledSession recorder{session, &movies, taskList, panel, clock};
    ZQAudioConvertManager converter{clock};
    OwnSongs songs{AppSettings::TessolarConverterPath(), songStorePath()};
    RecordingIdentification identification{list, [](std::stop_token stop) {
                                               return CommAudioIdentify(AppSettings::TessolarConverterPath(),
                                                                        RecognitionServices::fromSettings(), stop);
                                           }};
    ui::MainWindow window{{panel, recorder, session, list, taskList, converter, identification, songs, clock,
                           desktop::InstalledServices::current()}};
};

// The main window over software devices: music plays, time is stepped by hand, clicks and keys are real.
class WindowFixture : public RecordingFixture, public WindowParts {
public:
    explicit WindowFixture(EmbeddedWorld::Virtual installed = EmbeddedWorld::Virtual::Installed,
                           desktop::Services desktop = {})
        : RecordingFixture(installed), WindowParts(*world.clock, std::move(desktop)) {}
    // Lets time pass, with the window drawn and its events handled.
    void pass(int milliseconds) {
        for (int passed = 0; passed < milliseconds; passed += 50) {
            world.advance(50);
            QTest::qWait(1);
        }
    }
    bool passUntil(const std::function<bool()> &condition, int milliseconds = 10000) {
        const auto holds = [&] {
            pass(50);
            return condition();
        };
        return eventually(holds, milliseconds);
    }
    // Opens a page as the menu does.
    void openSettings() { window.openPreferencesWindowAndShowRecordInterface(); }
    void turnSettingsTo(int page) { find<QAbstractButton>(qPrintable(QStringLiteral("page%1").arg(page)))->click(); }
    void openTasks() { find<QToolButton>("menu")->menu()->actions().constFirst()->trigger(); }
    // A task of every weekday, to be looked at.
    void addTask() {
        const QDateTime start = QDateTime::currentDateTime().addDays(1);
        ScheduleTaskInfo task("Morning news", start, start.addSecs(3600), 2, true);
        task._daily = true;
        task.WeeksOn_ = {1, 2, 3, 4, 5};
        EXPECT_TRUE(taskList.add(task));
    }
    // A frame of silence after the other, as far as a reader of tags looks.
    static QByteArray mpegSound() { return (QByteArray("\xFF\xFB\x90\x64") + QByteArray(413, '\0')).repeated(20); }
    // Two seconds of sound in the editor, with two selections of which the second is chosen.
    void openEditor() {
        std::vector<float> samples(2 * 2 * 48'000);
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] =
                static_cast<float>(std::sin(static_cast<double>(i) / 40) * static_cast<double>(i % 40'000) / 40'000);
        const QString file = QDir::homePath() + "/A long evening in the old town hall.wav";
        EXPECT_TRUE(writeWav(file, samples));
        window.beginAudioEditWithURL(QUrl::fromLocalFile(file));
        ZQAudioEditorManager &editor = window.editorPage().manager();
        EXPECT_TRUE(passUntil([&] { return editor.player().isPlayButtonEnabled(); }));
        for (const double seconds : {0.2, 1.1}) {
            editor.AudioPlayControlDelegate_ResetPlayCurrentTime(seconds);
            editor.addNewCutEntity();
        }
        window.editorPage().goBack();
    }
    // The page, and its two panels.
    void eachEditorPage(const std::function<void(const char *)> &look) {
        window.showEditor();
        look("editor");
        ZQAudioEditorManager &editor = window.editorPage().manager();
        editor.showExportInfo();
        look("export");
        editor.exporting().exportMethod_Part();
        look("parts");
        editor.exporting().exportMethod_Merger();
        window.editorPage().goBack();
        editor.actionForEditToolInsertMute();
        look("insert");
        window.editorPage().goBack();
        find<QAbstractButton>("findCuts")->click();
        look("silences");
        window.editorPage().goBack();
        window.editorPage().goBack();
    }
    // The library with a recording chosen whose tags can be edited.
    void addTagged() {
        const QString file = QDir::homePath() + "/Tagged.mp3";
        store(file, mpegSound());
        list.addRecordedFile(file, "00:03:10", "1.00 MB");
        window.library().listDidChange();
        find<QTableView>("recordings")->selectRow(0);
    }
    // Opens and closes the editor of its tags, in a window too narrow for both.
    void turnToTags(bool open) {
        find<QTabWidget>("tabs")->setCurrentIndex(1);
        find<QToolButton>("showDetails")->click();
        EXPECT_TRUE(passUntil([&] { return find<QWidget>("saveTags")->isVisible() == open; }));
    }
    // Opens the panel for a new task with all that it can show.
    void fillTask() {
        click("newTask");
        find<QCheckBox>("daily")->setChecked(true);
        find<QComboBox>("repeat")->setCurrentIndex(1);
        click("saveTask"); // which has no name
    }
    // Presses a button of the sheet that hangs on the window.
    void answer(const QString &text) {
        auto *sheet = find<QMessageBox>("sheet");
        ASSERT_NE(sheet, nullptr);
        for (QAbstractButton *button : sheet->buttons())
            if (button->text() == text) {
                QTest::mouseClick(button, Qt::LeftButton);
                pass(50);
                return;
            }
        FAIL() << text.toStdString();
    }
    // Two seconds of the recording that the button starts.
    void recordByButton() {
        click("record");
        ASSERT_TRUE(passUntil([&] { return panel.state() == RecorderState::Recording; }));
        pass(2000);
    }
    // Keeps a picture of a window where a folder for pictures is named.
    static void photograph(QWidget &widget, const QString &name) {
        const QString folder = qEnvironmentVariable("CANTOREL_PICTURES");
        if (!folder.isEmpty()) {
            QTest::qWait(250); // Cards have unfolded by then.
            EXPECT_TRUE(widget.grab().save(folder + '/' + name + ".png"));
        }
    }
};

} // namespace cantorel::test
