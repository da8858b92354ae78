// What is exported, read by programs of others.

#include "platform/media/export/ExportSession.h"

#include "platform/media/DiskSpace.h"
#include "platform/media/composition/CompositionBuilder.h"
#include "tests/support/MemoryAsset.h"
#include "tests/support/Sound.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

namespace cantorel::media {
namespace {

using test::MemoryAsset;

class ExportSessionTest : public testing::Test {
protected:
    // The path of the export, which has taken a name; empty when there is none.
    QString exported(const AssetPointer &asset, std::optional<MediaTimeRange> range, ExportCoding coding,
                     const QList<MetadataItem> &items = {}) {
        double progress = 0;
        auto made = ExportSession{asset, range, coding, items}.render(mFolder.filePath("wanted.m4a"), mStop.get_token(),
                                                                      [&](double done) { progress = done; });
        mWhy = made ? foundation::Sentence() : made.failure().sentence;
        if (!made)
            return {};
        EXPECT_EQ(progress, 1);
        mFrames = made.value().frames;
        mLimited = made.value().limited;
        const QString path = mFolder.filePath(QString("%1.m4a").arg(++mNumber));
        EXPECT_EQ(made.value().file.take(path), 0);
        return path;
    }
    QStringList files() const { return QDir(mFolder.path()).entryList(QDir::Files | QDir::Hidden); }

    QTemporaryDir mFolder;
    std::stop_source mStop;
    foundation::Sentence mWhy;
    std::int64_t mFrames = 0, mLimited = 0;
    int mNumber = 0;
};

TEST_F(ExportSessionTest, BareSamplesAreTheSourceToTheBit) {
    // The longer one is rendered by two threads.
    for (const std::size_t frames : {std::size_t{30000}, std::size_t{700001}}) {
        const auto mono = MemoryAsset::numbered(static_cast<std::int64_t>(frames), {8000, 1}, -1000);
        const std::vector<float> whole = test::decoded(exported(mono, {{{1, 8}, {999, 1}}}, ExportCoding::PcmFloat));
        ASSERT_EQ(whole.size(), 2 * (frames - 1000));
        for (std::size_t i = 0; i < frames - 1000; ++i)
            ASSERT_TRUE(whole[2 * i] == whole[2 * i + 1] && test::stampOf(whole[2 * i]) == static_cast<std::int64_t>(i))
                << i;
    }
    CompositionBuilder both;
    for (int track = 0; track < 2; ++track)
        ASSERT_TRUE(
            both.insertTimeRange({{}, {600'000, 1000}}, MemoryAsset::level(600'000, 0.75F), {}, both.addTrack()));
    EXPECT_FALSE(exported(both.build(), {}, ExportCoding::Pcm16).isEmpty());
    EXPECT_EQ(mLimited, 1'200'000);
    // Integers are rounded as everybody does, and the stretch begins and ends at the nearest frames.
    std::vector<float> samples(44100 * 2);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<float>(static_cast<int>(i * 7919 % 65536) - 32768) / 32768;
    samples[0] = 1.5F;
    const auto source = std::make_shared<MemoryAsset>(SoundFormat{44100, 2}, samples);
    for (const auto &[start, length] : {std::pair{0, 1000}, {333, 334}, {1, 1}, {999, 5000}}) {
        const auto from = static_cast<std::size_t>((start * 44100 + 500) / 1000);
        const auto to = std::min<std::size_t>(((start + length) * 44100 + 500) / 1000, 44100);
        std::vector<float> wanted(samples.begin() + 2 * from, samples.begin() + 2 * to);
        if (from == 0)
            wanted[0] = 32767 / 32768.0F;
        EXPECT_EQ(test::decoded(exported(source, {{{start, 1000}, {length, 1000}}}, ExportCoding::Pcm16)), wanted);
    }
}

// The tone keeps its phase from the first frame to the last, so nothing was put in front or left out.
TEST_F(ExportSessionTest, CodedSoundHasExactlyTheFramesOfTheStretch) {
    for (const int rate : {44100, 48000, 8000}) {
        const auto source =
            std::make_shared<MemoryAsset>(SoundFormat{rate, 2}, test::tone(static_cast<std::size_t>(3 * rate), rate));
        for (const std::int64_t frames : {std::int64_t{1}, std::int64_t{1024}, std::int64_t{2 * rate + 17}}) {
            const QString path = exported(source, {{{}, {frames, rate}}}, ExportCoding::Aac);
            EXPECT_EQ(mFrames, frames);
            EXPECT_EQ(test::probed(path, "stream=duration_ts").toLongLong(), frames);
            EXPECT_EQ(test::probed(path, "stream=codec_name,sample_rate,channels"), QString("aac,%1,2").arg(rate));
            const std::vector<float> sound = test::decoded(path);
            ASSERT_GE(sound.size(), static_cast<std::size_t>(2 * frames));
            EXPECT_LT(sound.size(), static_cast<std::size_t>(2 * (frames + 1024))); // its last packet is rounded up
            if (frames > 4096 && rate > 8000) {
                EXPECT_LT(test::farthestFromTone(sound, rate, 1024, static_cast<std::size_t>(frames) - 1024), 0.005);
            }
        }
    }
}

TEST_F(ExportSessionTest, TagsAreReadByOthersAndEmptyOnesAreNotThere) {
    const QByteArray png("\x89PNG\r\n\x1a\n....", 12), jpeg("\xFF\xD8\xFF\xE0....", 8);
    const QList<MetadataItem> items = {{"quicktime", "artist", QString::fromUtf8("Ä & Ø"), {}},
                                       {"quicktime", "album", "Album", {}},
                                       {"quicktime", "creationDate", "2009", {}},
                                       {"quicktime", "title", "", {}},
                                       {"quicktime", "artwork", "", {}},
                                       {"quicktime", "artwork", "", jpeg},
                                       {"quicktime", "type", "Jazz", {}},
                                       {"itunes", "artwork", "", png}};
    const QString path = exported(MemoryAsset::level(48000, 0.1F, {48000, 2}), {}, ExportCoding::Aac, items);
    const auto read = foundation::ChildProcess::run(
        {"/usr/bin/python3",
         {"-c",
          "import sys, mutagen.mp4 as m\nt = m.MP4(sys.argv[1]).tags\nprint(sorted(t.keys()))\n"
          "print(t['\\xa9ART'], t['\\xa9day'], t['\\xa9gen'], len(t['covr']), bytes(t['covr'][0])[:3].hex(), "
          "t['covr'][0].imageformat)",
          path},
         {},
         {"PYTHONIOENCODING=utf-8"}});
    ASSERT_TRUE(read);
    EXPECT_EQ(QString::fromUtf8(read.value().output).trimmed().toStdString(),
              "['covr', '\u00a9ART', '\u00a9alb', '\u00a9day', '\u00a9gen']\n"
              "['\u00c4 & \u00d8'] ['2009'] ['Jazz'] 1 ffd8ff 13");
}

TEST_F(ExportSessionTest, WhatFailsOrIsStoppedLeavesNothing) {
    const auto source = MemoryAsset::level(480000, 0.1F, {48000, 2});
    EXPECT_EQ(exported(source, {{{20, 1}, {1, 1}}}, ExportCoding::Aac), QString()); // behind the end
    EXPECT_EQ(exported(source, {{{1, 1}, {}}}, ExportCoding::Aac), QString());
    source->isProtected = true;
    EXPECT_EQ(exported(source, {}, ExportCoding::Aac), QString());
    source->isProtected = false;
    for (const std::int64_t promised : {500'000, 600'000}) {
        source->promisedFrames = promised;
        EXPECT_EQ(exported(source, {}, ExportCoding::Pcm16), QString()); // ends early
    }
    source->promisedFrames = kMostFrames;
    EXPECT_EQ(exported(source, {}, ExportCoding::Pcm16), QString()); // no disk has such room
    EXPECT_EQ(mWhy, kDiskFull(mFolder.path()));
    source->promisedFrames = -1;
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit small{20000, limit.rlim_max};
    for (const ExportCoding coding : {ExportCoding::Aac, ExportCoding::PcmFloat}) {
        ::setrlimit(RLIMIT_FSIZE, &small);
        const QString none = exported(source, {}, coding);
        ::setrlimit(RLIMIT_FSIZE, &limit);
        EXPECT_EQ(none, QString());
        EXPECT_EQ(mWhy, kDiskFull(mFolder.path()));
    }
    mStop.request_stop();
    EXPECT_EQ(exported(source, {}, ExportCoding::Aac), QString());
    EXPECT_EQ(mWhy, kExportStopped());
    EXPECT_EQ(files(), QStringList());
}

} // namespace
} // namespace cantorel::media
