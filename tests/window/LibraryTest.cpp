#include "recording/library/RecordingsModel.h"
#include "tags/AudioIdentify.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/Wave.h"
#include "tests/window/WindowFixture.h"
#include "ui/LibraryTab.h"
#include "ui/RecordingTab.h"
#include "ui/ZQAudioConvertController.h"

#include <QAbstractButton>
#include <QBuffer>
#include <QDir>
#include <QDrag>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QScrollBar>
#include <QSlider>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>
#include <QUrl>
#include <QWindow>

namespace cantorel {
namespace {

// The library tab over a stored list of many recordings.
class LongLibrary : public test::WindowFixture {
public:
    static constexpr int kMany = 2500;

    LongLibrary() {
        QVariantList archived;
        for (int number = 0; number < kMany; ++number) {
            const QString file = QStringLiteral("%1/Track%2.mp3").arg(QDir::homePath()).arg(number);
            test::touch(file);
            archived << archivedItem({file, "00:03:10", "1.00 MB", "2026-03-05 14:07:09", {}, {}, {}});
        }
        AppSettings::setRecordedMovieList(archived);
        list.initRecordedList();
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        QApplication::setActiveWindow(&window); // There is no window manager to do it.
        find<QTabWidget>("tabs")->setCurrentIndex(1);
        pass(50);
        table = find<QTableView>("recordings");
    }
    QString title(int row) const { return table->model()->index(row, RecordingsModel::Title).data().toString(); }
    int rows() const { return table->model()->rowCount(); }
    QStringList selected() const {
        QStringList titles;
        for (const QModelIndex &index : table->selectionModel()->selectedRows())
            titles << index.data().toString();
        titles.sort();
        return titles;
    }
    void select(const QList<int> &at) {
        table->clearSelection();
        for (const int row : at)
            table->selectionModel()->select(table->model()->index(row, 0),
                                            QItemSelectionModel::Select | QItemSelectionModel::Rows);
        table->selectionModel()->setCurrentIndex(table->model()->index(at.last(), 0), QItemSelectionModel::NoUpdate);
    }
    void key(QWidget *widget, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        widget->setFocus();
        QTest::keyClick(widget, key, modifiers);
    }

    QTableView *table = nullptr;
};

} // namespace

TEST_F(LongLibrary, PlayingIntoARecordingOfSystemSoundIsAskedAboutOnce) {
    select({3});
    ASSERT_TRUE(session.startRecording());
    ASSERT_TRUE(passUntil([&] { return panel.state() == RecorderState::Recording; }));
    const auto sheets = [&] { return window.findChildren<QMessageBox *>("sheet").size(); };
    auto *notice = find<QLabel>("notice");
    key(table, Qt::Key_Return);
    ASSERT_EQ(sheets(), 1);
    EXPECT_TRUE((find<QMessageBox>("sheet")->text() + find<QMessageBox>("sheet")->informativeText())
                    .contains(Lang::windowPlaysIntoRecording()));
    answer(Lang::btnCancel());
    EXPECT_FALSE(notice->isVisible()) << "nothing was tried";
    key(table, Qt::Key_Return);
    answer(Lang::btnPlay());
    EXPECT_TRUE(notice->isVisible()) << "tried: this file holds no sound";
    const auto before = sheets();
    key(table, Qt::Key_Return);
    EXPECT_EQ(sheets(), before) << "once a recording";
    session.stopRecording();
    ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
}

TEST_F(LongLibrary, TheFirstArrowChoosesARowAndSoDoesPlayingAResult) {
    key(table, Qt::Key_Down);
    EXPECT_EQ(selected(), QStringList{title(0)});
    key(table, Qt::Key_Down);
    EXPECT_EQ(selected(), QStringList{title(1)});
    const QString file = table->model()->index(9, RecordingsModel::Title).data(Qt::ToolTipRole).toString();
    window.recordPage().showResult({.file = file, .seconds = 190, .bytes = 1'000'000});
    find<QAbstractButton>("playResult")->click();
    EXPECT_EQ(selected(), QStringList{title(9)});
    EXPECT_TRUE(window.library().isVisible());
}

TEST_F(LongLibrary, AFileThatHasGoneIsNamed) {
    select({3});
    const QString file = table->model()->index(3, RecordingsModel::Title).data(Qt::ToolTipRole).toString();
    ASSERT_TRUE(QFile::remove(file));
    key(table, Qt::Key_Return);
    EXPECT_TRUE(find<QLabel>("notice")->text().contains(QFileInfo(file).fileName()));
}

TEST_F(LongLibrary, TheSelectionSurvivesASortASearchAndAChangedList) {
    select({0, 1, 2, 700});
    const QStringList chosen = selected();
    ASSERT_EQ(chosen.size(), 4);
    auto *header = table->horizontalHeader();
    const QPoint onTitle(header->sectionViewportPosition(RecordingsModel::Title) + 20, header->height() / 2);
    for (int click = 0; click < 2; ++click) {
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, onTitle);
        EXPECT_EQ(selected(), chosen);
        EXPECT_EQ(table->currentIndex().data().toString(), "Track1799.mp3");
    }
    EXPECT_EQ(title(0), "Track2499.mp3") << "descending";
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, onTitle);
    EXPECT_EQ(title(0), "Track0.mp3");
    EXPECT_EQ(title(10), "Track10.mp3") << "by number, not by sign";

    auto *search = find<QLineEdit>("search");
    QTest::keyClicks(search, "24");
    EXPECT_EQ(selected(), chosen.mid(1)) << "those that are still shown";
    list.remove(*list.items().back());
    EXPECT_EQ(selected(), (QStringList{"Track2497.mp3", "Track2498.mp3"}));

    // All of them at once.
    search->clear();
    table->selectAll();
    list.remove(*list.items().front());
    EXPECT_EQ(selected().size(), kMany - 2);
}

TEST_F(LongLibrary, APlaceFarDownStaysWhenSomethingIsRecorded) {
    table->scrollTo(table->model()->index(1500, 0), QAbstractItemView::PositionAtTop);
    const QString top = title(table->rowAt(0));
    const QString file = QDir::homePath() + "/New.mp3";
    test::touch(file);
    list.addRecordedFile(file, {}, {});
    EXPECT_EQ(title(table->rowAt(0)), top);
    table->verticalScrollBar()->setValue(0);
    list.remove(*list.items().front());
    EXPECT_EQ(title(table->rowAt(0)), "New.mp3") << "at the top one sees what comes";
}

TEST_F(LongLibrary, WhatIsDraggedAreTheFilesOfTheSelectionButNoUnfinishedOne) {
    select({1, 3});
    const std::unique_ptr<QMimeData> dragged(table->model()->mimeData(table->selectionModel()->selectedIndexes()));
    QStringList files;
    for (const QUrl &url : dragged->urls())
        files << url.toLocalFile();
    files.sort();
    EXPECT_EQ(files, (QStringList{QDir::homePath() + "/Track2496.mp3", QDir::homePath() + "/Track2498.mp3"}));
    EXPECT_TRUE(table->dragEnabled());
    EXPECT_TRUE(table->model()->index(1, 0).flags() & Qt::ItemIsDragEnabled);
    list.items().back()->isRecording = true;
    EXPECT_FALSE(table->model()->index(0, 0).flags() & Qt::ItemIsDragEnabled);
}

TEST_F(LongLibrary, DatesAreShownAnewOnAnotherDay) {
    int told = 0;
    QObject::connect(table->model(), &QAbstractItemModel::dataChanged, table, [&] { ++told; });
    panel.dayDidChange();
    EXPECT_EQ(told, 1);
}

TEST_F(LongLibrary, DetailsStandBesideTheListOrCoverANarrowOneAndAreRemembered) {
    auto *panel = find<QWidget>("details");
    const auto texts = [&] {
        QStringList shown;
        for (const auto *label : panel->findChildren<QLabel *>())
            if (label->isVisible())
                shown << label->text().remove(QChar(0x200B)); // where a word may be broken
        return shown;
    };
    window.resize(1000, 600);
    key(table, Qt::Key_I, Qt::ControlModifier);
    ASSERT_TRUE(panel->isVisible() && table->isVisible());
    EXPECT_TRUE(QTest::qWaitFor([&] { return texts() == QStringList{Lang::windowNothingChosen()}; }));
    select({1200});
    photograph(window, "library-details");
    for (const QString &expected : QStringList{"Track1299.mp3", QDir::homePath(), "MP3", "00:03:10, 1.00 MB"})
        EXPECT_TRUE(QTest::qWaitFor([&] { return texts().contains(expected); }))
            << expected.toStdString() << " in " << texts().join('|').toStdString();
    EXPECT_FALSE(texts().contains(Lang::windowArtist())) << "nothing is said where there is nothing";
    list.remove(*list.items()[1299]);
    EXPECT_FALSE(texts().contains("Track1299.mp3"));

    window.resize(820, 600);
    EXPECT_TRUE(table->isVisible() && !panel->isVisible()) << "a window that becomes narrow keeps its list";
    find<QLineEdit>("search")->setText("Track");
    for (const bool byKey : {true, false}) {
        click("showDetails");
        ASSERT_TRUE(panel->isVisible() && !table->isVisible());
        photograph(window, "library-details-narrow");
        if (byKey)
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        else
            click("back");
        EXPECT_TRUE(table->isVisible() && !panel->isVisible() && table->hasFocus());
        EXPECT_FALSE(find<QLineEdit>("search")->text().isEmpty()) << "one thing at a time";
    }
    QTest::keyClick(table, Qt::Key_Escape);
    EXPECT_TRUE(find<QLineEdit>("search")->text().isEmpty());
    window.resize(1000, 600);
    EXPECT_FALSE(panel->isVisible()) << "it was closed";
    EXPECT_FALSE(table->isColumnHidden(RecordingsModel::Size));
    window.resize(560, 420);
    EXPECT_TRUE(table->isColumnHidden(RecordingsModel::Size)) << "the title needs the room";
    EXPECT_GE(table->columnWidth(RecordingsModel::Title), 200);
}

TEST_F(LongLibrary, KeysDoTheirWorkInTheListAndFieldsKeepTheirs) {
    auto *search = find<QLineEdit>("search");
    const auto current = [&] { return table->currentIndex().row(); };
    const auto shown = [&] { return list.items().size(); };
    const struct {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        std::function<bool()> isDone;
        const char *what;
    } keys[] = {{Qt::Key_End, {}, [&] { return current() == kMany - 1; }, "the last row"},
                {Qt::Key_Home, {}, [&] { return current() == 0; }, "the first row"},
                {Qt::Key_PageDown, {}, [&] { return current() > 2; }, "a page further"},
                {Qt::Key_PageUp, {}, [&] { return current() == 0; }, "a page back"},
                {Qt::Key_Down, {}, [&] { return current() == 1 && selected().size() == 1; }, "a row further"},
                {Qt::Key_Down, Qt::ShiftModifier, [&] { return selected().size() == 2; }, "two rows"},
                {Qt::Key_Right, {}, [&] { return current() == 2; }, "the row stays"},
                {Qt::Key_Delete, {}, [&] { return shown() == kMany - 2; }, "off the list"},
                {Qt::Key_Z, Qt::ControlModifier, [&] { return shown() == kMany; }, "back again"},
                {Qt::Key_Z, Qt::ControlModifier, [&] { return shown() == kMany; }, "just once"},
                {Qt::Key_F, Qt::ControlModifier, [&] { return search->hasFocus(); }, "search"},
                {Qt::Key_Space, {}, [&] { return search->text() == " "; }, "a text"},
                {Qt::Key_Home, {}, [&] { return search->cursorPosition() == 0; }, "in the text"},
                {Qt::Key_Delete, {}, [&] { return search->text().isEmpty() && shown() == kMany; }, "a sign"},
                {Qt::Key_Return, {}, [&] { return table->hasFocus(); }, "what was found"}};
    table->setFocus();
    for (const auto &[key, modifiers, isDone, what] : keys) {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
        EXPECT_TRUE(isDone()) << what;
    }
    select({5});
    table->setCurrentIndex(table->model()->index(5, RecordingsModel::Length)); // as a click there does
    key(table, Qt::Key_F2);
    auto *editor = table->viewport()->findChild<QLineEdit *>();
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor->selectedText(), "Track2494");
    QTest::keyClicks(editor, "Renamed");
    QTest::keyClick(editor, Qt::Key_Return);
    pass(50); // The editor goes.
    EXPECT_EQ(title(5), "Renamed.mp3");
}

TEST_F(LongLibrary, ThePictureBelowThePointerPlaysAndWhatIsRecordedStaysOnTop) {
    const auto tile = [&](int row) { return table->visualRect(table->model()->index(row, RecordingsModel::Cover)); };
    const auto look = [&](int row) { return table->viewport()->grab(tile(row)).toImage(); };
    const QImage before = look(2);
    QTest::mouseMove(table->viewport(), tile(2).center());
    ASSERT_TRUE(passUntil([&] { return look(2) != before; })) << "a sign stands on it";
    photograph(window, "library-hover");
    QTest::mouseMove(table->viewport(), tile(4).center());
    EXPECT_TRUE(passUntil([&] { return look(2) == before; }));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, tile(2).center());
    EXPECT_TRUE(find<QLabel>("notice")->isVisible()) << "tried: this file holds no sound";

    RecordedAudioInfo &item = *list.items()[7];
    for (const bool isRecording : {true, false}) {
        item.isRecording = isRecording;
        window.library().itemDidChange(item);
        EXPECT_EQ(title(0) == "Track7.mp3", isRecording);
    }
    table->sortByColumn(RecordingsModel::Size, Qt::AscendingOrder);
    item.isRecording = true;
    window.library().listDidChange();
    EXPECT_EQ(title(0), "Track7.mp3") << "in any order";
    item.isRecording = false;
    window.showStatuses();
    EXPECT_EQ(title(7), "Track7.mp3") << "and then where it belongs";
}

TEST_F(LongLibrary, WhatIsDroppedIsConvertedEditedOrJoinsTheListWhereItLies) {
    const QDir home(QDir::homePath());
    ASSERT_TRUE(home.mkpath("Album/Inner"));
    for (const char *sound : {"Album/One.wav", "Album/Inner/Deep.wav", "Two.wav"})
        ASSERT_TRUE(test::writeWav(home.filePath(sound), std::vector<float>(2 * 48'000)));
    test::touch(home.filePath("Album/Cover.jpg"));
    test::touch(home.filePath("Rubbish.mp3"));
    auto *notice = find<QLabel>("notice");
    auto *places = find<QWidget>("dropPlaces");
    // With the mouse, which hovers above that part of the page before it lets go.
    const auto drop = [&](const QStringList &names, double x, double y) {
        auto *drag = new QDrag(&window); // which ends itself
        auto *data = new QMimeData;
        QList<QUrl> urls;
        for (const QString &name : names)
            urls << QUrl::fromLocalFile(home.filePath(name));
        data->setUrls(urls);
        drag->setMimeData(data);
        QTimer::singleShot(0, drag, [&] {
            QWindow *screen = window.windowHandle();
            QWidget *search = find<QWidget>("search");
            QTest::mouseMove(screen, search->mapTo(&window, search->rect().center()));
            EXPECT_EQ(places->isVisible(), !names.isEmpty()) << "above a field as well";
            const QPoint at(static_cast<int>(x * places->width()), static_cast<int>(y * places->height()));
            QTest::mouseMove(screen, places->mapTo(&window, at));
            photograph(window, "library-drop");
            QTest::mouseRelease(screen, Qt::LeftButton, {}, places->mapTo(&window, at));
        });
        const Qt::DropAction done = drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::MoveAction);
        EXPECT_FALSE(places->isVisible());
        return done;
    };
    const struct {
        QStringList names;
        QStringList joined; // of the end of the list
        QString said;
    } drops[] = {{{"Album", "Two.wav", "Rubbish.mp3"}, {"One.wav", "Two.wav"}, "Rubbish.mp3"},
                 {{"Two.wav"}, {"One.wav", "Two.wav"}, Lang::windowAlreadyListed()},
                 {{"Album/Inner/Deep.wav"}, {"One.wav", "Two.wav", "Deep.wav"}, "Deep.wav"}};
    for (const auto &[names, joined, said] : drops) {
        ASSERT_EQ(drop(names, 0.5, 0.9), Qt::CopyAction);
        EXPECT_TRUE(passUntil([&] { return notice->text().contains(said); })) << notice->text().toStdString();
        photograph(window, "library-dropped");
        QStringList listed;
        for (std::size_t at = kMany; at < list.items().size(); ++at)
            listed << list.items()[at]->getTitle();
        EXPECT_EQ(listed, joined);
    }
    EXPECT_EQ(list.items().back()->duration(), "00:00:01");
    EXPECT_EQ(list.items().back()->getFileName(), home.filePath("Album/Inner/Deep.wav")) << "not moved, not copied";
    click("undo");
    EXPECT_EQ(list.items().size(), kMany + 2u) << "the last ones only";
    EXPECT_TRUE(QFile::exists(home.filePath("Album/Inner/Deep.wav")));
    EXPECT_EQ(drop({}, 0.5, 0.5), Qt::IgnoreAction) << "no files";

    const auto isConverted = [&](int rows) {
        EXPECT_TRUE(passUntil([&] { return converter.numberOfAudioEntitys() == rows; })) << rows;
        EXPECT_TRUE(window.convertPage().isVisible());
        window.convertPage().goBack();
    };
    drop({"Two.wav"}, 0.25, 0.3);
    isConverted(1);
    drop({"Album", "Two.wav"}, 0.75, 0.3); // of several none is edited
    isConverted(4);
    drop({"Two.wav"}, 0.75, 0.3);
    EXPECT_TRUE(window.editorPage().isVisible());
    EXPECT_TRUE(passUntil([&] { return window.editorPage().manager().player().isPlayButtonEnabled(); }));
    EXPECT_EQ(list.items().size(), kMany + 2u);

    // The record page takes them in the same way.
    window.editorPage().goBack();
    QWidget &record = window.recordPage();
    const auto dropThere = [&](double y) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(home.filePath("Album/Inner/Deep.wav"))});
        const QPoint at(record.width() / 4, static_cast<int>(y * record.height()));
        QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&record, &enter);
        EXPECT_EQ(find<QWidget>("recordDropPlaces")->isVisible(), enter.isAccepted());
        photograph(window, "record-drop");
        QDropEvent event(at, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&record, &event);
    };
    window.showRecordPage();
    dropThere(0.2);
    isConverted(5);
    window.showRecordPage();
    dropThere(0.98);
    EXPECT_TRUE(window.library().isVisible());
    EXPECT_TRUE(passUntil([&] { return list.items().size() == kMany + 3u; }));
}

TEST_F(LongLibrary, AddAsksWithTheDesktopsDialogOrWithOurOwnWhereItHasNone) {
    struct Desktop : desktop::FileChooser {
        void ask(const Question &, Answer answer) override { answered = std::move(answer); }
        Answer answered;
    };
    auto *desktop = new Desktop;
    desktop::InstalledServices::current().chooser.reset(desktop);
    click("add");
    EXPECT_EQ(window.findChild<QFileDialog *>(), nullptr);
    desktop->answered({});
    auto *own = find<QFileDialog>("fileDialog");
    EXPECT_TRUE(own->isVisible());
    own->close();
    const QString sound = path("One.wav");
    ASSERT_TRUE(test::writeWav(sound, std::vector<float>(2 * 48'000)));
    click("add");
    desktop->answered(QStringList{sound});
    EXPECT_TRUE(passUntil([&] { return list.items().size() == kMany + 1u; }));
    click("add");
    desktop->answered(QStringList());
    pass(50);
    EXPECT_EQ(list.items().size(), kMany + 1u);
}

TEST_F(LongLibrary, ACoverIsShownOnceItIsDecoded) {
    EXPECT_EQ(table->horizontalHeader()->logicalIndex(0), RecordingsModel::Cover);
    photograph(window, "library-long");
    RecordedAudioInfo &newest = *list.items().back();
    QImage red(600, 300, QImage::Format_RGB32);
    red.fill(Qt::red);
    QByteArray picture;
    QBuffer encoded(&picture);
    ASSERT_TRUE(red.save(&encoded, "PNG"));
    newest.setCover(picture);
    list.items().front()->setCover(QByteArrayLiteral("no picture"));
    const auto cover = [&](int row, QIcon::Mode mode = QIcon::Normal) {
        const auto icon = table->model()->index(row, RecordingsModel::Cover).data(Qt::DecorationRole).value<QIcon>();
        return icon.pixmap(table->iconSize(), mode).toImage();
    };
    ASSERT_TRUE(passUntil([&] { return cover(0).pixelColor(cover(0).rect().center()) == QColor(Qt::red); }));
    EXPECT_EQ(cover(0).width() / 2, cover(0).height()) << "not distorted";
    EXPECT_EQ(cover(0, QIcon::Selected), cover(0)) << "not mixed with the selection's colour";
    EXPECT_FALSE(cover(2).isNull()) << "a drawn one";
    // One that the list doesn't hold is read from its file; a written tag brings the next.
    constexpr int kFar = 1000;
    const QString file = list.items()[kMany - 1 - kFar]->getFileName();
    for (const Qt::GlobalColor colour : {Qt::blue, Qt::green}) {
        red.fill(colour);
        QByteArray written;
        QBuffer buffer(&written);
        ASSERT_TRUE(red.save(&buffer, "PNG"));
        if (colour == Qt::blue)
            test::store(file, (QByteArray("\xFF\xFB\x90\x64") + QByteArray(413, '\0')).repeated(9));
        ASSERT_TRUE(AudioIdentify::saveID3ToFile({"T", "Somebody", "", "", "", written, {}}, file));
        if (colour == Qt::green)
            list.takeTags({file});
        ASSERT_TRUE(passUntil([&] {
            const QColor seen = cover(kFar).pixelColor(cover(kFar).rect().center());
            return (colour == Qt::blue ? seen.blue() : seen.green()) > 250 && seen.red() < 5;
        }));
    }
    EXPECT_EQ(list.items()[kMany - 1 - kFar]->artist(), "Somebody");
    (void)cover(kMany - 1);
    pass(100);
    EXPECT_EQ(cover(kMany - 1), cover(2)) << "what is no picture";
    photograph(window, "library-cover");
}

} // namespace cantorel
