// What goes wrong under a running recording: disks, folders, devices, servers. Each ends in one sentence and the right
// exit status, and what was recorded is there.

#include "tests/support/Sound.h"
#include "tests/support/StampedSound.h"
#include "tests/world/record/RecordProgram.h"

#include <QJsonArray>
#include <QProcess>

namespace cantorel {
namespace {

using test::eventually;
using test::expectOneSentence;
using test::PrivateWorld;

struct FaultsTest : test::RecordProgramTest {
    // The frames of the file that an event names.
    static std::size_t framesOf(const QJsonObject &event, const char *key) {
        return test::decoded(event[key].toString()).size() / 2;
    }
};

} // namespace

// The folder is a small disk of the test's own; what it holds at the end is copied out.
TEST_F(FaultsTest, AFullDiskCostsNothingThatWasRecorded) {
    if (QProcess::execute("unshare", {"-Urm", "mount", "-t", "tmpfs", "none", "/mnt"}) != 0)
        GTEST_SKIP() << "this machine gives no namespace to mount a small disk in";
    const QTemporaryDir rescued;
    const QString fill = "dd if=/dev/zero of='" + mFolder.path() + "/fill' bs=4k 2>/dev/null";
    const struct {
        const char *when;
        QString meanwhile, converter, options;
        const char *sentence;
    } cases[] = {
        {"recording",
         "{ until ls '" + mFolder.path() + "'/*.m4a >/dev/null 2>&1; do sleep 0.05; done; sleep 1.6; " + fill + "; } &",
         {},
         "8",
         "room"},
        {"converting", {}, script((fill + "; exec ffmpeg \"$@\"").toUtf8()), "1.5", "room"},
    };
    for (const auto &[when, meanwhile, converter, seconds, sentence] : cases) {
        SCOPED_TRACE(when);
        mWrapper = {"unshare",
                    "-Urm",
                    "sh",
                    "-c",
                    "mount -t tmpfs -o size=64m none '" + mFolder.path() + "' || exit 99\n" + meanwhile
                        + "\n\"$@\"\nstatus=$?\ncp '" + mFolder.path() + "'/*.m4a '" + rescued.path()
                        + "'\nexit $status",
                    "sh"};
        const auto run = start({"--backend", "embedded", "--source", "mic", "--format", "4", "--seconds", seconds},
                               converter.isEmpty() ? QStringList() : QStringList{"CANTOREL_FFMPEG=" + converter});
        EXPECT_EQ(run->status(), 1);
        expectOneSentence(run->lastLine(), sentence);
        const QJsonObject failed = run->event("failed");
        const QString kept = failed["kept"].toString();
        ASSERT_TRUE(kept.startsWith(mFolder.path())) << run->out.constData() << run->error.constData();
        const QString file = rescued.path() + "/" + QFileInfo(kept).fileName();
        EXPECT_GT(test::decoded(file).size() / 2, 24000u) << when; // the last second may be missing
        QFile::remove(file);
    }
}

// Only the M4A that the conversion reads is gone then; there is nothing to be rescued.
TEST_F(FaultsTest, AFolderThatVanishesDuringTheConversionIsTold) {
    const QString remover = script(("rm -r '" + mFolder.path() + "'; exit 1").toUtf8());
    const auto run =
        start({"--backend", "embedded", "--source", "mic", "--seconds", "0.3"}, {"CANTOREL_FFMPEG=" + remover});
    EXPECT_EQ(run->status(), 1);
    expectOneSentence(run->lastLine(), "was removed");
    EXPECT_TRUE(run->event("failed")["kept"].toString().isEmpty());
}

// Who recorded one device goes on with that one or with nothing, and is told; the person's devices are as before.
TEST_F(FaultsTest, DevicesAndServersThatGoAreToldAndWhatWasHeardIsKept) {
    PrivateWorld world;
    ASSERT_TRUE(world.ready());
    enum class Fault { Unplugged, ComesBack, ServerDies };
    const struct {
        const char *source, *node;
        Fault fault;
    } cases[] = {
        {"mic", "builtin_microphone", Fault::ComesBack},      {"mic", "builtin_microphone", Fault::Unplugged},
        {"system", "Tessolar_AudioDevice", Fault::ComesBack}, {"system", "Tessolar_AudioDevice", Fault::Unplugged},
        {"system", "builtin_output", Fault::ComesBack},       {"system", "Tessolar_AudioDevice", Fault::ServerDies},
        {"both", "builtin_microphone", Fault::ServerDies}};
    for (const auto &[source, node, fault] : cases) {
        SCOPED_TRACE(std::string(source) + " " + node + (fault == Fault::ServerDies ? " server" : ""));
        const bool system = QByteArray(node) != "builtin_microphone";
        const bool heard = QByteArray(node) == "builtin_output"; // not what is recorded
        const auto run = start({"--source", source, "--format", "2"});
        ASSERT_TRUE(run->begins()) << run->error.constData();
        eventually([] { return false; }, 300); // some sound
        if (fault == Fault::ServerDies)
            world.killServer();
        else
            world.unplug(node);
        if (!heard) {
            EXPECT_TRUE(eventually([&] { return run->has("deviceLost"); }));
        }
        if (fault == Fault::ComesBack) {
            ASSERT_TRUE(system ? world.plugSink(node, heard ? "Built-in Output" : node)
                               : world.plugSource(node, "Built-in Microphone"));
            if (!heard) {
                EXPECT_TRUE(eventually([&] { return run->has("deviceBack"); }));
            }
            eventually([] { return false; }, 300);
        }
        run->signal(SIGINT);
        EXPECT_EQ(run->status(), 130) << run->error.constData();
        EXPECT_GT(framesOf(run->event("finished"), "file"), 4800u) << run->out.constData();
        if (fault == Fault::ServerDies) {
            ASSERT_TRUE(world.startServer());
        } else if (fault == Fault::Unplugged) {
            ASSERT_TRUE(system ? world.plugSink(node, node) : world.plugSource(node, "Built-in Microphone"));
        }
        EXPECT_TRUE(eventually([&] { return world.metadata("default.configured.audio.sink").isEmpty(); }))
            << world.metadata("default.configured.audio.sink").constData();
    }
}

// The session manager takes its links with it, and nobody says that a stream has ended.
TEST_F(FaultsTest, ARecordingWithoutLinksIsToldAndPickedUpAgain) {
    PrivateWorld world;
    ASSERT_TRUE(world.ready());
    const auto run = start({"--source", "mic", "--format", "2"});
    ASSERT_TRUE(run->begins()) << run->error.constData();
    world.killSessionManager();
    EXPECT_TRUE(eventually([&] { return run->has("deviceLost"); }));
    world.killServer(); // A session manager alone does not link what it has not made itself.
    eventually([] { return false; }, 600);
    ASSERT_TRUE(world.startServer());
    EXPECT_TRUE(eventually([&] { return run->has("deviceBack"); })) << run->out.constData();
    eventually([] { return false; }, 200);
    run->signal(SIGINT);
    EXPECT_EQ(run->status(), 130);
    EXPECT_GT(framesOf(run->event("finished"), "file"), 30000u) << "the hole is filled";
}

// A machine with nothing but the virtual device: system sound is recorded, unheard; a microphone is asked for.
TEST_F(FaultsTest, OnlyTheVirtualDeviceIsEnoughForSystemSound) {
    const PrivateWorld world({.output = false, .microphone = false});
    ASSERT_TRUE(world.ready());
    const QJsonObject devices = QJsonDocument::fromJson(world.run(CANTOREL_CLI, {"devices", "--json"})).object();
    EXPECT_EQ(devices["virtual"].toString(), "Tessolar_AudioDevice");
    EXPECT_EQ(devices["inputs"].toArray().size() + devices["outputs"].toArray().size(), 0);
    EXPECT_TRUE(devices["defaultInput"].isNull());
    for (const char *source : {"mic", "both"}) {
        const auto run = start({"--source", source, "--seconds", "0.3"});
        EXPECT_EQ(run->status(), 1);
        expectOneSentence(run->lastLine(), "no microphone");
    }
    const QString sound = QDir::homePath() + "/sound.wav";
    test::writeWav(sound, test::tone(48000 * 20, 48000));
    const auto player = world.start("pw-cat", {"-p", sound});
    const auto run = start({"--source", "system", "--seconds", "0.7", "--format", "2"});
    EXPECT_EQ(run->status(), 0) << run->error.constData();
    const std::vector<float> samples = test::decoded(run->event("finished")["file"].toString());
    ASSERT_FALSE(samples.empty());
    EXPECT_GT(*std::max_element(samples.begin(), samples.end()), 0.05f);
    EXPECT_EQ(world.metadata("default.configured.audio.sink"), "");
    test::finish(*player);
}

TEST_F(FaultsTest, WithoutASoundServerTheCauseIsNamed) {
    const char *const sentence = "No PipeWire sound server is running";
    const auto run = start({"--source", "system"});
    EXPECT_EQ(run->status(), 1);
    expectOneSentence(run->lastLine(), sentence);
    QProcess doctor;
    doctor.start(CANTOREL_CLI, {"doctor"});
    doctor.waitForFinished(30000);
    EXPECT_EQ(doctor.exitCode(), 1);
    EXPECT_TRUE(doctor.readAllStandardOutput().contains(sentence));
    expectOneSentence(QString::fromUtf8(doctor.readAllStandardError()).trimmed().section('\n', -1), "FAILED");
}

} // namespace cantorel
