#include "platform/media/RecordingRepair.h"

#include "platform/media/FragmentedFile.h"
#include "platform/media/MovieBoxes.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/RecordedPackets.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <random>

namespace cantorel::media {
namespace {

using test::bigEndian;
using test::contents;
using test::packetsOf;
using test::plainFormat;
using test::stampedPackets;
using test::store;

constexpr std::uint32_t kFragments = 4;
constexpr std::uint32_t kPacketsEach = 2;

class RecordingRepairTest : public testing::Test {
protected:
    // A recording that was never closed, and where its fragments end.
    void SetUp() override {
        auto file = FragmentedFile::create(mBroken, plainFormat());
        ASSERT_TRUE(file);
        mEnds.push_back(file.value()->bytes());
        for (std::uint32_t i = 0; i < kFragments; ++i) {
            ASSERT_TRUE(file.value()->append(stampedPackets(i * kPacketsEach, kPacketsEach)));
            mEnds.push_back(file.value()->bytes());
        }
        mWhole = contents(mBroken);
    }

    QTemporaryDir mFolder;
    const QString mBroken = mFolder.filePath("broken.m4a");
    const QString mCopy = mFolder.filePath("copy.m4a");
    std::vector<std::uint64_t> mEnds;
    QByteArray mWhole;
};

TEST_F(RecordingRepairTest, CutAtAnyByteGivesEveryWholeFragmentAndLeavesTheOriginal) {
    for (qsizetype cut = 0; cut <= mWhole.size(); ++cut) {
        SCOPED_TRACE(cut);
        QFile::remove(mCopy);
        store(mBroken, mWhole.left(cut));
        std::size_t fragments = 0;
        while (fragments + 1 < mEnds.size() && mEnds[fragments + 1] <= static_cast<std::uint64_t>(cut))
            ++fragments;
        const double seconds = unfinishedSeconds(mBroken);
        const auto repaired = repairUnfinished(mBroken, mCopy);
        ASSERT_EQ(seconds, repaired ? repaired.value().durationSeconds : 0);
        ASSERT_EQ(contents(mBroken), mWhole.left(cut));
        ASSERT_EQ(repaired.ok(), fragments > 0);
        ASSERT_EQ(QFile::exists(mCopy), fragments > 0);
        if (!repaired)
            continue;
        const auto packets = packetsOf(contents(mCopy));
        ASSERT_TRUE(packets);
        ASSERT_EQ(packets->size(), fragments * kPacketsEach);
        for (std::size_t i = 0; i < packets->size(); ++i)
            ASSERT_EQ(bigEndian(packets->at(i), 0, 4), i);
        EXPECT_DOUBLE_EQ(repaired.value().durationSeconds, (fragments * kPacketsEach - 1) * 1024 / 48000.0);
    }
    EXPECT_EQ(QDir(mFolder.path()).entryList(QDir::Files | QDir::Hidden).size(), 2) << "no temporary file stays";
}

// The crash may come between the index and the header that makes it count.
TEST_F(RecordingRepairTest, FullIndexWithoutItsHeaderIsLeftOut) {
    auto file = FragmentedFile::create(mBroken, plainFormat());
    ASSERT_TRUE(file.value()->append(stampedPackets(0, 3)));
    const auto placeholder = contents(mBroken).mid(kPlaceholderPosition, kPlaceholderSize);
    ASSERT_TRUE(file.value()->finish(2048));
    QByteArray bytes = contents(mBroken);
    bytes.replace(kPlaceholderPosition, kPlaceholderSize, placeholder);
    store(mBroken, bytes);
    ASSERT_TRUE(isUnfinished(mBroken));
    ASSERT_TRUE(repairUnfinished(mBroken, mCopy));
    EXPECT_EQ(packetsOf(contents(mCopy))->size(), 3u);
}

// What is damaged is passed over, not what comes behind it; and its bytes stay in the file.
TEST_F(RecordingRepairTest, DamageCostsItsOwnFragmentOnly) {
    for (auto at = static_cast<qsizetype>(mEnds[1]); at < static_cast<qsizetype>(mEnds[2]); ++at) {
        SCOPED_TRACE(at);
        QByteArray bytes = mWhole;
        bytes[at] = static_cast<char>(~bytes[at]);
        store(mBroken, bytes);
        EXPECT_EQ(unfinishedSound(mBroken), UnfinishedSound::Whole);
        ASSERT_TRUE(repairUnfinished(mBroken, mBroken));
        const QByteArray repaired = contents(mBroken);
        const auto packets = packetsOf(repaired);
        ASSERT_TRUE(packets);
        ASSERT_GE(packets->size(), (kFragments - 1) * kPacketsEach);
        EXPECT_EQ(bigEndian(packets->front(), 0, 4), 0u);
        EXPECT_EQ(bigEndian(packets->back(), 0, 4), kFragments * kPacketsEach - 1);
        EXPECT_EQ(repaired.mid(kPlaceholderPosition + kPlaceholderSize).first(bytes.size() - 44), bytes.mid(44));
    }
}

// The disk that a recording was made on may be as full as it was then.
TEST_F(RecordingRepairTest, AFullDiskLeavesTheOriginalAndNothingElse) {
    ::signal(SIGXFSZ, SIG_IGN);
    const auto last = static_cast<rlim_t>(mWhole.size()) + 200; // in the middle of the index
    for (const rlim_t room : {rlim_t{0}, rlim_t{100}, static_cast<rlim_t>(mWhole.size()), last}) {
        const rlimit limit{room, RLIM_INFINITY};
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
        const auto repaired = repairUnfinished(mBroken, mBroken);
        ASSERT_FALSE(repaired);
        EXPECT_FALSE(repaired.failure().sentence.isEmpty());
        EXPECT_EQ(contents(mBroken), mWhole) << room;
        EXPECT_EQ(QDir(mFolder.path()).entryList(QDir::Files | QDir::Hidden).size(), 1) << room;
    }
    const rlimit none{RLIM_INFINITY, RLIM_INFINITY};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &none), 0);
}

// Damage gives fewer fragments or one sentence, never a file that is not whole.
TEST_F(RecordingRepairTest, FlippedBytesNeverGiveABrokenCopy) {
    std::mt19937 random(20240511); // fixed: a failure can be repeated
    for (int round = 0; round < 400; ++round) {
        QByteArray bytes = mWhole;
        for (unsigned flips = 1 + random() % 4; flips > 0; --flips)
            bytes[static_cast<qsizetype>(random() % mEnds[1 + random() % 3])] = static_cast<char>(random());
        store(mBroken, bytes);
        QFile::remove(mCopy);
        const auto repaired = repairUnfinished(mBroken, mCopy);
        ASSERT_EQ(repaired.ok(), QFile::exists(mCopy));
        if (!repaired) {
            ASSERT_FALSE(repaired.failure().sentence.isEmpty());
            continue;
        }
        ASSERT_TRUE(packetsOf(contents(mCopy))) << "round " << round;
    }
}

TEST_F(RecordingRepairTest, OtherFilesAreNotUnfinished) {
    const struct {
        const char *what;
        QByteArray bytes;
    } cases[] = {{"nothing", {}},
                 {"text", "hello"},
                 {"zeros", QByteArray(5000, '\0')},
                 {"an index that claims more than there is", mWhole.left(60) + QByteArray(400, '\xff')}};
    for (const auto &[what, bytes] : cases) {
        SCOPED_TRACE(what);
        store(mBroken, bytes);
        EXPECT_FALSE(isUnfinished(mBroken));
        EXPECT_EQ(unfinishedSound(mBroken), UnfinishedSound::None);
        EXPECT_EQ(unfinishedSeconds(mBroken), 0);
        EXPECT_FALSE(repairUnfinished(mBroken, mCopy));
    }
    EXPECT_FALSE(isUnfinished(mFolder.path())) << "a folder";
    EXPECT_FALSE(isUnfinished(mFolder.filePath("missing.m4a")));
}

TEST_F(RecordingRepairTest, WhatEndedBeforeItsFirstSoundIsToldFromWhatIsDamaged) {
    store(mBroken, mWhole.left(static_cast<qsizetype>(mEnds[0])));
    EXPECT_EQ(unfinishedSound(mBroken), UnfinishedSound::None);
    ASSERT_TRUE(FragmentedFile::create(mBroken, plainFormat()).value()->append(stampedPackets(0, 1)));
    EXPECT_EQ(unfinishedSound(mBroken), UnfinishedSound::None) << "the coder's priming alone";
    store(mBroken, contents(mBroken).chopped(1));
    EXPECT_EQ(unfinishedSound(mBroken), UnfinishedSound::Lost);
}

TEST_F(RecordingRepairTest, TheLengthOfALongOneIsToldByItsBeginning) {
    auto file = FragmentedFile::create(mBroken, plainFormat());
    for (std::uint32_t i = 0; i < 1000; ++i)
        ASSERT_TRUE(file.value()->append(stampedPackets(i * kPacketsEach, kPacketsEach)));
    const double seconds = (1000 * kPacketsEach - 1) * 1024 / 48000.0;
    EXPECT_NEAR(unfinishedSeconds(mBroken), seconds, seconds / 10) << "packets differ in size";
}

TEST_F(RecordingRepairTest, UnwritableCopyIsTold) {
    const auto repaired = repairUnfinished(mBroken, mFolder.filePath("missing/copy.m4a"));
    ASSERT_FALSE(repaired);
    EXPECT_FALSE(repaired.failure().sentence.isEmpty());
}

} // namespace
} // namespace cantorel::media
