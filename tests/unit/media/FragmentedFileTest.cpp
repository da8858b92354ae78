#include "platform/media/FragmentedFile.h"

#include "lang/Lang.h"
#include "platform/media/MovieBoxes.h"
#include "platform/media/RecordingRepair.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/RecordedPackets.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <functional>

namespace cantorel::media {
namespace {

using test::bigEndian;
using test::contents;
using test::packetsOf;
using test::plainFormat;
using test::stampedPackets;

class FragmentedFileTest : public testing::Test {
public:
    QString path(const char *name) const { return mFolder.filePath(name); }

    // Files of this process end at this size from now on, as on a full disk.
    static void fillDiskAt(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytes, RLIM_INFINITY};
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    }

    QTemporaryDir mFolder;
};

std::vector<QByteArray> expectedPackets(std::uint32_t count) {
    const PacketRun run = stampedPackets(0, count);
    std::vector<QByteArray> packets;
    std::size_t at = 0;
    for (const std::uint32_t size : run.sizes) {
        packets.emplace_back(reinterpret_cast<const char *>(run.bytes.data()) + at, size);
        at += size;
    }
    return packets;
}

TEST_F(FragmentedFileTest, FinishedFileIsOrdinaryAndHoldsEveryPacketInOrder) {
    auto file = FragmentedFile::create(path("a.m4a"), plainFormat());
    ASSERT_TRUE(file);
    std::uint32_t written = 0;
    for (const std::uint32_t count : {1u, 47u, 47u, 46u, 0u, 90u, 1u}) {
        ASSERT_TRUE(file.value()->append(stampedPackets(written, count)));
        written += count;
        EXPECT_TRUE(isUnfinished(path("a.m4a")));
    }
    const auto form = file.value()->finish(200000);
    ASSERT_TRUE(form);
    EXPECT_EQ(form.value(), FileForm::Ordinary);
    EXPECT_FALSE(isUnfinished(path("a.m4a")));
    const QByteArray bytes = contents(path("a.m4a"));
    EXPECT_EQ(static_cast<std::uint64_t>(bytes.size()), file.value()->bytes());
    EXPECT_EQ(packetsOf(bytes), expectedPackets(written));
    EXPECT_EQ(bigEndian(bytes, bytes.lastIndexOf("elst") + 12, 8), 200000u);
}

TEST_F(FragmentedFileTest, RecordingWithoutAPacketIsStillAWholeFile) {
    auto file = FragmentedFile::create(path("a.m4a"), plainFormat());
    ASSERT_TRUE(file);
    ASSERT_TRUE(file.value()->finish(0));
    const auto packets = packetsOf(contents(path("a.m4a")));
    ASSERT_TRUE(packets);
    EXPECT_TRUE(packets->empty());
}

TEST_F(FragmentedFileTest, UnwritableFolderIsToldInOneSentence) {
    const auto file = FragmentedFile::create(path("missing/a.m4a"), plainFormat());
    ASSERT_FALSE(file);
    EXPECT_TRUE(Lang::english(file.failure().sentence).contains("cannot be created"));
}

// Who removes a file means it; a folder goes with what is in it by mistake, or with a disk.
TEST_F(FragmentedFileTest, AFileThatWasRemovedWithItsFolderIsLostAndCanStillBeCopied) {
    const struct {
        const char *what;
        std::function<void(FragmentedFileTest &)> remove;
        bool lost;
    } cases[] = {{"nothing", [](auto &) {}, false},
                 {"the file", [](auto &test) { QFile::remove(test.path("tree/folder/a.m4a")); }, false},
                 {"the folder elsewhere",
                  [](auto &test) { QDir().rename(test.path("tree/folder"), test.path("tree/other")); }, false},
                 {"the folder", [](auto &test) { QDir(test.path("tree/folder")).removeRecursively(); }, true},
                 {"the tree", [](auto &test) { QDir(test.path("tree")).removeRecursively(); }, true}};
    for (const auto &[what, remove, lost] : cases) {
        SCOPED_TRACE(what);
        QDir().mkpath(path("tree/folder"));
        auto file = FragmentedFile::create(path("tree/folder/a.m4a"), plainFormat());
        ASSERT_TRUE(file);
        ASSERT_TRUE(file.value()->append(stampedPackets(0, 47)));
        remove(*this);
        EXPECT_EQ(file.value()->isLost(), lost);
        ASSERT_TRUE(file.value()->append(stampedPackets(47, 3)));
        ASSERT_TRUE(file.value()->finish(50000));
        ASSERT_TRUE(file.value()->copyTo(path("copy.m4a")));
        EXPECT_EQ(packetsOf(contents(path("copy.m4a"))), expectedPackets(50));
        EXPECT_FALSE(isUnfinished(path("copy.m4a")));
        EXPECT_FALSE(file.value()->copyTo(path("copy.m4a"))) << "nothing is replaced";
        EXPECT_EQ(packetsOf(contents(path("copy.m4a"))), expectedPackets(50));
        QFile::remove(path("copy.m4a"));
    }
    auto file = FragmentedFile::create(path("a.m4a"), plainFormat());
    ASSERT_TRUE(file.value()->append(stampedPackets(0, 47)));
    fillDiskAt(file.value()->bytes() - 1);
    const auto copied = file.value()->copyTo(path("copy.m4a"));
    ASSERT_FALSE(copied);
    EXPECT_FALSE(QFile::exists(path("copy.m4a"))) << "half a copy helps nobody";
}

// Wherever the disk becomes full, the file keeps its whole fragments and what it says is true.
TEST_F(FragmentedFileTest, FullDiskKeepsWholeFragmentsAtEveryLimit) {
    const std::uint64_t start = movieStart(plainFormat()).size();
    for (std::uint64_t room = start; room < start + 9000; room += 211) {
        SCOPED_TRACE(room);
        fillDiskAt(room);
        auto file = FragmentedFile::create(path("full.m4a"), plainFormat());
        ASSERT_TRUE(file);
        std::uint32_t written = 0;
        bool failed = false;
        for (int i = 0; i < 5; ++i) {
            const auto done = file.value()->append(stampedPackets(written, 24));
            EXPECT_FALSE(failed && done) << "a fragment after a lost one";
            failed = failed || !done;
            written += done ? 24 : 0;
            if (done)
                continue;
            EXPECT_TRUE(Lang::english(done.failure().sentence).contains("no room left"));
        }
        const auto form = file.value()->finish(std::int64_t{written} * 1024 - 1024);
        fillDiskAt(RLIM_INFINITY);
        ASSERT_TRUE(form);
        EXPECT_EQ(contents(path("full.m4a")).size(), static_cast<qint64>(file.value()->bytes()));
        EXPECT_EQ(isUnfinished(path("full.m4a")), form.value() == FileForm::Fragments);
        if (form.value() == FileForm::Fragments && written > 0) {
            ASSERT_TRUE(repairUnfinished(path("full.m4a"), path("repaired.m4a")));
            EXPECT_EQ(packetsOf(contents(path("repaired.m4a"))), expectedPackets(written));
        } else {
            EXPECT_EQ(packetsOf(contents(path("full.m4a"))).has_value(), form.value() == FileForm::Ordinary);
        }
    }
}

TEST_F(FragmentedFileTest, FileBeyondFourGigabytesUsesLongOffsets) {
    constexpr std::uint64_t kFar = (1ull << 32) + 5000;
    auto small = FragmentedFile::create(path("big.m4a"), plainFormat());
    ASSERT_TRUE(small);
    const auto start = small.value()->bytes();
    ASSERT_TRUE(small.value()->append(stampedPackets(0, 3)));
    small.value().reset();
    foundation::FileDescriptor sparse(::open(path("big.m4a").toLocal8Bit().constData(), O_RDWR));
    SampleTable table;
    table.addChunk(start, stampedPackets(0, 3).sizes);
    const auto file = FragmentedFile::resume(path("big.m4a"), std::move(sparse), plainFormat(), table, kFar);
    ASSERT_TRUE(file->append(stampedPackets(3, 3)));
    const std::uint64_t indexPosition = file->bytes();
    ASSERT_TRUE(file->finish(5 * 1024));
    QFile big(path("big.m4a"));
    ASSERT_TRUE(big.open(QIODevice::ReadOnly));
    big.seek(kPlaceholderPosition);
    EXPECT_EQ(bigEndian(big.read(16), 8, 8) + kPlaceholderPosition, indexPosition) << "the media reach up to the index";
    big.seek(static_cast<qint64>(kFar));
    const QByteArray tail = big.readAll();
    const qsizetype offsets = tail.indexOf("co64");
    ASSERT_GT(offsets, 0);
    const auto second = bigEndian(tail, offsets + 12 + 8, 8);
    EXPECT_EQ(bigEndian(tail, static_cast<qsizetype>(second - kFar), 4), 3u) << "the stamp of packet 3";
}

} // namespace
} // namespace cantorel::media
