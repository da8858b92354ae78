#include "platform/desktop/recorded/RecordedServices.h"
#include "platform/media/SoundFacts.h"
#include "tests/support/Wave.h"
#include "tests/window/WindowFixture.h"
#include "ui/LibraryTab.h"
#include "ui/ZQAudioConvertController.h"

#include <QDir>
#include <QDropEvent>
#include <QHelpEvent>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>
#include <QToolButton>
#include <QToolTip>
#include <QWindow>

namespace cantorel {
namespace {

using Column = ConvertModel::Column;

// A launcher that notes what it is to show; below 0 for nothing.
struct Launcher : desktop::LauncherEntry {
    void showProgress(double progress) override { shown.push_back(progress); }
    void hideProgress() override { shown.push_back(-1); }
    std::vector<double> shown;
};

class ConvertPage : public test::WindowFixture {
public:
    ConvertPage() : WindowFixture(test::EmbeddedWorld::Virtual::Installed, desktop::recordedServices(record())) {
        desktop::InstalledServices::current().launcher.reset(launcher);
        AppSettings::setConvertOutputPath(folder.path());
        QDir().mkpath(path("Album/Inner"));
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        QApplication::setActiveWindow(&window);
    }
    static std::shared_ptr<desktop::CallRecord> record() {
        static const auto calls = std::make_shared<desktop::CallRecord>();
        return calls;
    }
    QString sound(const char *name, int seconds = 1) {
        EXPECT_TRUE(test::writeWav(path(name), std::vector<float>(static_cast<std::size_t>(seconds) * 2 * 48'000)));
        return path(name);
    }
    // Opens the page by the button of the library that a chosen recording offers.
    void openFromLibrary(const QString &file) {
        list.append({{file, "00:00:01", "1.00 MB", {}, {}, {}, {}}});
        window.library().listDidChange();
        find<QTabWidget>("tabs")->setCurrentIndex(1);
        pass(50);
        find<QTableView>("recordings")->selectRow(0);
        click("convertSelected");
        ASSERT_TRUE(hasRows(1));
    }
    bool drop(const QStringList &paths) {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString &each : paths)
            urls << QUrl::fromLocalFile(each);
        data.setUrls(urls);
        QDragEnterEvent enter({5, 5}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
        enter.ignore();
        QApplication::sendEvent(&window.convertPage(), &enter);
        if (!enter.isAccepted())
            return false;
        QDropEvent event({5, 5}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&window.convertPage(), &event);
        return true;
    }
    // Converters stand back behind all that the machine does besides.
    bool passUntil(const std::function<bool()> &condition) { return WindowFixture::passUntil(condition, 60000); }
    bool hasRows(int count) {
        return passUntil([&] { return rows().rowCount() == count; });
    }
    bool isDone() {
        return passUntil([&] { return !converter.isConverting(); });
    }
    QAbstractItemModel &rows() { return *find<QTableView>("convertRows")->model(); }
    QString line(int row) { return rows().index(row, Column::Name).data(ConvertModel::LineRole).toString(); }
    QStringList names() {
        QStringList all;
        for (int row = 0; row < rows().rowCount(); ++row)
            all << rows().index(row, Column::Name).data().toString();
        return all;
    }
    void clickCell(int row, Column column) {
        auto *table = find<QTableView>("convertRows");
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, table->visualRect(rows().index(row, column)).center());
    }
    // What the menu of a row offers; one of it is chosen.
    QStringList menuOf(int row, const QString &chosen) {
        QStringList offered;
        QTimer looks;
        QObject::connect(&looks, &QTimer::timeout, &looks, [&] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            if (!menu || !offered.isEmpty())
                return;
            for (QAction *action : menu->actions()) {
                offered << action->text();
                if (action->text() == chosen)
                    QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
            }
            menu->close(); // where it was not among them
        });
        looks.start(1);
        auto *table = find<QTableView>("convertRows");
        const QPoint at = table->visualRect(rows().index(row, Column::Name)).center();
        QTest::mouseClick(window.windowHandle(), Qt::RightButton, {}, table->viewport()->mapTo(&window, at));
        EXPECT_TRUE(passUntil([&] { return !offered.isEmpty(); }));
        return offered;
    }

    Launcher *launcher = new Launcher; // which the services own
};

TEST_F(ConvertPage, WhatIsChosenOrDroppedIsConvertedAndAFailureSaysWhyAndIsTriedAgain) {
    openFromLibrary(sound("One.wav"));
    EXPECT_TRUE(window.convertPage().isVisible());
    sound("Album/Two.wav");
    sound("Album/Inner/Three.wav");
    test::touch(path("Album/Cover.jpg"));
    test::store(path("Rubbish.mp3"), "no sound");
    EXPECT_FALSE(drop({}));
    ASSERT_TRUE(drop({path("Album"), path("Rubbish.mp3")}));
    ASSERT_TRUE(hasRows(4));
    EXPECT_EQ(names(), (QStringList{"One", "Three", "Two", "Rubbish"}));
    EXPECT_TRUE(passUntil([&] { return rows().index(0, Column::Length).data() == "00:00:01"; }));
    photograph(window, "convert-ready");
    find<QTableView>("convertRows")->selectRow(1);
    click("convertDown");
    EXPECT_EQ(names(), (QStringList{"One", "Two", "Three", "Rubbish"}));
    EXPECT_FALSE(find<QWidget>("convertBar")->isVisible());
    click("startConvert");
    EXPECT_TRUE(find<QWidget>("convertBar")->isVisible());
    EXPECT_FALSE(find<QWidget>("convertRemove")->isVisible()) << "the queue cannot take it now";
    EXPECT_FALSE(find<QWidget>("convertFormat")->isVisible()) << "text while it runs";
    ASSERT_TRUE(isDone());
    pass(50);
    EXPECT_EQ(line(0), "One.mp3");
    EXPECT_EQ(find<QLabel>("convertCount")->text(), "3 files converted. Failed: 1");
    EXPECT_EQ(line(3), "\"Rubbish.mp3\" holds no sound that can be read.");
    EXPECT_TRUE(rows().index(3, Column::Name).data(ConvertModel::TroubleRole).toBool());
    EXPECT_EQ(launcher->shown.back(), -1);
    EXPECT_GT(launcher->shown.size(), 1u);
    photograph(window, "convert-done");
    click("revealConverted");
    const QStringList made{path("One.mp3"), path("Two.mp3"), path("Three.mp3")};
    EXPECT_EQ(record()->calls().last(), "reveal " + made.join(' '));
    ASSERT_TRUE(QFile::remove(path("Rubbish.mp3")));
    sound("Rubbish.mp3"); // by now it is one
    clickCell(3, Column::Action);
    ASSERT_TRUE(isDone());
    EXPECT_EQ(find<QLabel>("convertCount")->text(), "4 files converted");
    EXPECT_EQ(rows().index(0, Column::Status).data(ConvertModel::StatusRole).toInt(), 3) << "the others stay";
    find<QTableView>("convertRows")->selectRow(3);
    QTest::keyClick(find<QTableView>("convertRows"), Qt::Key_Delete);
    EXPECT_EQ(names(), (QStringList{"One", "Two", "Three"}));
}

TEST_F(ConvertPage, ManyFilesComeInOneGoBesideWhatIsChosen) {
    openFromLibrary(sound("One.wav"));
    auto *table = find<QTableView>("convertRows");
    QSignalSpy added(&rows(), &QAbstractItemModel::rowsInserted), begunAnew(&rows(), &QAbstractItemModel::modelReset);
    QStringList many;
    for (int i = 0; i < 1000; ++i)
        many << path(qPrintable(QStringLiteral("gone%1.wav").arg(i)));
    table->selectRow(0);
    ASSERT_TRUE(drop(many));
    ASSERT_TRUE(hasRows(1001));
    EXPECT_EQ(table->selectionModel()->selectedRows().value(0).row(), 0);
    ASSERT_TRUE(passUntil([&] { return table->verticalScrollBar()->maximum() >= 2000; })) << "they are laid out";
    table->verticalScrollBar()->setValue(2000);
    ASSERT_TRUE(drop({path("Two.wav")}));
    ASSERT_TRUE(hasRows(1002));
    EXPECT_EQ(table->verticalScrollBar()->value(), 2000);
    EXPECT_EQ(added.count(), 2);
    EXPECT_EQ(begunAnew.count(), 0);
}

TEST_F(ConvertPage, WhileAnotherPageIsShownAStripTellsHowFarItIsAndStopsIt) {
    openFromLibrary(sound("Long.wav", 240));
    ASSERT_TRUE(drop({sound("Next.wav"), sound("Last.wav")}));
    ASSERT_TRUE(hasRows(3));
    click("startConvert");
    ASSERT_TRUE(passUntil([&] { return converter.progress().percent > 0; }));
    photograph(window, "convert-running");
    clickCell(2, Column::Action);
    EXPECT_EQ(rows().index(2, Column::Status).data(ConvertModel::StatusRole).toInt(), 4) << "its wait was cancelled";
    EXPECT_FALSE(find<QWidget>("convertStrip")->isVisible()) << "on the page itself";
    window.convertPage().goBack();
    for (const int tab : {0, 1}) {
        find<QTabWidget>("tabs")->setCurrentIndex(tab);
        EXPECT_TRUE(find<QWidget>("convertStrip")->isVisible());
        EXPECT_EQ(find<QLabel>("convertStripText")->text(), "Converting... 2 of 3");
    }
    photograph(window, "convert-strip");
    click("showConvert");
    EXPECT_TRUE(window.convertPage().isVisible());
    window.convertPage().goBack();
    click("stopConvert");
    EXPECT_FALSE(find<QPushButton>("startConvert")->isEnabled()) << "it is being stopped";
    ASSERT_TRUE(isDone());
    EXPECT_EQ(window.convertPage().summaryText(), "Failed: 3");
    EXPECT_EQ(find<QLabel>("convertStripText")->text(), "Failed: 3") << find<QLabel>("convertStripText")->isVisible();
    EXPECT_FALSE(QFile::exists(path("Long.mp3")));
    click("convertStripClose");
    EXPECT_FALSE(find<QWidget>("convertStrip")->isVisible());
}

TEST_F(ConvertPage, MovingARowToAnEndKeepsTheFocusAndTheSelection) {
    openFromLibrary(sound("One.wav"));
    ASSERT_TRUE(drop({sound("Two.wav"), sound("Three.wav")}));
    ASSERT_TRUE(hasRows(3));
    const struct {
        const char *button;
        int from, to;
        QStringList names;
    } moves[] = {{"convertDown", 1, 2, {"One", "Three", "Two"}}, {"convertUp", 1, 0, {"Three", "One", "Two"}}};
    auto *table = find<QTableView>("convertRows");
    for (const auto &[name, from, to, moved] : moves) {
        table->selectRow(from);
        auto *button = find<QToolButton>(name);
        button->setFocus();
        QTest::keyClick(button, Qt::Key_Space);
        QTest::keyClick(button, Qt::Key_Space); // nothing moves any more
        EXPECT_EQ(names(), moved);
        EXPECT_TRUE(button->hasFocus());
        EXPECT_TRUE(table->selectionModel()->isRowSelected(to));
    }
}

TEST_F(ConvertPage, AReasonThatLacksRoomIsToldWhole) {
    const QString name = "A <b> " + QString(180, 'x');
    test::store(path(qPrintable(name + ".mp3")), "no sound");
    openFromLibrary(path(qPrintable(name + ".mp3")));
    ASSERT_TRUE(passUntil([&] { return line(0).endsWith("can be read."); })) << line(0).toStdString();
    auto *table = find<QTableView>("convertRows");
    for (const Column column : {Column::Name, Column::Status}) {
        const QModelIndex cell = rows().index(0, column);
        QHelpEvent help(QEvent::ToolTip, table->visualRect(cell).center(),
                        table->viewport()->mapToGlobal(table->visualRect(cell).center()));
        QApplication::sendEvent(table->viewport(), &help);
        EXPECT_EQ(QToolTip::text(), "<p>" + (name + ", " + line(0)).toHtmlEscaped() + "</p>");
        QToolTip::hideText();
    }
    EXPECT_TRUE(rows().index(0, Column::Name).data(Qt::AccessibleTextRole).toString().endsWith(line(0)));
    photograph(window, "convert-reason");
}

TEST_F(ConvertPage, TwoFilesAreJoinedIntoOneThatIsNamed) {
    openFromLibrary(sound("One.wav"));
    ASSERT_TRUE(drop({sound("Two.wav", 2)}));
    ASSERT_TRUE(hasRows(2));
    QStringList told;
    QObject::connect(&window.convertPage(), &ui::ZQAudioConvertController::progressed,
                     [&] { told << find<QLabel>("convertCount")->text(); });
    click("convertJoin");
    click("startConvert");
    ASSERT_TRUE(isDone());
    EXPECT_EQ(told.last(), Lang::commMerging());
    EXPECT_EQ(find<QLabel>("convertCount")->text(), "2 files converted. One-merge.mp3");
    EXPECT_EQ(window.convertPage().results(), QStringList(path("One-merge.mp3")));
    const auto facts = media::soundFacts(path("One-merge.mp3"));
    ASSERT_TRUE(facts);
    EXPECT_NEAR(facts.value().seconds, 3, 0.2);
    EXPECT_FALSE(QFile::exists(path("One.mp3")) || QFile::exists(path("Two.mp3")));
}

TEST_F(ConvertPage, LeavingAsksWhileItConverts) {
    openFromLibrary(sound("Long.wav", 240));
    click("startConvert");
    ASSERT_TRUE(passUntil([&] { return converter.progress().percent > 0; }));
    window.close();
    ASSERT_TRUE(find<QWidget>("leave0")->isVisible());
    EXPECT_EQ(find<QLabel>("leaveText")->text(), "Converting... 1 of 1");
    click("leave0");
    pass(50);
    EXPECT_TRUE(converter.isConverting());
    EXPECT_FALSE(find<QWidget>("leave0")->isVisible());
    converter.stopConvert();
    ASSERT_TRUE(isDone());
    EXPECT_EQ(QDir(folder.path()).entryList({".*", "*.mp3"}, QDir::Files | QDir::Hidden), QStringList());
}

TEST_F(ConvertPage, TheMenuOfARowOffersWhatItsStateAllows) {
    openFromLibrary(sound("One.wav"));
    test::store(path("Rubbish.mp3"), "no sound");
    ASSERT_TRUE(drop({path("Rubbish.mp3"), sound("Long.wav", 240), sound("Last.wav")}));
    ASSERT_TRUE(hasRows(4));
    const QString shows = Lang::btnShowInFinder(), removes = Lang::btnRemove(), again = Lang::windowTryAgain();
    EXPECT_EQ(menuOf(3, removes), QStringList(removes));
    ASSERT_EQ(names(), (QStringList{"One", "Rubbish", "Long"}));
    click("startConvert");
    EXPECT_EQ(menuOf(2, Lang::btnCancel()), QStringList(Lang::btnCancel()));
    ASSERT_TRUE(isDone());
    EXPECT_EQ(rows().index(2, Column::Status).data(ConvertModel::StatusRole).toInt(), 4);
    EXPECT_EQ(menuOf(0, shows), (QStringList{shows, removes}));
    EXPECT_EQ(record()->calls().last(), "reveal " + path("One.mp3"));
    sound("Rubbish.mp3"); // by now it is one
    EXPECT_EQ(menuOf(1, again), (QStringList{again, removes}));
    ASSERT_TRUE(isDone());
    EXPECT_TRUE(QFile::exists(path("Rubbish.mp3"))) << "beside it";
    EXPECT_EQ(line(1), "Rubbish-2.mp3");
}

} // namespace
} // namespace cantorel
