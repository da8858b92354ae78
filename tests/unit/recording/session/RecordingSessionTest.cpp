#include "recording/session/RecordingSession.h"

#include "lang/Lang.h"
#include "platform/media/RecordingRepair.h"
#include "recording/session/SilenceWatch.h"
#include "tests/unit/recording/RecordingFixture.h"

#include <QDir>

#include <sys/resource.h>

#include <atomic>
#include <csignal>
#include <random>

namespace cantorel {
namespace {

struct View : test::SessionLog {
    void recordingInterrupted(const RecordingTrouble &trouble) override {
        interrupted.append(Lang::english(trouble.sentence));
        if (onInterrupted)
            onInterrupted();
    }

    std::function<void()> onInterrupted;
    QStringList interrupted;
};

class RecordingSessionTest : public test::RecordingFixture {
public:
    using RecordingFixture::RecordingFixture;

    // The sentence of a start that is refused.
    QString refusal(int source) {
        AppSettings::setAudioType(source);
        const auto started = session.startRecording();
        return started ? QString() : Lang::english(started.failure().sentence);
    }
    // Up to the first frames.
    void begin(int source) {
        ASSERT_EQ(refusal(source), QString());
        ASSERT_TRUE(stepUntil([&] { return !view.file.isEmpty(); }));
    }
    // A recording of at least half a second, up to its stop.
    void record(int source) {
        begin(source);
        world.advance(500);
        session.stopRecording();
    }
    bool ends(std::size_t count = 1) {
        return stepUntil([&] { return view.finished.size() + static_cast<std::size_t>(view.failed.size()) >= count; });
    }
    bool isUnchanged() const {
        return output() == "Built-in Output" && !chosenOutput() && QDir(folder.path()).isEmpty();
    }

    View view;
    RecordedList list{QDir::homePath() + "/journal", *world.clock};
    RecorderCommons commons = commonsIn("journal");
    RecordingSession session{view, list, commons};
};

struct WithoutVirtualDevice : RecordingSessionTest {
    WithoutVirtualDevice() : RecordingSessionTest(test::EmbeddedWorld::Virtual::Missing) {}
};

// The room ends before a second of noise is written, in every file anew.
class ShortOfRoom : public RecordingSessionTest {
protected:
    ShortOfRoom() {
        silencePlayer();
        std::signal(SIGXFSZ, SIG_IGN); // a write beyond the limit fails, on whatever thread
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &mLimit), 0);
    }
    ~ShortOfRoom() override { moreRoom(); }

    void moreRoom() {
        const rlimit unlimited{RLIM_INFINITY, RLIM_INFINITY};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &unlimited), 0);
    }

private:
    const rlimit mLimit{12000, RLIM_INFINITY};
    std::minstd_rand mRandom;
    std::shared_ptr<void> mNoise = world.backend->play([this](std::span<float> samples, int, std::int64_t) {
        for (float &sample : samples)
            sample = std::uniform_real_distribution<float>(-0.5f, 0.5f)(mRandom);
    });
};

bool isOneSentence(const QString &text) { return text.endsWith('.') && !text.contains('\n'); }

} // namespace

TEST_F(RecordingSessionTest, EverySourceIsRecordedConvertedAndGivesTheDevicesBack) {
    AppSettings::setAudioFormat(4);
    const char *const devices[] = {"Tessolar_AudioDevice", "Built-in Microphone", "Tessolar_AggregateDevice"};
    for (int source = 0; source < 3; ++source) {
        SCOPED_TRACE(source);
        view.file.clear();
        record(source);
        EXPECT_EQ(output(), "Built-in Output");
        EXPECT_EQ(chosenOutput(), std::nullopt);
        ASSERT_TRUE(ends(static_cast<std::size_t>(source) + 1));
        ASSERT_TRUE(view.failed.isEmpty()) << view.failed.join(' ').toStdString();
        EXPECT_EQ(view.device, devices[source]);
        const FinishedRecording &finished = view.finished.back();
        EXPECT_EQ(finished.file, QString(view.file).replace(".m4a", ".wav"));
        EXPECT_EQ(finished.bytes, QFileInfo(finished.file).size());
        // 16 bits, stereo, 44100 frames a second: the length is the one that was captured.
        EXPECT_NEAR(static_cast<double>(finished.bytes) / 4 / 44100, finished.seconds, 0.005);
        EXPECT_EQ(finished.droppedFrames, 0);
        EXPECT_FALSE(QFile::exists(view.file)) << "its successor is whole";
    }
    EXPECT_EQ(AppSettings::recordNameBaseOn(), 4) << "each has a number of its own";
}

TEST_F(RecordingSessionTest, SourceBothStartedTwiceMakesItsDeviceOnce) {
    record(2);
    ASSERT_TRUE(ends(1));
    const AudioDeviceID made = test::EmbeddedWorld::deviceNamed("Tessolar_AggregateDevice");
    view.file.clear();
    record(2);
    ASSERT_TRUE(ends(2));
    EXPECT_TRUE(view.failed.isEmpty());
    EXPECT_EQ(test::EmbeddedWorld::deviceNamed("Tessolar_AggregateDevice"), made);
    EXPECT_EQ(test::EmbeddedWorld::names().count("Tessolar_AggregateDevice"), 1);
}

TEST_F(RecordingSessionTest, AMicrophoneIsAskedForWhereOneIsRecorded) {
    world.backend->unplug("builtin_microphone");
    for (const int source : {1, 2}) {
        EXPECT_TRUE(isOneSentence(refusal(source)));
        EXPECT_TRUE(refusal(source).contains("microphone"));
        EXPECT_TRUE(isUnchanged());
    }
    record(0);
    ASSERT_TRUE(ends());
    EXPECT_TRUE(view.failed.isEmpty()) << "system sound needs none";
}

TEST_F(WithoutVirtualDevice, SystemSoundIsRecordedFromTheOutputWhichStaysAsItIsAndIsFollowed) {
    world.backend->plug(hal::EmbeddedBackend::plainDevice(QStringLiteral("usb"), QStringLiteral("USB"), 0, 2));
    world.backend->setSource(QStringLiteral("builtin_microphone"), {});
    ASSERT_TRUE(ZQAudioKextKit::setVolume(0.5f, output()));
    std::atomic<int> loud = 0; // half seconds
    for (const int source : {0, 2}) {
        SCOPED_TRACE(source);
        view = {};
        ZQAVRecorderKit::sharedInstance().getAudioRecorder()->setTap([&](std::span<const float> samples) {
            loud += std::any_of(samples.begin(), samples.end(), [](float sample) { return sample != 0; }) ? 1 : 0;
        });
        ASSERT_EQ(refusal(source), QString());
        EXPECT_TRUE(stepUntil([&] { return loud > 0; }));
        EXPECT_EQ(chosenOutput(), std::nullopt);
        EXPECT_EQ(ZQAudioKextKit::getVolumeValueFromDeviceName(output()), 0.5f);
        world.backend->setConfiguredDefault(hal::Direction::Output, QStringLiteral("usb"), std::nullopt);
        world.advance(2000); // what the other has played is written
        ASSERT_TRUE(stepUntil([&, before = loud.load()] { return loud > before + 4; }));
        session.stopRecording();
        ASSERT_TRUE(ends());
        EXPECT_TRUE(view.failed.isEmpty());
        EXPECT_EQ(chosenOutput(), QStringLiteral("usb"));
        world.backend->setConfiguredDefault(hal::Direction::Output, std::nullopt, std::nullopt);
    }
    for (const char *device : {"usb", "builtin_output"})
        world.backend->unplug(QLatin1String(device));
    EXPECT_TRUE(refusal(0).endsWith(QStringLiteral("cantorel-cli driver install")));
}

// It may be installed between two recordings, or lose its node.
TEST_F(RecordingSessionTest, BothSourcesAreJoinedFromWhatSystemSoundIsRecordedFromNow) {
    for (const bool installed : {true, false, true}) {
        world.virtualInstalled = installed;
        view = {};
        record(2);
        ASSERT_TRUE(ends());
        EXPECT_TRUE(view.failed.isEmpty());
        const QVariantMap made =
            ZQUserDefaultGetObjectValue(QString::fromLatin1(setting::kOldAggregateSubDeivceUIDs), {}).toMap();
        EXPECT_EQ(made.value(kAggregateOutputUID), installed ? "Tessolar_AudioDevice" : hal::kOutputMonitorUid);
    }
}

TEST_F(RecordingSessionTest, WithoutASoundServerARecordingWaitsAndAStartIsRefused) {
    ASSERT_EQ(refusal(0), QString());
    ASSERT_TRUE(stepUntil([&] { return !view.file.isEmpty(); }));
    world.backend->loseServer(true);
    ASSERT_TRUE(stepUntil([&] { return view.devices == "l"; }));
    world.backend->loseServer(false);
    ASSERT_TRUE(stepUntil([&] { return view.devices == "lb"; }));
    world.backend->loseServer(true);
    session.stopRecording();
    ASSERT_TRUE(ends());
    for (const int source : {0, 1, 2})
        EXPECT_EQ(refusal(source), QStringLiteral("No sound server answers, so nothing can be recorded."));
    world.backend->loseServer(false);
    record(1);
    ASSERT_TRUE(ends(2));
    EXPECT_EQ(chosenOutput(), std::nullopt);
    EXPECT_TRUE(view.failed.isEmpty());
}

// No user, however mighty, can write there.
TEST_F(RecordingSessionTest, AFolderThatCannotBeWrittenIsNamed) {
    const QString unwritable = "/proc";
    standardUserDefaults().setArgument(setting::kOutputFolderPath.key, unwritable);
    for (const int source : {0, 1, 2}) {
        const QString sentence = refusal(source);
        EXPECT_TRUE(isOneSentence(sentence) && sentence.contains(unwritable)) << sentence.toStdString();
        EXPECT_TRUE(isUnchanged());
    }
}

TEST_F(RecordingSessionTest, AnotherRecorderIsRefused) {
    View other;
    RecorderCommons others = commonsIn("journal");
    RecordingSession second(other, list, others);
    ASSERT_EQ(refusal(1), QString());
    const auto started = second.startRecording();
    ASSERT_FALSE(started);
    EXPECT_TRUE(isOneSentence(Lang::english(started.failure().sentence)));
    session.stopRecording();
}

TEST_F(ShortOfRoom, ErrorsStartTheRecordingAgainUntilThreeHaveBroughtNothing) {
    ASSERT_EQ(refusal(0), QString());
    ASSERT_TRUE(ends());
    moreRoom();
    EXPECT_EQ(view.interrupted.size(), 2);
    ASSERT_EQ(view.failed.size(), 1);
    EXPECT_TRUE(isOneSentence(view.failed[0])) << view.failed[0].toStdString();
    EXPECT_EQ(view.kept, view.file);
    EXPECT_EQ(output(), "Built-in Output");
    EXPECT_FALSE(session.isRecording());
    EXPECT_EQ(view.settled, 1);
    // Whole at the latest when the program starts the next time.
    session.leftovers().recover();
    EXPECT_FALSE(media::isUnfinished(view.kept));
    EXPECT_TRUE(test::packetsOf(test::contents(view.kept)));
}

TEST_F(ShortOfRoom, AStopWhileARestartIsAwaitedForgetsTheErrorsBeforeIt) {
    view.onInterrupted = [&] {
        EXPECT_EQ(session.phase(), SessionPhase::WaitingToRestart);
        if (view.interrupted.size() == 2)
            session.stopRecording();
    };
    ASSERT_EQ(refusal(0), QString());
    ASSERT_TRUE(stepUntil([&] { return session.isSettled(); }));
    EXPECT_TRUE(view.failed.isEmpty());
    ASSERT_EQ(refusal(0), QString());
    ASSERT_TRUE(ends());
    EXPECT_EQ(view.interrupted.size(), 4) << "three attempts are made anew";
}

TEST_F(RecordingSessionTest, SilenceIsToldOnceWithItsDeviceAndCause) {
    silencePlayer();
    ASSERT_EQ(refusal(0), QString());
    ASSERT_TRUE(stepUntil([&] { return !view.silent.isEmpty(); }));
    EXPECT_TRUE(isOneSentence(view.silent[0]));
    EXPECT_TRUE(view.silent[0].contains("Built-in Output")) << view.silent[0].toStdString();
    world.advance(5000);
    const auto told = [&] { return view.silent.size() > 1; };
    EXPECT_FALSE(test::eventually(told, 700)) << "once";
    session.stopRecording();
    ASSERT_TRUE(ends());
    EXPECT_EQ(view.finished.size(), 1u) << "silence is recorded as well";
}

TEST_F(RecordingSessionTest, TheLikelyCauseOfSilenceIsNamed) {
    const auto cause = [](RecordingSource source) { return Lang::english(likelyCauseOfSilence(source, "The device")); };
    EXPECT_TRUE(cause(RecordingSource::Microphone).contains("muted"));
    world.backend->setGains("builtin_microphone", hal::Direction::Input, {0, 0});
    EXPECT_TRUE(cause(RecordingSource::Microphone).contains("volume is 0"));
    EXPECT_TRUE(cause(RecordingSource::SystemSound).contains("programs play to \"Built-in Output\""));
    ZQAudioKextKit::setSVAD();
    EXPECT_TRUE(cause(RecordingSource::SystemSound).contains("nothing plays"));
}

TEST_F(WithoutVirtualDevice, SilenceIsThatOfTheOutput) {
    silencePlayer();
    ASSERT_EQ(refusal(0), QString());
    ASSERT_TRUE(stepUntil([&] { return !view.silent.isEmpty(); }));
    EXPECT_TRUE(view.silent[0].startsWith(QStringLiteral("\"Built-in Output\" hears only silence; nothing plays")));
    session.stopRecording();
}

TEST_F(RecordingSessionTest, SoundIsNoSilence) {
    ASSERT_EQ(refusal(0), QString());
    const auto *recorder = ZQAVRecorderKit::sharedInstance().getAudioRecorder();
    ASSERT_TRUE(stepUntil([&] { return recorder->recordingCounts().seconds() > 6; }));
    EXPECT_TRUE(view.silent.isEmpty());
    session.stopRecording();
    ASSERT_TRUE(ends());
}

TEST_F(RecordingSessionTest, ASessionThatGoesAwayGivesTheDevicesBack) {
    {
        View other;
        RecorderCommons others = commonsIn("other");
        RecordingSession second(other, list, others);
        AppSettings::setAudioType(0);
        ASSERT_TRUE(second.startRecording());
        EXPECT_EQ(output(), "Tessolar_AudioDevice");
    }
    EXPECT_EQ(output(), "Built-in Output");
}

TEST_F(RecordingSessionTest, FileThatIsRemovedMeanwhileEndsTheRecordingAtOnce) {
    begin(0);
    ASSERT_TRUE(QFile::remove(view.file));
    ASSERT_TRUE(ends()) << "nobody has to stop it";
    ASSERT_EQ(view.failed.size(), 1);
    EXPECT_TRUE(view.failed.first().contains("was removed while it was being recorded"));
    EXPECT_EQ(view.kept, QString());
    EXPECT_EQ(output(), "Built-in Output");
    EXPECT_FALSE(session.isRecording());
}

TEST_F(RecordingSessionTest, AFolderThatIsRemovedMeanwhileCostsNothingThatWasRecorded) {
    const QString music = AppSettings::defaultMusicDirectoryPath();
    AppSettings::setAudioFormat(4);
    for (const char *when : {"recording", "paused", "splitting"}) {
        SCOPED_TRACE(when);
        const QString chosen = folder.path() + "/tree/folder";
        ASSERT_TRUE(QDir().mkpath(chosen));
        standardUserDefaults().setArgument(setting::kOutputFolderPath.key, chosen);
        view = {};
        begin(0);
        world.advance(1000);
        const QString lost = view.file;
        ASSERT_TRUE(lost.startsWith(chosen));
        // Neither the name nor that of its conversion is free there.
        const QString name = QFileInfo(lost).completeBaseName();
        ASSERT_TRUE(QDir().mkpath(music));
        test::store(music + '/' + name + ".m4a", "other");
        test::store(music + '/' + name + "(1).wav", "other");
        if (QByteArray(when) == "paused")
            session.pauseRecording();
        if (QByteArray(when) == "splitting")
            session.splitRecording();
        ASSERT_TRUE(QDir(folder.path() + "/tree").removeRecursively());
        ASSERT_TRUE(stepUntil([&] { return session.isSettled(); })) << "nobody has to stop it";
        EXPECT_TRUE(view.failed.isEmpty()) << view.failed.join(' ').toStdString();
        ASSERT_EQ(view.early.size(), 1);
        EXPECT_TRUE(view.early.first().contains(lost) && view.early.first().contains(music));
        ASSERT_EQ(view.finished.size(), 1u);
        EXPECT_EQ(view.finished[0].file, music + '/' + name + "(2).wav");
        EXPECT_GE(view.finished[0].seconds, 1.0);
        EXPECT_GT(QFileInfo(view.finished[0].file).size(), 48000 * 4);
        ASSERT_NE(list.itemWithFile(view.finished[0].file), nullptr);
        EXPECT_EQ(list.itemWithFile(lost), nullptr);
        EXPECT_EQ(output(), "Built-in Output");
        world.advance(3000);
        EXPECT_FALSE(session.isRecording());
        EXPECT_FALSE(QFile::exists(chosen)) << "nothing is made where somebody has removed it";
    }
    EXPECT_TRUE(RecordingJournal(QDir::homePath() + "/journal").abandoned().isEmpty())
        << "nothing is left to be looked at";
}

} // namespace cantorel
