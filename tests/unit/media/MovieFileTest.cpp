#include "platform/media/FragmentedFile.h"
#include "platform/media/RecordingRepair.h"
#include "platform/media/UnfinishedName.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/RecordedPackets.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace cantorel::media {
namespace {

using test::contents;
using test::store;

constexpr std::uint32_t kLength = kPictureTimescale / 10;
constexpr std::uint32_t kPacketsEach = 5; // somewhat longer than the picture beside them

// A movie of one picture and some packets in each fragment, and where those end.
struct MovieFileTest : testing::Test {
    explicit MovieFileTest(bool hasSound = true) {
        MovieFormat format;
        format.pictures = AvcFormat{320, 240, 8'000'000, {1, 100, 0, 31}};
        if (hasSound)
            format.sound = test::plainFormat();
        file = FragmentedFile::create(path, format).value();
        ends.push_back(file->bytes());
        for (std::uint32_t i = 0; i < 4; ++i) {
            PictureRun pictures;
            pictures.entries.push_back({70'000 + i, kLength, i % 2 == 0}); // more than 16 bits
            pictures.bytes.assign(70'000 + i, static_cast<std::uint8_t>('A' + i));
            EXPECT_TRUE(
                file->append(hasSound ? test::stampedPackets(i * kPacketsEach, kPacketsEach) : PacketRun(), pictures));
            ends.push_back(file->bytes());
        }
    }
    // The bytes of a box's contents behind its type, of the n-th of that type.
    static QByteArray box(const QByteArray &bytes, const char *type, int which = 0) {
        qsizetype at = -1;
        for (int i = 0; i <= which; ++i)
            at = bytes.indexOf(type, at + 1);
        return at < 4 ? QByteArray() : bytes.mid(at + 4, static_cast<qsizetype>(test::bigEndian(bytes, at - 4, 4)) - 8);
    }
    static std::uint64_t word(const QByteArray &bytes, int index) { return test::bigEndian(bytes, 4 * index, 4); }

    QTemporaryDir folder;
    const QString path = folder.filePath("a.mp4"), copy = folder.filePath("copy.mp4");
    std::unique_ptr<FragmentedFile> file;
    std::vector<std::uint64_t> ends;
};

TEST_F(MovieFileTest, AFinishedOneNamesEveryPictureWithItsPlaceAndLength) {
    ASSERT_EQ(file->finish(4 * kPacketsEach * kFramesPerPacket - 1024).value(), FileForm::Ordinary);
    const QByteArray bytes = contents(path);
    const QByteArray moov = bytes.mid(bytes.lastIndexOf("moov"));
    EXPECT_EQ(box(moov, "tkhd", 0).right(8).toHex(), "014000"
                                                     "00"
                                                     "00f00000")
        << "320 x 240";
    const QByteArray sizes = box(moov, "stsz"), offsets = box(moov, "stco"), keys = box(moov, "stss");
    const QByteArray lengths = box(moov, "stts");
    EXPECT_EQ(word(lengths, 1), 1u);
    EXPECT_EQ(word(lengths, 2), 4u);
    EXPECT_EQ(word(lengths, 3), kLength);
    EXPECT_EQ(word(keys, 1), 2u);
    EXPECT_EQ(word(keys, 3), 3u) << "the third one is the second that needs no other";
    for (int i = 0; i < 4; ++i) {
        const auto size = static_cast<qsizetype>(word(sizes, 3 + i));
        const QByteArray picture = bytes.mid(static_cast<qsizetype>(word(offsets, 2 + i)), size);
        EXPECT_EQ(picture, QByteArray(70'000 + i, static_cast<char>('A' + i)));
    }
    const QByteArray soundOffsets = box(moov, "stco", 1);
    const auto first = static_cast<qsizetype>(word(soundOffsets, 3));
    EXPECT_EQ(test::bigEndian(bytes, first, 4), kPacketsEach) << "packets carry their number";
}

TEST_F(MovieFileTest, CutAnywhereItIsRepairedUpToItsLastWholeFragment) {
    const QByteArray whole = contents(path);
    for (std::size_t fragments = 0; fragments < ends.size(); ++fragments) {
        for (const qsizetype cut :
             {static_cast<qsizetype>(ends[fragments]), static_cast<qsizetype>(ends[fragments]) + 99}) {
            store(path, whole.left(cut));
            QFile::remove(copy);
            EXPECT_TRUE(isUnfinished(path));
            const auto repaired = repairUnfinished(path, copy);
            ASSERT_EQ(repaired.ok(), fragments > 0);
            EXPECT_NEAR(unfinishedSeconds(path), 0.1 * static_cast<double>(fragments), 1e-9);
            if (repaired) {
                EXPECT_NEAR(repaired.value().durationSeconds, 0.1 * static_cast<double>(fragments), 1e-9);
            }
            EXPECT_FALSE(isUnfinished(copy));
        }
    }
}

// The sound of a lost fragment is longer than its picture, so the picture before is shown so much shorter.
TEST_F(MovieFileTest, WhatIsLostInTheMiddleLeavesSoundAndPicturesTogether) {
    QByteArray bytes = contents(path);
    bytes[static_cast<qsizetype>(ends[1]) + 5] = 'x';
    store(path, bytes);
    ASSERT_TRUE(repairUnfinished(path, copy));
    const QByteArray repaired = contents(copy);
    const QByteArray lengths = box(repaired.mid(repaired.lastIndexOf("moov")), "stts");
    const auto lostSound = kPacketsEach * kFramesPerPacket * kPictureTimescale / 48000;
    EXPECT_EQ(word(lengths, 3), kLength + kLength - lostSound);
    EXPECT_EQ(word(lengths, 5), kLength);
}

struct SilentMovieFileTest : MovieFileTest {
    SilentMovieFileTest() : MovieFileTest(false) {}
};

TEST_F(SilentMovieFileTest, PicturesAloneAreRepairedAsWell) {
    const auto repaired = repairUnfinished(path, copy);
    ASSERT_TRUE(repaired);
    EXPECT_NEAR(repaired.value().durationSeconds, 0.4, 1e-9);
    EXPECT_EQ(contents(copy).count("soun"), 0);
    EXPECT_FALSE(movieSeconds(path));
    EXPECT_EQ(movieSeconds(copy), repaired.value().durationSeconds);
}

TEST(UnfinishedName, IsHiddenFreeAndLeadsBack) {
    const QTemporaryDir folder;
    for (const QString &name : {QString("a.mp4"), QString("two\nlines.mp4"), QString("no extension"),
                                QString(300, QChar(0xE4)).left(125) + ".mp4"}) {
        const QString path = folder.filePath(name), hidden = unfinishedName(path);
        EXPECT_TRUE(QFileInfo(hidden).fileName().startsWith('.'));
        test::touch(hidden);
        ASSERT_TRUE(QFile::exists(hidden)) << "the name is too long";
        const QString second = unfinishedName(path);
        EXPECT_NE(second, hidden);
        for (const QString &one : {hidden, second})
            EXPECT_TRUE(path.startsWith(finishedName(one).chopped(4)) && finishedName(one).endsWith(path.right(4)));
    }
    EXPECT_EQ(finishedName("/x/.cantorel-0123456789abcdef.mp4"), QString());
}

} // namespace
} // namespace cantorel::media
