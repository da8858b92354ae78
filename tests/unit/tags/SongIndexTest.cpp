// The songs of one's own on the disk, and what is found among them, by fingerprints that are made up.

#include "tags/index/SongIndex.h"

#include "tests/support/MadeMusic.h"
#include "tests/support/OrdinaryFile.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <tuple>

namespace cantorel {
namespace {

using Opening = SongStore::Opening;

FingerprintItems madeItems(std::uint64_t number, std::size_t count = 400) {
    test::Dice dice(number);
    FingerprintItems items(count);
    for (auto &item : items)
        item = dice.roll();
    return items;
}

// A part of it, of whose bits so many in a hundred are wrong.
FingerprintItems piece(const FingerprintItems &items, std::size_t from, std::size_t count, int wrong, int seed = 7) {
    FingerprintItems part(items.begin() + static_cast<std::ptrdiff_t>(from),
                          items.begin() + static_cast<std::ptrdiff_t>(from + count));
    test::Dice dice(static_cast<std::uint64_t>(seed));
    for (auto &item : part)
        for (int bit = 0; bit < 32; ++bit)
            if (dice.below(100) < wrong)
                item ^= 1u << bit;
    return part;
}

Song madeSong(int number) {
    return {0,
            {QStringLiteral("/music/%1.mp3").arg(number), number, 10 * number, static_cast<quint64>(100 + number)},
            QStringLiteral("Song %1").arg(number),
            "Choir",
            "Live",
            "Folk",
            "2001",
            madeItems(static_cast<std::uint64_t>(number))};
}

struct SongIndexTest : testing::Test {
    const QString path = QDir::homePath() + "/songs.db";

    std::unique_ptr<SongStore> open(Opening opening = Opening::ToChange) const {
        auto opened = openSongStore(path, opening);
        EXPECT_TRUE(opened) << opened.failure().detail.toStdString();
        return std::move(opened).value();
    }
    static void fill(SongStore &store, int from, int to) {
        for (int i = from; i < to; ++i)
            ASSERT_TRUE(store.add(madeSong(i)));
    }
    // The title with a mark where it is not sure; empty for none.
    static QString found(SongStore &store, FingerprintItems items) {
        const auto found = findSong(store, std::move(items));
        EXPECT_TRUE(found);
        return !found || !found.value() ? QString() : found.value()->song.title + (found.value()->isSure ? "" : "?");
    }
};

TEST(SongSearchTest, VotesOfNeighbouringPlacesCountTogether) {
    const std::vector<ItemPlace> places{{10, 0, 5}, {10, 1, 5}, {20, 0, 8}, {20, 1, 9}};
    const auto found = SongSearch({10, 11, 20}).candidates(places, SongSearch::Accuracy::Equal);
    ASSERT_EQ(found.size(), 1u) << "not what stands two apart";
    EXPECT_EQ(std::tuple(found[0].song, found[0].shift, found[0].votes), std::tuple(0, 5, 2));
    const SongSearch off({10u ^ 1u << 31, 0xFFFFu, 20u ^ 1u});
    EXPECT_TRUE(off.candidates(places, SongSearch::Accuracy::Equal).empty());
    EXPECT_EQ(off.candidates(places, SongSearch::Accuracy::OneBitOff).size(), 1u);
    const FingerprintItems song = madeItems(1, 100);
    const auto likeness = SongSearch(piece(song, 31, 64, 0)).likeness(song, 30);
    EXPECT_EQ(std::tuple(likeness.errors, likeness.like, likeness.different), std::tuple(0, 64u, 64u)) << "beside it";
}

TEST_F(SongIndexTest, APieceIsFoundFromAnywhereAndNothingElseIs) {
    const auto store = open();
    fill(*store, 0, 70); // more than one range
    const auto items = madeItems(68), early = madeItems(3);
    FingerprintItems mixed = piece(early, 100, 60, 0); // less than half of it is a song
    const auto other = madeItems(999, 80);
    mixed.insert(mixed.end(), other.begin(), other.end());
    FingerprintItems mostly = piece(early, 100, 90, 0);
    mostly.insert(mostly.end(), other.begin(), other.end());
    FingerprintItems longer = madeItems(998, 20); // begins before the song does
    longer.insert(longer.end(), early.begin(), early.begin() + 60);
    FingerprintItems doubtful = piece(early, 100, 200, 31); // with some items that are as they were
    for (std::size_t i = 0; i < doubtful.size(); i += 4)
        doubtful[i] = early[100 + i];
    Song jingle = madeSong(300);
    jingle.items.resize(40);
    ASSERT_TRUE(store->add(jingle));
    FingerprintItems withJingle = jingle.items;
    withJingle.insert(withJingle.end(), other.begin(), other.end());
    const struct {
        const char *what;
        FingerprintItems items;
        QString title;
    } cases[] = {
        {"the middle", piece(early, 123, 100, 0), "Song 3"},
        {"the end of the last range", piece(items, 299, 100, 5), "Song 68"},
        {"much noise", piece(early, 200, 100, 10), "Song 3"},
        {"too much to be sure", doubtful, "Song 3?"},
        {"too much", piece(early, 100, 100, 32), ""},
        {"another song", piece(madeItems(777), 100, 100, 0), ""},
        {"too short", piece(early, 100, 31, 0), ""},
        {"just long enough", piece(early, 100, 32, 0), "Song 3"},
        {"mostly something else", mixed, ""},
        {"mostly this", mostly, "Song 3"},
        {"from before it", longer, "Song 3"},
        {"a short song in a longer piece", withJingle, ""},
        {"nothing", {}, ""},
    };
    for (const auto &[what, wanted, title] : cases) {
        SCOPED_TRACE(what);
        EXPECT_EQ(found(*store, wanted), title);
    }
}

TEST_F(SongIndexTest, WhatTwoSongsShareOrOneToneIsNoName) {
    const auto store = open();
    Song one = madeSong(1), same = madeSong(2), tone = madeSong(3);
    same.items = one.items;
    tone.items = FingerprintItems(400, 0x12345678u);
    for (std::size_t i = 0; i < tone.items.size(); i += 40)
        tone.items[i] ^= static_cast<std::uint32_t>(i); // so that it is not all one
    ASSERT_TRUE(store->add(one) && store->add(same) && store->add(tone));
    EXPECT_EQ(found(*store, piece(one.items, 100, 100, 2)).right(1), "?");
    EXPECT_EQ(found(*store, piece(tone.items, 40, 200, 0)), "");
    Song remade = madeSong(4); // much like it, but not as like
    remade.items = piece(one.items, 0, 400, 6);
    ASSERT_TRUE(store->add(remade));
    ASSERT_TRUE(store->remove(store->withPath(same.file.path).value()->id));
    EXPECT_EQ(found(*store, piece(one.items, 100, 100, 2)), "Song 1");
    same.title = "SONG 1";
    ASSERT_TRUE(store->add(same));
    EXPECT_EQ(found(*store, piece(one.items, 100, 100, 2)).toUpper(), "SONG 1") << "on two records";
}

TEST_F(SongIndexTest, TheStoreFollowsItsFilesAndGivesRoomBack) {
    EXPECT_EQ(openSongStore(path, Opening::ToRead).value(), nullptr);
    auto store = open();
    fill(*store, 0, 150);
    Song none = madeSong(500);
    none.items.clear();
    ASSERT_TRUE(store->add(none));
    ASSERT_TRUE(store->add(madeSong(7))); // read again
    EXPECT_EQ(store->count().value(), 150);
    int looks = 0;
    EXPECT_TRUE(store->each([&](qint64, std::span<const ItemPlace> places) -> foundation::Result<void> {
        EXPECT_LE(places.size(), 64u * 200) << "memory is bounded";
        EXPECT_TRUE(std::ranges::is_sorted(places));
        ++looks;
        return {};
    }));
    EXPECT_EQ(looks, 3) << "two ranges are closed";
    EXPECT_TRUE(store->withPath(none.file.path).value());
    EXPECT_TRUE(store->withPath("/music/8.mp3").value()->file.isSame(madeSong(8).file));

    const auto eighth = store->like(madeSong(8).file).value();
    ASSERT_TRUE(eighth);
    ASSERT_TRUE(store->move(eighth->id, "/music/9.mp3"));
    EXPECT_EQ(store->count().value(), 149) << "in place of what was there";
    EXPECT_EQ(found(*store, piece(madeItems(8), 50, 100, 0)), "Song 8");
    EXPECT_EQ(found(*store, piece(madeItems(9), 50, 100, 0)), "");
    const qint64 before = QFileInfo(path).size();
    for (int i = 10; i < 140; ++i)
        ASSERT_TRUE(store->remove(store->withPath(QStringLiteral("/music/%1.mp3").arg(i)).value()->id));
    ASSERT_TRUE(store->tidy());
    std::size_t left = 0;
    EXPECT_TRUE(store->each([&](qint64, std::span<const ItemPlace> places) -> foundation::Result<void> {
        left += places.size();
        return {};
    }));
    EXPECT_LE(left, 2u * 19 * 200) << "of 19 songs";
    fill(*store, 200, 300);
    store.reset();
    store = open(Opening::ToRead);
    EXPECT_EQ(store->count().value(), 119);
    EXPECT_LE(QFileInfo(path).size(), before) << "what was removed leaves its room to others";
    for (const auto &[number, title] : {std::pair(3, "Song 3"), {50, ""}, {145, "Song 145"}, {299, "Song 299"}})
        EXPECT_EQ(found(*store, piece(madeItems(static_cast<std::uint64_t>(number)), 50, 100, 0)), title);
}

TEST_F(SongIndexTest, WhatIsNoStoreIsSetAsideByWhoChangesIt) {
    const QString aside = QDir::homePath() + "/songs-damaged.db";
    const auto breakBy = [&](int at, const QByteArray &bytes) {
        { fill(*open(), 0, 3); }
        QByteArray content = test::contents(path);
        test::store(path, content.replace(at, bytes.size(), bytes));
    };
    const struct {
        const char *what;
        std::function<void()> make;
    } cases[] = {
        {"foreign text", [&] { test::store(path, QByteArray(5000, 'x')); }},
        {"somebody else's", [&] { breakBy(68, "ABCD"); }},
        {"a later version's", [&] { breakBy(60, QByteArray::fromHex("00000009")); }},
    };
    for (const auto &[what, make] : cases) {
        SCOPED_TRACE(what);
        QFile::remove(path);
        QFile::remove(aside);
        make();
        const QByteArray content = test::contents(path);
        EXPECT_FALSE(openSongStore(path, Opening::ToRead));
        EXPECT_EQ(test::contents(path), content) << "who only reads leaves it";
        EXPECT_EQ(open()->count().value(), 0);
        EXPECT_EQ(test::contents(aside), content);
    }
    test::store(path, "again");
    EXPECT_EQ(open()->count().value(), 0);
    EXPECT_EQ(test::contents(QDir::homePath() + "/songs-damaged1.db"), "again") << "and nothing takes its place";

    // Damage that shows only later.
    QFile::remove(path);
    { fill(*open(), 0, 100); }
    QByteArray content = test::contents(path);
    content.replace(2 * 4096, content.size() - 2 * 4096, QByteArray(content.size() - 2 * 4096, '\x55'));
    test::store(path, content);
    const auto store = open();
    EXPECT_FALSE(store->count());
    EXPECT_FALSE(store->add(madeSong(1))) << "and no crash";
    EXPECT_FALSE(QFileInfo::exists(path));
}

TEST_F(SongIndexTest, AFullDiskOrAKilledProgramCostsNoSongThatWasKept) {
    { fill(*open(), 0, 3); }
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, SIG_IGN);
    {
        const auto store = open();
        const rlimit full{static_cast<rlim_t>(QFileInfo(path).size() + 4096), old.rlim_max};
        setrlimit(RLIMIT_FSIZE, &full);
        int kept = 3;
        while (kept < 50 && store->add(madeSong(kept)))
            ++kept;
        EXPECT_LT(kept, 50);
        setrlimit(RLIMIT_FSIZE, &old);
        EXPECT_EQ(store->count().value(), kept);
        fill(*store, kept, 60);
    }
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        auto store = openSongStore(path, Opening::ToChange).value();
        for (int i = 60;; ++i)
            if (!store->add(madeSong(i)) || write(ends[1], "s", 1) != 1)
                _exit(1);
    }
    char told;
    for (int i = 0; i < 25; ++i) // beyond the end of a range
        ASSERT_EQ(read(ends[0], &told, 1), 1);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    const auto store = open(Opening::ToRead);
    const int count = store->count().value();
    EXPECT_GE(count, 85);
    for (const int i : {0, 63, 84, count - 1})
        EXPECT_EQ(found(*store, piece(madeItems(static_cast<std::uint64_t>(i)), 50, 100, 0)),
                  QStringLiteral("Song %1").arg(i));
}

} // namespace
} // namespace cantorel
