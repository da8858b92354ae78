// The editor of tags in the details beside the list.

#include "recording/library/RecordingsModel.h"
#include "tags/AudioIdentify.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/window/WindowFixture.h"
#include "ui/LibraryTab.h"

#include <QBuffer>
#include <QComboBox>
#include <QDir>
#include <QDragEnterEvent>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QToolButton>
#include <QUrl>

namespace cantorel {
namespace {

class TagEditor : public test::WindowFixture {
public:
    TagEditor() {
        QVariantList archived;
        for (const char *name : {"One.mp3", "Two.mp3", "Film.m4a", "Plain.wav"}) {
            test::store(path(name), mpegSound());
            archived << archivedItem({path(name), "00:03:10", "1.00 MB", "2026-03-05 14:07:09", {}, {}, {}});
        }
        EXPECT_TRUE(AudioIdentify::saveID3ToFile({"First", "Choir", "Live", "Rock", "2001", {}, {}}, path("One.mp3")));
        EXPECT_TRUE(AudioIdentify::saveID3ToFile({"Second", "Choir", "Live", "Pop", "2001", {}, {}}, path("Two.mp3")));
        AppSettings::setRecordedMovieList(archived);
        list.initRecordedList();
        window.resize(1000, 720);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        QApplication::setActiveWindow(&window); // There is no window manager to do it.
        find<QTabWidget>("tabs")->setCurrentIndex(1);
        pass(50);
        click("showDetails");
    }
    static QString path(const char *name) { return QDir::homePath() + '/' + name; }
    static id3Tag tagsOf(const char *name) { return AudioIdentify::getID3TagFromFile(path(name)).value_or(id3Tag()); }
    void select(const std::vector<const char *> &names) {
        auto *table = find<QTableView>("recordings");
        table->clearSelection();
        for (int row = 0; row < table->model()->rowCount(); ++row)
            for (const char *name : names)
                if (table->model()->index(row, RecordingsModel::Title).data(Qt::ToolTipRole).toString() == path(name))
                    table->selectionModel()->setCurrentIndex(table->model()->index(row, 0),
                                                             QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    // Replaces what a field says, by keys.
    void type(const char *field, const QString &text) {
        auto *line = find<QLineEdit>(field);
        QTest::mouseClick(line, Qt::LeftButton);
        line->selectAll();
        if (text.isEmpty())
            QTest::keyClick(line, Qt::Key_Delete);
        QTest::keyClicks(line, text);
    }
    bool shows(const char *field, const QString &text) {
        return passUntil([&] {
            auto *line = find<QLineEdit>(field);
            return line->isVisible() && !line->isReadOnly() && line->text() == text;
        });
    }
    bool isTold(const QString &text) {
        return passUntil([&] { return find<QLabel>("notice")->text().contains(text); });
    }
    bool drop(const QString &file) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(file)});
        auto *panel = find<QWidget>("details");
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
        enter.ignore();
        QApplication::sendEvent(panel, &enter);
        QDropEvent event({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
        return enter.isAccepted() && QApplication::sendEvent(panel, &event);
    }
};

TEST_F(TagEditor, WhatIsTypedChosenAndDroppedIsSavedAndTakenBack) {
    select({"One.mp3"});
    ASSERT_TRUE(shows("tagTitle", "First"));
    const QByteArray before = test::contents(path("One.mp3"));
    photograph(window, "tags");
    type("tagTitle", "Another");
    type("tagArtist", "");
    find<QComboBox>("tagGenre")->setFocus();
    QTest::keyClick(find<QComboBox>("tagGenre"), Qt::Key_Down);
    QImage red(80, 40, QImage::Format_RGB32);
    red.fill(Qt::red);
    ASSERT_TRUE(red.save(path("cover.png")));
    ASSERT_TRUE(drop(path("cover.png")));
    test::store(path("broken.jpg"), "no picture");
    ASSERT_TRUE(drop(path("broken.jpg")));
    ASSERT_TRUE(isTold("broken.jpg")) << find<QLabel>("notice")->text().toStdString();
    EXPECT_EQ(test::contents(path("One.mp3")), before) << "not before it is saved";
    photograph(window, "tags-typed");
    click("saveTags");
    ASSERT_TRUE(isTold(Lang::toolsID3TagsSuccess()));
    EXPECT_TRUE(find<QWidget>("savedOK")->isVisible());
    const id3Tag saved = tagsOf("One.mp3");
    EXPECT_EQ(QStringList({saved.id3Title, saved.id3Artist, saved.id3Album, saved.id3Year}),
              QStringList({"Another", "", "Live", "2001"}));
    const QStringList genres = id3Tag::getAllGenreList();
    EXPECT_EQ(saved.id3Genre, genres[genres.indexOf("Rock") + 1]);
    EXPECT_EQ(QImage::fromData(saved.id3Image).size(), red.size());
    EXPECT_TRUE(passUntil([&] { return !list.itemWithFile(path("One.mp3"))->cover().isEmpty(); }))
        << "the list follows";
    EXPECT_EQ(list.itemWithFile(path("One.mp3"))->artist(), "");
    photograph(window, "tags-saved");
    EXPECT_TRUE(passUntil([&] { return !find<QWidget>("savedOK")->isVisible(); }));
    click("undo");
    EXPECT_TRUE(shows("tagTitle", "First"));
    EXPECT_EQ(test::contents(path("One.mp3")), before);
    EXPECT_TRUE(passUntil([&] { return list.itemWithFile(path("One.mp3"))->artist() == "Choir"; }));
}

TEST_F(TagEditor, OfSeveralOnlyTouchedFieldsAreWritten) {
    select({"One.mp3", "Two.mp3"});
    ASSERT_TRUE(shows("tagArtist", "Choir"));
    EXPECT_EQ(find<QLineEdit>("tagTitle")->text(), "");
    EXPECT_EQ(find<QLineEdit>("tagTitle")->placeholderText(), Lang::windowMixedTags());
    photograph(window, "tags-several");
    type("tagAlbum", "Studio");
    QTest::keyClick(find<QLineEdit>("tagAlbum"), Qt::Key_Return);
    ASSERT_TRUE(isTold(Lang::toolsID3TagsSuccess()));
    EXPECT_EQ(tagsOf("One.mp3"), (id3Tag{"First", "Choir", "Studio", "Rock", "2001", {}, {}}));
    EXPECT_EQ(tagsOf("Two.mp3"), (id3Tag{"Second", "Choir", "Studio", "Pop", "2001", {}, {}}));
}

TEST_F(TagEditor, WhatIsLeftUnsavedOrFailsIsToldAndNotLost) {
    select({"One.mp3"});
    ASSERT_TRUE(shows("tagTitle", "First"));
    type("tagTitle", "Kept");
    select({"Two.mp3"});
    ASSERT_TRUE(isTold(Lang::windowTagsLeft()));
    photograph(window, "tags-left");
    EXPECT_EQ(tagsOf("One.mp3").id3Title, "First");
    click("saveLeftTags");
    ASSERT_TRUE(isTold(Lang::toolsID3TagsSuccess()));
    EXPECT_EQ(tagsOf("One.mp3").id3Title, "Kept");

    ASSERT_TRUE(shows("tagTitle", "Second"));
    type("tagTitle", "Typed last");
    find<QTabWidget>("tabs")->setCurrentIndex(0);
    int ends = 0;
    QObject::connect(&window, &ui::MainWindow::mayEnd, &window, [&] { ++ends; });
    window.close();
    EXPECT_EQ(ends, 0);
    EXPECT_EQ(find<QTabWidget>("tabs")->currentIndex(), 1);
    ASSERT_TRUE(isTold(Lang::windowTagsLeft()));
    ASSERT_TRUE(shows("tagTitle", "Second"));
    window.close();
    EXPECT_EQ(ends, 1);
    window.show();
    click("saveLeftTags");
    ASSERT_TRUE(isTold(Lang::toolsID3TagsSuccess()));
    ASSERT_TRUE(shows("tagTitle", "Typed last"));

    test::store(path("Two.mp3"), "no sound");
    click("clearTags");
    type("tagTitle", "Mine");
    click("saveTags");
    ASSERT_TRUE(isTold("Failed to write ID3 tags!"));
    EXPECT_TRUE(isTold("Two.mp3")) << "the reason";
    photograph(window, "tags-failed");
    EXPECT_TRUE(shows("tagTitle", "Mine"));
    EXPECT_EQ(test::contents(path("Two.mp3")), "no sound");
    EXPECT_FALSE(find<QWidget>("savedOK")->isVisible());

    select({"One.mp3"});
    ASSERT_TRUE(shows("tagYear", "2001"));
    type("tagYear", "");
    click("saveTags");
    ASSERT_TRUE(isTold(Lang::windowYearStays()));
    EXPECT_TRUE(shows("tagYear", "2001"));
}

TEST_F(TagEditor, AProposedSongIsUsedAndTakenBack) {
    Q_EMIT identification.proposed(path("One.mp3"), RecognisedMusic({0.6, {}, {}, "Hymn", "Singers", {}, {}}, {}, {}));
    ASSERT_TRUE(isTold("Hymn"));
    photograph(window, "identify-proposed");
    EXPECT_EQ(tagsOf("One.mp3").id3Title, "First") << "nothing is done before it is used";
    click("useProposal");
    ASSERT_TRUE(passUntil([&] { return identification.isIdle() && !find<QWidget>("useProposal")->isVisible(); }));
    EXPECT_EQ(tagsOf("Hymn.mp3").id3Title, "Hymn");
    EXPECT_EQ(tagsOf("Hymn.mp3").id3Album, "Live") << "what is not known stays";
    EXPECT_TRUE(passUntil([&] { return list.itemWithFile(path("Hymn.mp3"))->artist() == "Singers"; }));
    ASSERT_TRUE(isTold("Singers"));
    photograph(window, "identify-named");
    click("undo");
    ASSERT_TRUE(passUntil([&] {
        const auto *item = list.itemWithFile(path("One.mp3"));
        return item && item->artist() == "Choir";
    }));
    EXPECT_EQ(tagsOf("One.mp3").id3Title, "First");
}

TEST_F(TagEditor, TheDetailsHaveMusicRecognisedOnceItIsClearWhatIsSent) {
    AppSettings::setRecognitionAccess("key");
    AppSettings::setRecognitionServer("http://127.0.0.1:9");
    const auto isOffered = [&] { return find<QWidget>("agreeToIdentify")->isVisible(); };
    const auto isEnded = [&] { return passUntil([&] { return identification.isIdle(); }); };
    auto *button = find<QPushButton>("identifyChosen");
    select({"One.mp3"});
    ASSERT_TRUE(shows("tagTitle", "First"));
    EXPECT_EQ(button->text(), Lang::btnIdentifyID3());
    button->click();
    window.showStatuses(); // as its face has it do
    EXPECT_EQ(button->text(), Lang::commIdentifying() + QChar(0x2026));
    EXPECT_FALSE(button->isEnabled());
    ASSERT_TRUE(isEnded() && isTold(Lang::windowIdentifySends()));
    EXPECT_TRUE(isOffered() && button->isEnabled());
    photograph(window, "identify-first");
    find<QLabel>("notice")->parentWidget()->findChild<QToolButton *>()->click();
    EXPECT_FALSE(isOffered() || AppSettings::isRecognitionAgreed());
    click("identifyChosen");
    ASSERT_TRUE(isEnded() && isOffered());
    find<QPushButton>("agreeToIdentify")->click();
    EXPECT_TRUE(AppSettings::isRecognitionAgreed());
    EXPECT_FALSE(identification.isIdle());
    ASSERT_TRUE(isEnded());
    EXPECT_FALSE(isOffered()) << "whatever came of it";
}

TEST_F(TagEditor, WhatTakesNoTagsOrNoCoverOffersNone) {
    const auto seen = [&](const char *name) { return find<QWidget>(name)->isVisible(); };
    select({"One.mp3"});
    ASSERT_TRUE(shows("tagTitle", "First"));
    EXPECT_TRUE(seen("addTagImage") && seen("deleteTagImage"));
    select({"Film.m4a"});
    ASSERT_TRUE(shows("tagTitle", ""));
    EXPECT_FALSE(seen("addTagImage") || seen("deleteTagImage"));
    photograph(window, "tags-m4a");
    select({"Plain.wav"});
    ASSERT_TRUE(passUntil([&] { return seen("detailsTakeNoTags"); }));
    EXPECT_FALSE(seen("saveTags"));
    photograph(window, "tags-wav");
    list.itemWithFile(path("One.mp3"))->isProcessing = true;
    select({"One.mp3"});
    pass(200);
    EXPECT_FALSE(seen("saveTags")) << "in use";
}

} // namespace
} // namespace cantorel
