#include "convert/queue/ZQAudioConvertManager.h"

#include "lang/Lang.h"
#include "settings/AppSettings.h"
#include "settings/SettingsTable.h"
#include "settings/UserDefaultFunctions.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/Wave.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>

namespace cantorel {
namespace {

using test::contents;
using test::store;

class StoppedClock : public foundation::Clock {
public:
    Duration now() const override { return mNow; }
    void sleepFor(Duration duration) override { mNow += duration; }

private:
    Duration mNow{0};
};

// A queue over a converter of a few lines of shell behind the real launcher: it tells of every file that it lasts two
// seconds, and makes WAV files by copying. A file whose name begins with "wait" is half done, tells less once more, and
// then waits for the file "go"; one with "bad" fails.
class ZQAudioConvertManagerTest : public testing::Test, public QObject, public ConvertManagerDelegate {
protected:
    void SetUp() override {
        test::storeProgram(path("ffmpeg"), R"(#!/bin/sh
for out in "$@"; do :; done
out=${out#file:} in= previous=
for word in "$@"; do [ "$previous" = -i ] && in=${word#file:}; previous=$word; done
case " $* " in *" -y "*) ;; *)
    printf '  Duration: 00:00:02.00, start: 0\n  Stream #0:0: Audio: pcm\n'
    exit 1 ;;
esac
here=${0%/*}
case $in in
*/bad*) echo "$in: Invalid data found when processing input"; exit 1 ;;
*/wait*)
    printf 'size= 1kB time=00:00:01.00 bitrate=1\rsize= 1kB time=00:00:00.00 bitrate=1\r'
    until [ -e "$here/go" ]; do sleep 0.02; done ;;
pipe:0)
    [ -e "$here/go" ] || echo joining >"$here/joining"
    until [ -e "$here/go" ]; do sleep 0.02; done
    in=$here/joined ;;
esac
cp "$in" "$out"
)");
        qputenv("CANTOREL_FFMPEG", path("ffmpeg").toLocal8Bit());
        standardUserDefaults().setArgument(setting::kConvertOutputFolder.key, mResults.path());
        mManager.delegate = this;
        mManager.outputAudioFormatDidChange("WAV", Lang::video2mp3HighQuality());
    }
    QString path(const char *name) const { return mFolder.filePath(name); }
    void add(const QStringList &names) {
        QList<QUrl> urls;
        for (const QString &name : names) {
            store(mFolder.filePath(name), mSound);
            urls << QUrl::fromLocalFile(mFolder.filePath(name));
        }
        mManager.parseAudioInfoWithURLs(urls);
        mCalls.clear();
    }
    bool until(const std::function<bool()> &condition) {
        for (const QDeadlineTimer end(60000); !condition() && !end.hasExpired();)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
        return condition();
    }
    bool untilCalled(const QString &call) {
        return until([&] { return mCalls.contains(call); });
    }
    bool untilIdle() {
        return until([&] { return !mManager.isConverting(); });
    }
    QStringList results() const { return QDir(mResults.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }
    ZQAudioConvertEntity &row(int index) { return *mManager.getAudioEntityWithRowIndex(index); }

    void ConvertManagerDelegate_NumberOfEntitysDidChange() override { mCalls << "count"; }
    void ConvertManagerDelegate_NeedUpdateEntiyInfoWithIndex(int index, bool) override {
        mCalls << QString("info %1").arg(index);
    }
    void ConvertManagerDelegate_StartConvertEntiyInfoWithIndex(int index) override {
        mCalls << QString("waits %1").arg(index);
    }
    void ConvertManagerDelegate_UpdateConvertEntiyInfoWithIndexForProgress(int index, double progress) override {
        mCalls << QString("progress %1 %2").arg(index).arg(progress);
    }
    void ConvertManagerDelegate_UpdateConvertEntiyInfoWithIndexForSuccess(int index, bool success) override {
        mCalls << QString("%1 %2").arg(success ? "done" : "failed").arg(index);
    }
    void ConvertManagerDelegate_ConvertDidDone() override { mCalls << "all done"; }
    void ConvertManagerDelegate_ConvertDidCancel() override { mCalls << "cancelled"; }
    // Without those on the media information, which come whenever they do.
    QStringList calls() const {
        QStringList calls = mCalls;
        calls.removeIf([](const QString &call) { return call.startsWith("info"); });
        return calls;
    }

    QTemporaryDir mFolder, mResults;
    const QByteArray mSound = test::wave(std::vector<float>(48000 * 2));
    StoppedClock mClock;
    QStringList mCalls;
    ZQAudioConvertManager mManager{mClock};
};

TEST_F(ZQAudioConvertManagerTest, RowsAreConvertedInOrderAndAFailureEndsNoOther) {
    store(mResults.filePath(".cantorel-0123456789abcdef.wav"), "left by a program that was killed");
    add({"a.mp3", "bad.mp3", "c.mp3"});
    mManager.startConvertWithMergeStatus(false);
    EXPECT_FALSE(mManager.moveEntityAtIndex(0, 2) || mManager.removeSelectedAudioIndexSet({0}));
    ASSERT_TRUE(untilIdle());
    EXPECT_EQ(calls(), QStringList({"waits 0", "waits 1", "waits 2", "done 0", "failed 1", "done 2", "all done"}));
    EXPECT_EQ(results(), QStringList({"a.wav", "c.wav"}));
    EXPECT_EQ(row(1).failure().key(), "ConvertNoSound");
    EXPECT_EQ(row(0).duration(), "00:00:02");
    EXPECT_EQ(row(0).fileType(), "MP3");
    EXPECT_EQ(row(0).convertProgress(), 100);
    EXPECT_EQ(mManager.getConvertSuccessNum(), 2);
    EXPECT_EQ(mManager.summary().failed, 1);
    EXPECT_EQ(mManager.summary().files, QStringList({mResults.filePath("a.wav"), mResults.filePath("c.wav")}));

    // The failed one alone is tried again, then all of them.
    store(path("go"), {});
    EXPECT_TRUE(mManager.retryEntityAtIndex(1));
    EXPECT_FALSE(mManager.retryEntityAtIndex(1));
    ASSERT_TRUE(untilIdle());
    EXPECT_EQ(results().size(), 2);
    mManager.startConvertWithMergeStatus(false);
    EXPECT_TRUE(row(0).outputPath().isEmpty() && row(1).failure().isEmpty()) << "what they were is over";
    ASSERT_TRUE(untilIdle());
    EXPECT_EQ(results(), QStringList({"a-2.wav", "a.wav", "c-2.wav", "c.wav"}));
}

TEST_F(ZQAudioConvertManagerTest, AStopEndsTheSecondOfThreeAtOnceAndIsToldOnce) {
    add({"a.mp3", "wait.mp3", "c.mp3"});
    mManager.startConvertWithMergeStatus(true);
    ASSERT_TRUE(untilCalled("progress 1 50"));
    mClock.sleepFor(std::chrono::seconds(9));
    EXPECT_EQ(mManager.progress().percent, 50); // one and a half of three
    EXPECT_EQ(mManager.progress().secondsLeft, 9);
    mManager.insertAudioInfoWithURL(QUrl::fromLocalFile(path("late.mp3")), 0);
    mManager.stopConvert();
    mManager.stopConvert();
    EXPECT_TRUE(mManager.isStopping());
    mManager.startConvertWithMergeStatus(false); // not before the end
    EXPECT_FALSE(mManager.retryEntityAtIndex(0));
    ASSERT_TRUE(untilIdle());
    EXPECT_EQ(calls(), QStringList({"waits 0", "waits 1", "waits 2", "done 0", "progress 1 50", "count", "failed 1",
                                    "failed 2", "cancelled"}));
    EXPECT_EQ(results(), QStringList("a.wav"));
    EXPECT_EQ(row(2).failure().key(), "ConvertStopped");
    EXPECT_EQ(row(3).convertStatus(), ConvertStatus::None); // waits for the next start
}

// Before the first child, between rows, and without any row.
TEST_F(ZQAudioConvertManagerTest, AStopIsHeardAtAnyTime) {
    mManager.startConvertWithMergeStatus(true);
    ASSERT_TRUE(untilIdle());
    EXPECT_EQ(calls(), QStringList("all done"));
    add({"a.mp3", "b.mp3"});
    mManager.startConvertWithMergeStatus(false);
    mManager.stopConvert();
    ASSERT_TRUE(untilIdle());
    EXPECT_EQ(calls(), QStringList({"waits 0", "waits 1", "failed 0", "failed 1", "cancelled"}));
    // While the parts are joined: they stay.
    mCalls.clear();
    mManager.startConvertWithMergeStatus(true);
    ASSERT_TRUE(until([&] { return QFile::exists(path("joining")); }));
    EXPECT_TRUE(mManager.isMerging());
    EXPECT_FALSE(mManager.retryEntityAtIndex(0));
    mManager.stopConvert();
    ASSERT_TRUE(untilIdle());
    EXPECT_EQ(mCalls.last(), "cancelled");
    EXPECT_EQ(results(), QStringList({"a.wav", "b.wav"}));
}

TEST_F(ZQAudioConvertManagerTest, ARowIsCancelledAlone) {
    add({"wait.mp3", "b.mp3", "c.mp3"});
    mManager.startConvertWithMergeStatus(false);
    ASSERT_TRUE(untilCalled("progress 0 50"));
    mManager.cancelEntityAtIndex(1);
    mManager.cancelEntityAtIndex(0);
    ASSERT_TRUE(untilCalled("failed 0"));
    EXPECT_TRUE(mManager.retryEntityAtIndex(1)); // behind the others
    ASSERT_TRUE(untilIdle());
    EXPECT_EQ(calls(), QStringList({"waits 0", "waits 1", "waits 2", "progress 0 50", "failed 1", "failed 0", "waits 1",
                                    "done 2", "done 1", "all done"}));
}

TEST_F(ZQAudioConvertManagerTest, PartsGoOnlyWhenTheyAreOursAndJoined) {
    store(path("go"), {});
    const QByteArray twice = test::wave(std::vector<float>(48000 * 4)),
                     thrice = test::wave(std::vector<float>(48000 * 6));
    const struct {
        QStringList files;
        const QByteArray &joined;
        QStringList left;
        const char *trouble;
    } cases[] = {
        {{"a.mp3", "bad.mp3", "c.mp3"}, twice, {"a-merge.wav"}, ""},
        {{"a.mp3", "b.mp3", "c.mp3"}, thrice, {"a-merge.wav"}, ""},
        {{"a.mp3", "b.mp3", "c.mp3"}, twice, {"a.wav", "b.wav", "c.wav"}, "JoinIncomplete"},
        {{"a.mp3", "bad.mp3"}, twice, {"a.wav"}, "JoinTooFew"},
        {{"a.mp3"}, mSound, {"a.wav"}, ""},
    };
    for (const auto &[files, joined, left, trouble] : cases) {
        store(path("joined"), joined);
        add(files);
        mManager.startConvertWithMergeStatus(true);
        ASSERT_TRUE(untilIdle());
        EXPECT_EQ(results(), left);
        EXPECT_EQ(mManager.summary().mergeFailure.key(), trouble);
        EXPECT_EQ(row(0).outputPath().isEmpty(), left.front() == "a-merge.wav");
        QList<int> all;
        for (int i = 0; i < files.size(); ++i)
            all << i;
        EXPECT_TRUE(mManager.removeSelectedAudioIndexSet(all));
        for (const QString &name : left)
            QFile::remove(mResults.filePath(name));
    }
    // What has taken the name of a part meanwhile is no part.
    QFile::remove(path("go"));
    store(path("joined"), twice);
    add({"a.mp3", "b.mp3"});
    mManager.startConvertWithMergeStatus(true);
    ASSERT_TRUE(until([&] { return QFile::exists(path("joining")); }));
    store(path("other"), "someone's own");
    ASSERT_TRUE(QFile::remove(mResults.filePath("b.wav")) && QFile::copy(path("other"), mResults.filePath("b.wav")));
    store(path("go"), {});
    ASSERT_TRUE(untilIdle());
    EXPECT_EQ(results(), QStringList({"a-merge.wav", "b.wav"}));
}

TEST_F(ZQAudioConvertManagerTest, RingtonesGetTheirExtensionWhenTheyAreWhole) {
    store(path("go"), {});
    mManager.outputAudioFormatDidChange("m4r", {});
    add({"a.mp3", "b.mp3"});
    mManager.startConvertWithMergeStatus(false);
    ASSERT_TRUE(untilIdle());
    EXPECT_EQ(results(), QStringList({"a.m4r", "b.m4r"}));
    EXPECT_EQ(row(1).outputPath(), mResults.filePath("b.m4r"));
    EXPECT_EQ(AppSettings::changeFileToExtension("r", row(1).outputPath()), mResults.filePath("b.r"));
    store(path("joined"), test::wave(std::vector<float>(48000 * 4)));
    mManager.startConvertWithMergeStatus(true);
    ASSERT_TRUE(untilIdle());
    EXPECT_EQ(results(), QStringList({"a-merge.m4r", "a.m4r", "b.r"}));
}

TEST_F(ZQAudioConvertManagerTest, RowsMoveAsTheListAsks) {
    using Move = bool (ZQAudioConvertManager::*)(int, int);
    const Move move = &ZQAudioConvertManager::moveEntityAtIndex, up = &ZQAudioConvertManager::moveUpEntityAtIndex,
               down = &ZQAudioConvertManager::moveDownEntityAtIndex;
    const struct {
        Move move;
        int from, to;
        const char *order; // empty: refused
    } cases[] = {{move, 0, 2, "bacd"}, {move, 3, 1, "adbc"}, {move, 1, 4, "acdb"}, {move, 2, 2, "abcd"},
                 {move, 0, 5, ""},     {move, 4, 0, ""},     {up, 2, 1, "acbd"},   {up, 0, 3, "bcda"},
                 {down, 1, 2, "acbd"}, {down, 3, 0, "dabc"}, {down, -1, 0, ""},    {up, 0, 4, ""}};
    for (const auto &[how, from, to, order] : cases) {
        mManager.removeSelectedAudioIndexSet({0, 1, 2, 3, 9});
        add({"a.mp3", "b.mp3", "c.mp3", "d.mp3"});
        EXPECT_EQ((mManager.*how)(from, to), *order != 0);
        QString names;
        for (int i = 0; i < mManager.numberOfAudioEntitys(); ++i)
            names += row(i).fileName();
        EXPECT_EQ(names.toStdString(), *order ? order : "abcd");
    }
}

} // namespace
} // namespace cantorel
