// "record" as a person runs it: every format, every fault, and what signals and crashes leave behind.

#include "tests/world/record/RecordProgram.h"

#include "tests/support/Sound.h"
#include "tests/support/StampedSound.h"

#include <QElapsedTimer>

#include <sys/resource.h>

#include <algorithm>

namespace cantorel {
namespace {

using test::descendantsOf;
using test::eventually;
using test::expectOneSentence;
using test::PrivateWorld;
using test::RecordProgramTest;

// The left channel's amplitude in most windows: a stall of the machine spoils single ones.
double usualAmplitude(const std::vector<float> &samples) {
    constexpr std::size_t kWindow = 4096;
    std::vector<double> amplitudes;
    for (std::size_t first = 0; 2 * (first + kWindow) <= samples.size(); first += kWindow) {
        double power = 0;
        for (std::size_t i = first; i < first + kWindow; ++i)
            power += double(samples[2 * i]) * samples[2 * i];
        amplitudes.push_back(std::sqrt(2 * power / kWindow));
    }
    if (amplitudes.empty())
        return 0;
    std::nth_element(amplitudes.begin(), amplitudes.begin() + amplitudes.size() / 2, amplitudes.end());
    return amplitudes[amplitudes.size() / 2];
}

} // namespace

TEST_F(RecordProgramTest, FaultsEndInOneSentenceAndTheirStatus) {
    const struct {
        QStringList options, environment;
        int status;
        const char *sentence;
        bool kept;
    } cases[] = {
        {mSoftware, {"CANTOREL_FFMPEG=/no/such"}, 1, "ffmpeg", true},
        {mSoftware, {"CANTOREL_FFMPEG=" + script("kill -9 $$")}, 1, "stays as it is", true},
        {mSoftware, {"CANTOREL_MODULES=/no/such"}, 1, ".", false},
        {mSoftware + QStringList{"--microphone", "Nobody's"}, {}, 1, "Nobody's", false},
        {mSoftware + QStringList{"--format", "8"}, {}, 2, "format", false},
        {mSoftware + QStringList{"--folder", "/no/such"}, {}, 2, "folder", false},
        {mSoftware + QStringList{"--folder", "/proc"}, {}, 1, "/proc", false},
        {mSoftware + QStringList{"--source", "tape"}, {}, 2, "tape", false},
        {mSoftware + QStringList{"--seconds", "0"}, {}, 2, "seconds", false},
        {mSoftware + QStringList{"--louder"}, {}, 2, "louder", false},
        {mSoftware + QStringList{"--play", "/no/such"}, {}, 2, "/no/such", false},
        {mSoftware + QStringList{"--play", CANTOREL_CLI}, {}, 1, "cantorel-cli", false},
    };
    for (const auto &[options, environment, status, sentence, kept] : cases) {
        SCOPED_TRACE((options + environment).join(' ').toStdString());
        const auto run = start(options, environment);
        EXPECT_EQ(run->status(), status) << run->error.constData();
        expectOneSentence(run->lastLine(), sentence);
        if (kept) {
            const QString file = run->event("failed")["kept"].toString();
            EXPECT_FALSE(test::decoded(file).empty()) << file.toStdString();
        }
    }
}

TEST_F(RecordProgramTest, ASecondSignalLeavesAConverterThatHangsAndKeepsTheRecording) {
    const auto run =
        start({"--backend", "embedded", "--source", "mic"}, {"CANTOREL_FFMPEG=" + script("exec sleep 100")});
    ASSERT_TRUE(run->begins());
    eventually([] { return false; }, 300); // some sound
    run->signal(SIGINT);
    ASSERT_TRUE(eventually([&] { return run->has("converting"); }));
    run->signal(SIGINT);
    EXPECT_EQ(run->status(), 130);
    const QString file = run->event("started")["file"].toString();
    expectOneSentence(run->lastLine(), file.toUtf8());
    EXPECT_FALSE(test::decoded(file).empty());
}

// A conversion takes little of the processor that somebody else wants.
TEST_F(RecordProgramTest, NoFrameIsLostBesideAConversionWhichStandsBack) {
    QStringList words{"convert", "--folder", QDir::homePath()};
    for (const char *name : {"/one.wav", "/two.wav", "/three.wav"})
        words << QDir::homePath() + name;
    test::writeWav(words[3], test::tone(48000 * 120, 48000));
    ASSERT_TRUE(QFile::copy(words[3], words[4]) && QFile::copy(words[3], words[5]));
    const auto run = start({"--backend", "embedded", "--source", "mic", "--format", "4"});
    ASSERT_TRUE(run->begins());
    QProcess converting;
    converting.start(CANTOREL_CLI, words);
    std::vector<pid_t> coders;
    EXPECT_TRUE(eventually([&] {
        coders = descendantsOf(converting.processId());
        return std::any_of(coders.begin(), coders.end(), [](pid_t id) {
            return test::contents(QStringLiteral("/proc/%1/comm").arg(id)) == "ffmpeg\n";
        });
    }));
    for (const pid_t coder : coders)
        EXPECT_GE(::getpriority(PRIO_PROCESS, static_cast<id_t>(coder)), 10) << coder;
    eventually([] { return false; }, 4000); // both go on
    test::finish(converting);
    run->signal(SIGINT);
    EXPECT_EQ(run->status(), 130);
    const QJsonObject finished = run->event("finished");
    EXPECT_EQ(finished["droppedFrames"].toInt(-1), 0);
    EXPECT_GT(finished["seconds"].toDouble(), 3.5);
}

// On a real server: whatever ends the program, the person's devices are as before, and the sound is there.
TEST_F(RecordProgramTest, SignalsAndCrashesGiveTheDevicesBackAndLoseNothing) {
    const PrivateWorld world;
    ASSERT_TRUE(world.ready());
    const QString sound = QDir::homePath() + "/sound.wav";
    test::writeWav(sound, test::tone(48000 * 30, 48000));
    const auto player = world.start("pw-cat", {"-p", sound});
    for (const int number : {SIGINT, SIGTERM, SIGKILL}) {
        SCOPED_TRACE(number);
        const auto run = start({"--source", "system", "--format", "4"});
        ASSERT_TRUE(run->begins()) << run->error.constData();
        ASSERT_TRUE(world.metadata("default.audio.sink").contains("Tessolar_AudioDevice"));
        eventually([] { return false; }, 2500);
        run->signal(number);
        EXPECT_TRUE(eventually([&] {
            return world.metadata("default.audio.sink").contains("builtin_output")
                   && world.metadata("default.configured.audio.sink").isEmpty();
        }));
        EXPECT_EQ(run->status(), number == SIGKILL ? SIGKILL : 130) << run->error.constData();
        const QString crashed = run->event("started")["file"].toString();
        QString file = run->event("finished")["file"].toString();
        if (number == SIGKILL) {
            const auto next = start({"--source", "mic", "--seconds", "0.3"});
            EXPECT_EQ(next->status(), 0) << next->error.constData();
            file = crashed;
            EXPECT_TRUE(test::packetsOf(test::contents(file))) << "repaired";
        }
        const std::vector<float> samples = test::decoded(file);
        EXPECT_GT(samples.size() / 2, 44100u) << "at most the last second is missing";
        EXPECT_NEAR(20 * std::log10(usualAmplitude(samples) / test::kToneAmplitude), 0, 0.1) << "dB";
    }
    test::finish(*player);
}

TEST_F(RecordProgramTest, WithoutTheVirtualDeviceTheOutputItselfIsRecordedFollowedAndLeftAlone) {
    PrivateWorld::Options options;
    options.virtualDevice = false;
    options.moreSinks = {"headset=Headset"};
    const PrivateWorld world(options);
    ASSERT_TRUE(world.ready());
    const QString sound = QDir::homePath() + "/sound.wav";
    test::writeWav(sound, test::tone(48000 * 60, 48000));
    const auto player = world.start("pw-cat", {"-p", sound});
    const auto isDefault = [&](const char *node) { return world.metadata("default.audio.sink").contains(node); };
    for (const char *source : {"system", "both"}) {
        SCOPED_TRACE(source);
        auto run = start({"--source", source, "--format", "4"});
        ASSERT_TRUE(run->begins()) << run->error.constData();
        EXPECT_TRUE(isDefault("builtin_output") && world.metadata("default.configured.audio.sink").isEmpty());
        QElapsedTimer since;
        since.start();
        world.choose("audio.sink", "headset");
        EXPECT_TRUE(eventually([&] { return isDefault("headset"); }));
        eventually([] { return false; }, 2500);
        const double least = static_cast<double>(since.elapsed()) / 1000 - 0.3;
        run->signal(SIGINT);
        EXPECT_EQ(run->status(), 130) << run->error.constData();
        EXPECT_TRUE(isDefault("headset")) << "as the person has chosen";
        const std::vector<float> samples = test::decoded(run->event("finished")["file"].toString());
        EXPECT_GT(static_cast<double>(samples.size()) / 2 / 44100, least) << "the hole is filled";
        EXPECT_NEAR(20 * std::log10(usualAmplitude(samples) / test::kToneAmplitude), 0, 0.1) << "dB";
        run = start({"--source", source});
        ASSERT_TRUE(run->begins()) << run->error.constData();
        run->signal(SIGKILL);
        run->status();
        for (const char *node : {"cantorel-capture", "com.tessolar.Cantorel.AggregateDevice"})
            EXPECT_TRUE(eventually([&] { return world.idOf(node).isEmpty(); })) << node;
        EXPECT_TRUE(isDefault("headset"));
        world.choose("audio.sink", "");
        world.choose("audio.sink", "builtin_output");
        world.choose("audio.sink", "");
        EXPECT_TRUE(eventually([&] { return isDefault("builtin_output"); }));
    }
    test::finish(*player);
    EXPECT_TRUE(
        world.run(CANTOREL_CLI, {"record", "--source", "system", "--seconds", "0.3", "--folder", mFolder.path()})
            .contains("cantorel-cli driver install"));
}

// A log-out ends everything of a session at once, the guard of the devices first, and nobody reads what is printed.
TEST_F(RecordProgramTest, ALogOutLeavesTheFileWholeAndTheDevicesAsTheyWere) {
    const PrivateWorld world;
    ASSERT_TRUE(world.ready());
    for (const int guardSignal : {SIGTERM, SIGKILL}) {
        const auto run = start({"--source", "system", "--format", "2"});
        ASSERT_TRUE(run->begins()) << run->error.constData();
        run->process.closeReadChannel(QProcess::StandardError);
        const std::vector<pid_t> guards = test::guardsOf(run->process.processId());
        EXPECT_EQ(guards.size(), 1u);
        for (const pid_t guard : guards)
            ::kill(guard, guardSignal);
        run->signal(SIGTERM);
        EXPECT_EQ(run->status(), 130);
        EXPECT_FALSE(test::decoded(run->event("finished")["file"].toString()).empty()) << run->out.constData();
        EXPECT_TRUE(eventually([&] {
            return world.metadata("default.audio.sink").contains("builtin_output")
                   && world.metadata("default.configured.audio.sink").isEmpty();
        }));
    }
}

TEST_F(RecordProgramTest, WhatAKilledProgramAndItsGuardLeaveIsGivenBackAndNamed) {
    const PrivateWorld world;
    ASSERT_TRUE(world.ready());
    const auto run = start({"--source", "system"});
    ASSERT_TRUE(run->begins()) << run->error.constData();
    const std::vector<pid_t> guards = test::guardsOf(run->process.processId());
    ASSERT_EQ(guards.size(), 1u);
    ::kill(guards[0], SIGKILL);
    run->signal(SIGKILL);
    run->status();
    ASSERT_TRUE(world.metadata("default.configured.audio.sink").contains("Tessolar_AudioDevice"));
    EXPECT_TRUE(world.run(CANTOREL_CLI, {"doctor"}).contains("given back now"));
    EXPECT_TRUE(world.metadata("default.audio.sink").contains("builtin_output"));
    EXPECT_EQ(world.metadata("default.configured.audio.sink"), "");
    world.choose("audio.sink", "Tessolar_AudioDevice");
    ASSERT_TRUE(eventually([&] { return world.metadata("default.audio.sink").contains("Tessolar_AudioDevice"); }));
    EXPECT_TRUE(
        world.run(CANTOREL_CLI, {"doctor"}).contains("cantorel-cli devices default output \"Built-in Output\""));
}

} // namespace cantorel
