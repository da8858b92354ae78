#include "recording/library/RecordedList.h"

#include "lang/Lang.h"
#include "platform/foundation/KeyedArchiver.h"
#include "platform/hal/embedded/DeviceClock.h"
#include "recording/library/RecordingsRemoval.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaultFunctions.h"
#include "tags/AudioIdentify.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/PrivateWorld.h"
#include "tests/unit/recording/UnwritableSettings.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace cantorel {
namespace {

class RecordedListTest : public testing::Test {
public:
    QString file(int number, bool onDisk = true) const {
        const QString path = mFolder.filePath(QStringLiteral("r%1.m4a").arg(number));
        if (onDisk)
            test::touch(path);
        return path;
    }
    std::unique_ptr<RecordedList> opened() {
        auto list = std::make_unique<RecordedList>(state(), mClock);
        list->initRecordedList();
        return list;
    }
    QString state() const { return mFolder.filePath("state"); }
    QString journal() const { return state() + "/recordedList.journal"; }
    static QStringList names(const RecordedList &list) {
        QStringList names;
        for (const auto &item : list.items())
            names.append(QFileInfo(item->getFileName()).baseName() + item->artist());
        return names;
    }
    // So many that a change goes into the journal.
    std::unique_ptr<RecordedList> large() {
        QVariantList archived;
        for (int i = 0; i < 600; ++i)
            archived.append(archivedItem({file(i), "00:00:01", "1.00 KB", "2026-01-01 00:00:00", {}, {}, {}}));
        AppSettings::setRecordedMovieList(archived);
        return opened();
    }
    // What a process finds that knows nothing of what is here, where all changes are additions.
    int itemsForAnotherProcess() const {
        const foundation::DefaultsDomain settings(kBundleIdentifier);
        ListJournal journal(state() + "/recordedList.journal");
        const QByteArray archive = settings.object("recordedList").toByteArray();
        return static_cast<int>(foundation::unarchivedObject(archive)->toList().size())
               + static_cast<int>(journal.changesTo(archive).size());
    }
    static QByteArray stored() { return AppSettings::getFromUserDefaults_Data("recordedList"); }

    QTemporaryDir mFolder;
    hal::ManualClock mClock;
};

} // namespace

TEST_F(RecordedListTest, ItemsStoreSevenFieldsAndNothingElse) {
    RecordedAudioFields fields{file(1), "00:01:00", "1.00 MB", "now", "artist", "album", "2026"};
    const auto archive = foundation::archivedData(QVariantList{archivedItem(fields)});
    const auto back = foundation::unarchivedObject(archive);
    ASSERT_TRUE(back);
    EXPECT_EQ(recordedAudioFields(back->toList().value(0)), fields);
    // What is none of ours, or damaged, is no recording; fields of another type are empty.
    using foundation::ArchivedObject;
    const foundation::ArchivedValues wrong{{"_fileName", 7}};
    EXPECT_FALSE(recordedAudioFields(QVariant("text")));
    EXPECT_FALSE(recordedAudioFields(QVariant::fromValue(ArchivedObject{"RecordedAudioInfo", wrong})));
    EXPECT_FALSE(recordedAudioFields(QVariant::fromValue(ArchivedObject{"Other", {{"_fileName", "a"}}})));
    const auto half = recordedAudioFields(
        QVariant::fromValue(ArchivedObject{"RecordedAudioInfo", {{"_fileName", "a"}, {"_size", QVariantList{}}}}));
    ASSERT_TRUE(half);
    EXPECT_EQ(half->_size, QString());
}

TEST_F(RecordedListTest, TitlesFollowTheFileAndTheProcessing) {
    RecordedAudioInfo item("/music/A song.m4a");
    EXPECT_EQ(item.getTitle(), "A song.m4a");
    item.isProcessing = true;
    EXPECT_EQ(item.getTitle(), "A song");
    item.setFileName("/music/B.mp3");
    EXPECT_EQ(item.getTitle(), "B");
    EXPECT_EQ(item.originalFileName(), "/music/A song.m4a");
}

TEST_F(RecordedListTest, AnItemKeepsAnyTextInAnyFieldAndTellsThatItIsGone) {
    RecordedAudioFields fields{
        "/music/\u00e9 \u97f3.m4a", "", "1 KB", QString::fromUtf8("a\0b", 3), "\U0001F3B5", "", "2026"};
    auto item = std::make_unique<RecordedAudioInfo>(fields);
    EXPECT_EQ(item->fields(), fields);
    item->setAlbum(fields._album = "a longer album");
    item->setDuration(fields._duration = "00:00:09");
    item->setArtist(fields._artist = "");
    item->setFileName(fields._fileName = "/b.mp3");
    EXPECT_EQ(item->fields(), fields);
    EXPECT_EQ(item->year(), "2026");
    EXPECT_TRUE(item->hasFile("/b.mp3") && !item->hasFile("/b.mp") && item->searchKey().contains("longer"));
    const RecordedItemPointer pointer(item.get()), other = pointer;
    EXPECT_EQ(other->album(), fields._album);
    item.reset();
    EXPECT_FALSE(pointer || other);
}

TEST_F(RecordedListTest, WhatJoinsAtOnceIsListedOnceAndGoesAtOnce) {
    large();
    for (const bool isMany : {false, true}) {
        const auto list = opened();
        std::vector<RecordedAudioFields> joining{{file(7), {}, {}, {}, {}, {}, {}},
                                                 {file(700), {}, {}, {}, {}, {}, {}}};
        if (isMany)
            joining.push_back({file(701), {}, {}, {}, {}, {}, {}});
        const QStringList joined = list->append(joining);
        EXPECT_EQ(joined, isMany ? (QStringList{file(700), file(701)}) : QStringList{file(700)});
        EXPECT_FALSE(list->items().back()->dateAdded().isEmpty());
        EXPECT_EQ(names(*opened()), names(*list)) << "stored";
        list->items()[600]->isProcessing = true;
        list->removeFiles(QStringList{file(3)} + joined);
        EXPECT_EQ(names(*list).count("r700"), 1) << "what is converted stays";
        EXPECT_EQ(list->items().size(), 600u);
        EXPECT_EQ(names(*opened()), names(*list)) << "stored";
        list->items().back()->isProcessing = false;
        list->removeFiles({file(700)});
        list->insert(3, {file(3), {}, {}, {}, {}, {}, {}});
    }
}

TEST_F(RecordedListTest, WhatIsGoneFromTheDiskIsLeftOutAndForgottenAtTheNextSave) {
    AppSettings::setRecordedMovieList({archivedItem({file(1), {}, {}, {}, {}, {}, {}}),
                                       archivedItem({file(2, false), {}, {}, {}, {}, {}, {}}), QVariant("no item")});
    const auto list = opened();
    EXPECT_EQ(names(*list), QStringList{"r1"});
    EXPECT_EQ(AppSettings::recordedMovieList().size(), 3);
    list->save(*list->items().front());
    EXPECT_EQ(AppSettings::recordedMovieList().size(), 1);
}

TEST_F(RecordedListTest, ADamagedListIsCopiedAsideAndStaysUntilTheNextSave) {
    const QByteArray damaged = "bplist00 but not really";
    AppSettings::saveToUserDefaultsForKeyObjectValue("recordedList", damaged);
    const auto list = opened();
    EXPECT_TRUE(list->items().empty());
    EXPECT_EQ(stored(), damaged);
    EXPECT_EQ(test::contents(state() + "/recordedList.damaged"), damaged);
    list->addRecordedFile(file(1), {}, {});
    EXPECT_EQ(names(*opened()), QStringList{"r1"});
}

// A change is on the disk when its call returns: a process that ends without a word right behind it loses nothing.
TEST_F(RecordedListTest, EveryChangeSurvivesTheEndOfItsProcess) {
    for (const bool isLarge : {false, true}) {
        SCOPED_TRACE(isLarge);
        if (isLarge)
            large();
        const pid_t child = ::fork();
        if (child == 0) {
            const auto list = opened();
            list->addRecordedFile(file(1000), "00:00:09", {});
            RecordedAudioInfo &second = list->addRecordedFile(file(1001), {}, {});
            second.setArtist("X");
            list->save(second);
            list->remove(*list->items().front());
            list->append({{file(1002), {}, {}, {}, {}, {}, {}}, {file(1003), {}, {}, {}, {}, {}, {}}});
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        ASSERT_EQ(status, 0);
        const auto list = opened();
        const QStringList last = names(*list).mid(static_cast<qsizetype>(list->items().size()) - 4);
        EXPECT_EQ(QFile::exists(journal()), isLarge) << "only what has changed";
        if (isLarge) {
            EXPECT_EQ(last, (QStringList{"r1000", "r1001X", "r1002", "r1003"}));
            EXPECT_EQ(names(*list).front(), "r1");
            EXPECT_EQ(list->items().size(), 603u);
        } else {
            EXPECT_EQ(names(*list), (QStringList{"r1001X", "r1002", "r1003"}));
        }
        // The next change folds the journal into the archive.
        list->save(*list->items().back());
        EXPECT_FALSE(QFile::exists(journal()));
        EXPECT_EQ(names(*opened()), names(*list));
    }
}

TEST_F(RecordedListTest, AJournalIsReadUpToWhereACrashCutItAndOnlyForItsArchive) {
    auto list = large();
    list->addRecordedFile(file(1000), {}, {});
    list->addRecordedFile(file(1001), {}, {});
    list.reset();
    QFile cut(journal());
    ASSERT_TRUE(cut.open(QIODevice::ReadWrite));
    const QByteArray whole = cut.readAll();
    for (const qsizetype lost : {1, 10, 60}) {
        ASSERT_TRUE(cut.resize(whole.size() - lost));
        EXPECT_EQ(names(*opened()).mid(599), (QStringList{"r599", "r1000"})) << lost;
    }
    cut.seek(0);
    cut.write(whole);
    cut.close();
    EXPECT_EQ(opened()->items().size(), 602u);
    // Another archive: a list that was put back from a backup.
    AppSettings::setRecordedMovieList({archivedItem({file(5), {}, {}, {}, {}, {}, {}})});
    EXPECT_EQ(names(*opened()), QStringList{"r5"});
}

// Loading behind the window: the items come with the event loop, and a change before that waits for them.
TEST_F(RecordedListTest, ALoadingListTellsWhenItIsThereAndLosesNothingToAnEarlyChange) {
    struct View : RecordedListView {
        int changes = 0;
        void recordedListDidChange() override { ++changes; }
    } view;
    large();
    for (const bool changesEarly : {false, true}) {
        SCOPED_TRACE(changesEarly);
        RecordedList list(state(), mClock);
        list.view = &view;
        view.changes = 0;
        int told = 0;
        list.initRecordedListBehind([&] { ++told; });
        EXPECT_TRUE(list.isLoading());
        EXPECT_TRUE(list.items().empty());
        if (changesEarly) {
            list.addRecordedFile(file(1000), {}, {});
            EXPECT_EQ(list.items().size(), 601u);
            EXPECT_EQ(view.changes, 2) << "they are there, and another one";
        }
        EXPECT_EQ(told, 0) << "told from the event loop";
        ASSERT_TRUE(test::eventually([&] {
            QCoreApplication::processEvents();
            return told > 0;
        }));
        EXPECT_EQ(told, 1);
        EXPECT_FALSE(list.isLoading());
        EXPECT_EQ(names(list).front(), "r0");
        EXPECT_EQ(names(*opened()).size(), changesEarly ? 601 : 600);
    }
    // One that goes while it loads is waited for, and nobody is told.
    RecordedList(state(), mClock).initRecordedListBehind([] { FAIL(); });
    QCoreApplication::processEvents();
}

TEST_F(RecordedListTest, TheSweeperDeletesOneFileASecondOnceItExists) {
    const auto list = opened();
    list->addInvalidFile(file(1));
    list->addInvalidFile(file(2));
    list->addInvalidFile(file(3, false));
    const auto left = [&] { return QFile::exists(file(1, false)) + QFile::exists(file(2, false)); };
    mClock.advance(std::chrono::milliseconds(1000));
    EXPECT_EQ(left(), 1);
    mClock.advance(std::chrono::milliseconds(1000));
    EXPECT_EQ(left(), 0);
    mClock.advance(std::chrono::milliseconds(3000));
    (void)file(3);
    mClock.advance(std::chrono::milliseconds(1000));
    EXPECT_FALSE(QFile::exists(file(3, false))) << "it is waited for";
    // A name that is taken by a new recording is no longer swept.
    list->addInvalidFile(file(4, false));
    list->removeInvalidFile(file(4));
    mClock.advance(std::chrono::milliseconds(2000));
    EXPECT_TRUE(QFile::exists(file(4, false)));
}

TEST_F(RecordedListTest, AFailedSaveSaysSoAndCostsNothingThatIsOnTheDisk) {
    large();
    opened()->addRecordedFile(file(1000), {}, {});
    const auto list = opened(); // Its next change is to fold the journal into the archive.
    {
        const test::UnwritableSettings unwritable;
        list->remove(*list->items().front());
        EXPECT_TRUE(Lang::english(list->unsaved()).startsWith("The list was not saved"));
        EXPECT_FALSE(list->rename(*list->items().back(), "new"));
        EXPECT_TRUE(QFile::exists(file(1000, false))) << "nothing has changed";
        EXPECT_EQ(list->items().back()->getFileName(), file(1000, false));
    }
    ASSERT_TRUE(QFile::exists(journal()));
    EXPECT_EQ(itemsForAnotherProcess(), 601);
    ASSERT_TRUE(list->rename(*list->items().back(), "n/ew/"));
    EXPECT_TRUE(list->unsaved().isEmpty());
    EXPECT_EQ(names(*opened()), names(*list)) << "what was missing went along";
    EXPECT_EQ(names(*list).back(), "n-ew") << "a stroke stays in sight";
}

TEST_F(RecordedListTest, ARenameThatWasKilledIsFinishedByTheNextOne) {
    const auto list = opened();
    const QString before = file(1), taken = file(2);
    RecordedAudioInfo &item = list->addRecordedFile(before, {}, {});
    const QString after = QFileInfo(before).path() + "/new." + QFileInfo(before).suffix();
    ASSERT_EQ(::link(qPrintable(before), qPrintable(after)), 0);
    EXPECT_FALSE(list->rename(item, QFileInfo(taken).completeBaseName()));
    EXPECT_FALSE(list->rename(item, QFileInfo(before).completeBaseName())) << "its own";
    EXPECT_TRUE(QFile::exists(before));
    ASSERT_TRUE(list->rename(item, "new"));
    EXPECT_EQ(item.getFileName(), after);
    EXPECT_TRUE(QFile::exists(after) && !QFile::exists(before));
}

TEST_F(RecordedListTest, ReadersLeaveTheJournalOfAnotherArchiveAlone) {
    const auto owner = large();
    owner->addRecordedFile(file(1000), {}, {});
    const QByteArray archive = stored();
    AppSettings::setRecordedMovieList({}); // as a reader that comes between two saves finds it
    EXPECT_TRUE(opened()->items().empty());
    AppSettings::saveToUserDefaultsForKeyObjectValue("recordedList", archive);
    owner->addRecordedFile(file(1001), {}, {});
    EXPECT_EQ(names(*opened()).mid(600), (QStringList{"r1000", "r1001"}));
}

TEST_F(RecordedListTest, AVanishedFileShiftsNothingAndTheJournalStaysSmallerThanTheList) {
    large();
    ASSERT_TRUE(QFile::remove(file(3, false)));
    QStringList left;
    {
        const auto list = opened();
        list->items()[3]->setArtist("X");
        list->save(*list->items()[3]);
        list->remove(*list->items().back());
        left = names(*list);
    }
    (void)file(3);
    EXPECT_EQ(names(*opened()), left);
    const auto list = opened();
    for (int i = 0; i < 1000; ++i) {
        list->save(*list->items().back());
        ASSERT_LT(QFileInfo(journal()).size(), stored().size() / 2);
    }
}

TEST_F(RecordedListTest, WhatTheWastebasketRefusesStaysAndWhatComesBackReplacesNothing) {
    const auto list = opened();
    const QString fixed = "/proc/self/status"; // not to be moved by anybody
    for (const QString &path : {fixed, file(1)})
        list->addRecordedFile(path, {}, {});
    RecordingsRemoval removal(*list);
    const auto failed =
        removal.remove({list->items()[0].get(), list->items()[1].get()}, RecordingsRemoval::Files::IntoWastebasket);
    ASSERT_FALSE(failed);
    EXPECT_TRUE(Lang::english(failed.failure().sentence).contains(fixed));
    EXPECT_EQ(names(*list), QStringList{"status"});
    EXPECT_FALSE(QFile::exists(file(1, false)));

    test::store(file(1, false), "another");
    EXPECT_FALSE(removal.undo());
    EXPECT_EQ(test::contents(file(1, false)), "another");
    EXPECT_EQ(names(*list), QStringList{"status"});
}

TEST_F(RecordedListTest, WrittenTagsAreReadBesideTheMainThreadAndStoredWhateverHappensMeanwhile) {
    const QString path = mFolder.filePath("song.mp3");
    test::store(path, (QByteArray("\xFF\xFB\x90\x64") + QByteArray(413, '\0')).repeated(9));
    auto list = opened();
    RecordedAudioInfo &item = list->addRecordedFile(path, {}, {});
    ASSERT_TRUE(AudioIdentify::saveID3ToFile({"T", "Choir", "", "", "", {}, {}}, path));
    list->takeTagsBehind({path, file(2)});
    EXPECT_EQ(item.artist(), "") << "nothing was waited for";
    ASSERT_TRUE(list->rename(item, "renamed"));
    EXPECT_TRUE(test::eventually([&] { return item.artist() == "Choir"; }));
    ASSERT_TRUE(AudioIdentify::saveID3ToFile({"T", "Band", "", "", "", {}, {}}, item.getFileName()));
    list->takeTagsBehind({item.getFileName()});
    list.reset();
    EXPECT_EQ(names(*opened()), QStringList{"renamedBand"});
}

} // namespace cantorel
