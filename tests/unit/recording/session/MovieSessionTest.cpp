#include "recording/session/MovieSession.h"

#include "platform/desktop/recorded/RecordedServices.h"
#include "platform/media/RecordingRepair.h"
#include "platform/media/UnfinishedName.h"
#include "platform/media/movie/software/SoftwareScreen.h"
#include "tests/support/Movie.h"
#include "tests/unit/recording/RecordingFixture.h"
#include "util/ToolFile.h"

#include <QDeadlineTimer>
#include <QDir>

#include <cmath>
#include <complex>
#include <cstdint>
#include <limits>
#include <numbers>
#include <tuple>
#include <utility>

namespace cantorel {
namespace {

// A display in software with the sound that plays, recorded as the window does it.
class MovieSessionTest : public test::RecordingFixture, public test::SessionLog {
public:
    void SetUp() override {
        list.initRecordedList();
        MovieWish wish;
        wish.picture = MovieWish::Picture::Screen;
        movies.setWish(wish);
    }
    void recordingEndsEarly(const foundation::Sentence &sentence) override { early << keyOf(sentence); }
    void recordingFailed(const RecordingTrouble &trouble) override { failed << keyOf(trouble.sentence); }
    static QString keyOf(const foundation::Sentence &sentence) {
        return QString::fromUtf8(sentence.key().data(), static_cast<qsizetype>(sentence.key().size()));
    }

    bool records(int movie) {
        return stepUntil([&] { return started.size() == movie; });
    }
    bool settles() {
        return stepUntil([&] { return movies.isSettled(); });
    }
    // A movie that has begun and lasts for that long, or one after it.
    void record(double seconds) {
        if (movies.isSettled()) {
            ASSERT_TRUE(movies.start());
            ASSERT_TRUE(records(static_cast<int>(started.size()) + 1));
        }
        ASSERT_TRUE(stepUntil([&] { return movies.shown().seconds >= seconds; }));
    }
    QStringList left() const { return RecordingJournal(stateFolder).abandoned(); }
    QStringList hidden(const QString &in) const {
        return QDir(in).entryList({"*.unfinished"}, QDir::Files | QDir::Hidden);
    }

    void willSleep(bool shutsDown = false) { desktop::InstalledServices::current().sleep->willSleep(shutsDown); }
    void wakes() { desktop::InstalledServices::current().sleep->didWake(); }
    bool isHeld() const {
        const QStringList held = calls->calls().filter("machine");
        return !held.isEmpty() && held.constLast() == "hold machine";
    }

    const std::shared_ptr<desktop::CallRecord> calls = std::make_shared<desktop::CallRecord>();
    const desktop::InstalledServices services{desktop::recordedServices(calls)};
    media::SoftwareScreen *const screen = new media::SoftwareScreen(*world.clock, {64, 48}); // the sources' below
    const media::InstalledPictureSources pictures{std::unique_ptr<media::PictureSources>(screen)};
    const QString stateFolder = QDir::homePath() + "/state";
    RecordedList list{stateFolder, *world.clock};
    RecorderCommons commons = commonsIn("state");
    RecordingSession session{*this, list, commons};
    MovieSession movies{*this, list, commons};
};

} // namespace

TEST_F(MovieSessionTest, IsFinishedBeforeTheMachineSleepsAndGoesOnInAnotherAfterIt) {
    EXPECT_FALSE(isHeld());
    record(1);
    EXPECT_TRUE(isHeld());
    willSleep();
    EXPECT_TRUE(isHeld()) << "until the file is whole";
    ASSERT_TRUE(stepUntil([&] { return !isHeld(); }));
    ASSERT_EQ(list.items().size(), 1u);
    EXPECT_TRUE(media::movieSeconds(started[0]));
    EXPECT_TRUE(movies.isRecording()) << "nobody leaves: it is not over";
    EXPECT_EQ(settled, 0);
    wakes();
    ASSERT_TRUE(records(2));
    EXPECT_TRUE(isHeld());
    willSleep();
    wakes(); // before the file is finished
    ASSERT_TRUE(records(3));
    willSleep(true);
    ASSERT_TRUE(stepUntil([&] { return !isHeld(); }));
    movies.stop(); // as a signal does when the machine shuts down
    EXPECT_TRUE(movies.isSettled());
    wakes();
    world.advance(2000);
    EXPECT_TRUE(movies.isSettled());
    EXPECT_EQ(list.items().size(), 3u);
    EXPECT_TRUE(failed.isEmpty() && early.isEmpty()) << (failed + early).join(' ').toStdString();
    EXPECT_EQ(settled, 1);
}

TEST_F(MovieSessionTest, WhatIsPausedSleepsAsItIsAndWhatHasNoPictureYetBeginsAfterIt) {
    record(1);
    movies.onPause();
    willSleep();
    EXPECT_FALSE(isHeld());
    wakes();
    EXPECT_TRUE(isHeld());
    EXPECT_EQ(movies.state(), RecorderState::Paused);
    willSleep(true);
    ASSERT_TRUE(stepUntil([&] { return list.items().size() == 1; })) << "a shutdown finishes it";
    movies.stop();
    ASSERT_TRUE(settles());
    ASSERT_TRUE(movies.start());
    willSleep();
    ASSERT_TRUE(stepUntil([&] { return !isHeld(); }));
    wakes();
    ASSERT_TRUE(records(2));
    EXPECT_TRUE(failed.isEmpty()) << failed.join(' ').toStdString();
}

TEST_F(MovieSessionTest, ItsEndLeavesTheMachineHeldForSoundAndTheOtherWayRound) {
    AppSettings::setAudioFormat(4);
    record(1);
    movies.stop();
    ASSERT_TRUE(session.startRecording());
    ASSERT_TRUE(settles());
    EXPECT_TRUE(isHeld());
    session.stopRecording();
    ASSERT_TRUE(stepUntil([&] { return session.isSettled(); }));
    EXPECT_FALSE(isHeld());
}

TEST_F(MovieSessionTest, WhatIsChosenIsHeardAndBothAreHeardInOneTrack) {
    constexpr double kSystem = 1000, kMicrophone = 3000; // Hz
    const auto turn = [](double hertz, std::int64_t frame) { return 2 * std::numbers::pi * hertz * frame / 48'000; };
    const auto tone = [&](double hertz) -> hal::SoundSource {
        return [=](std::span<float> samples, int channels, std::int64_t position) {
            for (std::size_t i = 0; i < samples.size(); ++i)
                samples[i] = static_cast<float>(0.25 * std::sin(turn(hertz, position + std::int64_t(i) / channels)));
        };
    };
    silencePlayer();
    const auto player = world.backend->play(tone(kSystem));
    world.backend->setSource("builtin_microphone", tone(kMicrophone));
    for (const auto &[type, system, microphone] : {std::tuple(0, 0.25, 0.0), {1, 0.0, 0.25}, {2, 0.25, 0.25}}) {
        SCOPED_TRACE(type);
        AppSettings::setAudioType(type);
        record(2);
        movies.stop();
        ASSERT_TRUE(settles());
        const QString file = list.items().back()->getFileName();
        EXPECT_EQ(test::factOf(file, "a", "stream=channels"), "2");
        const std::vector<float> heard = test::soundOf(file);
        ASSERT_GT(heard.size(), 72'000u);
        for (const auto &[hertz, level] : {std::pair(kSystem, system), {kMicrophone, microphone}}) {
            double strength = 0; // of 100 stretches, since one device may be drawn near to the other all the while
            for (std::int64_t begin = 24'000; begin < 72'000; begin += 480) {
                std::complex<double> sum;
                for (std::int64_t i = begin; i < begin + 480; ++i)
                    sum += static_cast<double>(heard[static_cast<std::size_t>(i)]) * std::polar(1.0, turn(hertz, i));
                strength += std::abs(sum) / 24'000;
            }
            // ffmpeg makes one of two that are alike by the root of two.
            EXPECT_NEAR(strength / std::numbers::sqrt2, level, 0.02) << hertz;
        }
    }
}

TEST_F(MovieSessionTest, ADiskThatFillsEndsItInASentenceAndTheMovieIsKept) {
    auto &reserve = ZQAVRecorderKit::sharedInstance().getScreenRecorder()->diskReserve;
    const auto usual = std::exchange(reserve, std::numeric_limits<std::uint64_t>::max());
    ASSERT_TRUE(movies.start());
    ASSERT_TRUE(settles()) << "nobody has to stop it";
    reserve = usual;
    EXPECT_EQ(failed, QStringList{"DiskNearlyFull"});
    ASSERT_EQ(list.items().size(), 1u);
    EXPECT_GT(media::movieSeconds(list.items().front()->getFileName()).value_or(0), 0.5);
    EXPECT_FALSE(isHeld());
    EXPECT_TRUE(left().isEmpty());
}

// Between the moment when the file has its name and that when the list has it.
TEST_F(MovieSessionTest, KilledBeforeTheListHasItTheNextStartFindsIt) {
    record(1);
    EXPECT_EQ(left().size(), 2);
    movies.stop();
    const QString file = movies.path();
    for (const QDeadlineTimer deadline(10'000); !QFileInfo::exists(file) && !deadline.hasExpired();)
        world.advance(1); // without a turn of the event loop
    ASSERT_TRUE(list.items().empty());
    ASSERT_TRUE(left().contains(file));
    ASSERT_TRUE(QFile::copy(file, ToolFile::pathWithExtension(file, "wav"))) << "which is no conversion of it";
    const auto found = RecordingJournal::recover(file);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].file, file);
    EXPECT_GT(found[0].durationSeconds, 0.9);
    const QString whole = media::unfinishedName(file); // a moment before it got its name
    ASSERT_TRUE(QFile::copy(file, whole));
    const auto named = RecordingJournal::recover(whole);
    ASSERT_EQ(named.size(), 1u);
    EXPECT_EQ(named[0].file, path("Track1(1).mp4"));
    EXPECT_EQ(named[0].durationSeconds, found[0].durationSeconds);
    ASSERT_TRUE(settles());
    EXPECT_EQ(list.items().size(), 1u);
    EXPECT_TRUE(left().isEmpty());
}

TEST_F(MovieSessionTest, AMovieWhoseFolderGoesIsKeptElsewhereAndOneThatIsRemovedIsNot) {
    const QString tree = path("tree"), folder = tree + "/movies";
    standardUserDefaults().setArgument(setting::kOutputFolderPath.key, folder);
    const struct {
        const char *what;
        std::function<void()> change;
        QString keptIn; // empty: nowhere
    } cases[] = {
        {"folder removed", [&] { QDir(tree).removeRecursively(); }, QDir::homePath() + "/Music"},
        {"folder renamed", [&] { QDir().rename(tree, path("elsewhere")); }, path("elsewhere/movies")},
        {"file removed", [&] { QFile::remove(folder + '/' + hidden(folder).value(0)); }, {}},
    };
    for (const auto &[what, change, keptIn] : cases) {
        SCOPED_TRACE(what);
        while (!list.items().empty())
            list.remove(*list.items().front());
        early.clear();
        failed.clear();
        ASSERT_TRUE(QDir().mkpath(folder));
        record(1);
        change();
        ASSERT_TRUE(settles()) << "nobody has to stop it";
        EXPECT_EQ(early, keptIn.isEmpty() ? QStringList() : QStringList{"FolderRemoved"});
        EXPECT_EQ(failed, keptIn.isEmpty() ? QStringList{"FileRemoved"} : QStringList());
        ASSERT_EQ(list.items().size(), keptIn.isEmpty() ? 0u : 1u);
        if (!keptIn.isEmpty()) {
            const QString file = list.items().front()->getFileName();
            EXPECT_EQ(QFileInfo(file).path(), keptIn);
            EXPECT_GT(media::movieSeconds(file).value_or(0), 0.9);
            EXPECT_TRUE(hidden(keptIn).isEmpty());
        }
        EXPECT_TRUE(left().isEmpty()) << left().join(' ').toStdString();
    }
}

} // namespace cantorel
