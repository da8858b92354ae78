#include "recording/library/RecordingsModel.h"

#include "lang/Lang.h"
#include "platform/hal/embedded/DeviceClock.h"
#include "recording/library/RecordedList.h"
#include "util/ShortDates.h"

#include <QDateTime>
#include <QDir>

#include <gtest/gtest.h>

namespace cantorel {
namespace {

class RecordingsModelTest : public testing::Test {
public:
    void add(const char *name, const char *size = "1.00 KB", const char *artist = "", const char *album = "") {
        list.insert(list.items().size(), {QStringLiteral("/music/") + QString::fromUtf8(name),
                                          "00:00:01",
                                          size,
                                          "2026-11-21 10:04:05",
                                          artist,
                                          album,
                                          {}});
        model.listDidChange();
    }
    QStringList shown() const {
        QStringList titles;
        for (int row = 0; row < model.rowCount(); ++row)
            titles << model.index(row, RecordingsModel::Title).data().toString();
        return titles;
    }

    hal::ManualClock clock;
    RecordedList list{QDir::homePath() + "/state", clock};
    RecordingsModel model{list};
};

} // namespace

// However it is typed: on, back, or over, a search shows what a search for the whole text shows.
TEST_F(RecordingsModelTest, WhatIsFoundDoesNotDependOnHowTheSearchWasTyped) {
    for (const char *name : {"abc", "Abd", "xab", "b a", "ÄB"})
        add(name, "1.00 KB", name[0] == 'x' ? "Quartet" : "", "Live");
    model.sort(RecordingsModel::Title, Qt::AscendingOrder);
    const char *const typed[] = {"a",  "ab", "abc", "ab",   "b",          "ba", "b a", "a b", "a",     "",
                                 "äb", "Ä",  "q",   "qu x", "quartet li", "l",  "  ",  "zzz", "zzz z", "z"};
    for (const char *text : typed) {
        model.search(text);
        RecordingsModel anew(list);
        anew.sort(RecordingsModel::Title, Qt::AscendingOrder);
        anew.search(text);
        QStringList expected;
        for (int row = 0; row < anew.rowCount(); ++row)
            expected << anew.index(row, RecordingsModel::Title).data().toString();
        EXPECT_EQ(shown(), expected) << text;
    }
    model.search("QUART LIVE xa");
    EXPECT_EQ(shown(), QStringList{"xab"});
    add("quart live xaver");
    EXPECT_EQ(shown(), (QStringList{"quart live xaver", "xab"})) << "what comes is searched, too";
    list.items()[2]->setFileName(QStringLiteral("/music/elsewhere"));
    model.search(QStringLiteral("elsew"));
    EXPECT_EQ(shown(), QStringList{"elsewhere"}) << "by its new name";
}

TEST_F(RecordingsModelTest, NumbersAndWordsAreOrderedAsAPersonWould) {
    for (const char *name : {"Track10.mp3", "track2.mp3", "Zebra.mp3", "Äpfel.mp3", "Track1.mp3"})
        add(name);
    model.sort(RecordingsModel::Title, Qt::AscendingOrder);
    const QStringList ordered{"Äpfel.mp3", "Track1.mp3", "track2.mp3", "Track10.mp3", "Zebra.mp3"};
    EXPECT_EQ(shown(), ordered);
    // A change of one item, and of the list, finds its place among those that were ordered before.
    list.items()[0]->setFileName("/music/Aa.mp3");
    list.remove(*list.items()[2]);
    add("Track1.mp3");
    EXPECT_EQ(shown(), (QStringList{"Aa.mp3", "Äpfel.mp3", "Track1.mp3", "Track1.mp3", "track2.mp3"}));
    model.sort(RecordingsModel::Title, Qt::DescendingOrder);
    EXPECT_EQ(shown().first(), "track2.mp3");
}

TEST_F(RecordingsModelTest, SizesAreOrderedByTheirBytesAndDatesByTheirAge) {
    const std::pair<const char *, const char *> files[] = {
        {"b", "1.50 MB"}, {"c", "900 KB"}, {"d", "1.00 GB"}, {"e", ""}, {"f", "12 B"}};
    for (const auto &[name, size] : files)
        add(name, size);
    model.sort(RecordingsModel::Size, Qt::AscendingOrder);
    EXPECT_EQ(shown(), (QStringList{"e", "f", "c", "b", "d"}));
    model.sort(RecordingsModel::Date, Qt::DescendingOrder);
    EXPECT_EQ(shown(), (QStringList{"f", "e", "d", "c", "b"}));
}

TEST_F(RecordingsModelTest, DatesAreWrittenInTheWindowsLanguage) {
    add("a");
    list.items()[0]->setDateAdded("2026-03-05 14:07:09");
    const std::pair<const char *, const char *> languages[] = {{"German", "05.03.2026 14:07"},
                                                               {"Japanese", "2026/03/05 14:07"},
                                                               {"Czech", "05.03.2026 14:07"},
                                                               {"ChineseTraditional", "2026/3/5 下午2:07"}};
    for (const auto &[language, expected] : languages) {
        Lang::ChangeLanguage(language);
        model.languageDidChange();
        EXPECT_EQ(model.index(0, RecordingsModel::Date).data(Qt::ToolTipRole).toString(), expected) << language;
    }
    struct {
        const char *language, *today, *yesterday, *thisYear, *before;
    } const shorts[] = {
        {"German", "Heute 14:07", "Gestern", "5. M\u00e4rz", "31. Dez. 2025"},
        {"Japanese", "\u4eca\u65e5 14:07", "\u6628\u65e5", "3\u67085\u65e5", "2025\u5e7412\u670831\u65e5"},
        {"Danish", "I dag 14.07", "I g\u00e5r", "5. mar.", "31. dec. 2025"}};
    const QTime time(14, 7);
    for (const auto &[language, today, yesterday, thisYear, before] : shorts) {
        Lang::ChangeLanguage(language);
        const ShortDates dates(Lang::locale());
        const auto text = [&](QDate date, QDate now) { return dates.text(QDateTime(date, time), now); };
        EXPECT_EQ(text({2026, 3, 5}, {2026, 3, 5}), today);
        EXPECT_EQ(text({2026, 3, 5}, {2026, 3, 6}), yesterday);
        EXPECT_EQ(text({2025, 12, 31}, {2026, 1, 1}), yesterday);
        EXPECT_EQ(text({2026, 3, 5}, {2026, 3, 7}), thisYear);
        EXPECT_EQ(text({2026, 3, 5}, {2026, 3, 4}), thisYear) << "a clock that was put back";
        EXPECT_EQ(text({2025, 12, 31}, {2026, 1, 2}), before);
    }
    list.items()[0]->setDateAdded("yesterday");
    EXPECT_EQ(model.index(0, RecordingsModel::Date).data().toString(), "yesterday") << "no date: as it is";
}

} // namespace cantorel
