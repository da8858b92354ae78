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

// What was recorded until then is rescued to where recordings go without that folder.
TEST_F(FaultsTest, AFolderThatVanishesIsToldAtOnceAndCostsNothing) {
    const auto run = start({"--backend", "embedded", "--source", "mic", "--format", "4"});
    ASSERT_TRUE(run->begins());
    eventually([] { return false; }, 1500); // some sound
    QDir(mFolder.path()).removeRecursively();
    EXPECT_EQ(run->status(), 1) << "nobody has to stop it";
    expectOneSentence(run->lastLine(), "was removed");
    EXPECT_FALSE(run->has("failed"));
    const QString file = run->event("finished")["file"].toString();
    EXPECT_FALSE(file.isEmpty() || file.startsWith(mFolder.path())) << file.toStdString();
    EXPECT_GT(framesOf(run->event("finished"), "file"), 48000u) << "the whole of it";
    QProcess library;
    library.start(CANTOREL_CLI, {"library", "list", "--json"});
    library.waitForFinished(15000);
    EXPECT_TRUE(library.readAllStandardOutput().contains(file.toUtf8()));
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
    ASSERT_TRUE(world.startServer());
    EXPECT_TRUE(eventually([&] { return run->has("deviceBack"); })) << run->out.constData();
    eventually([] { return false; }, 300);
    run->signal(SIGINT);
    EXPECT_EQ(run->status(), 130);
    EXPECT_GT(framesOf(run->event("finished"), "file"), 24000u) << "the hole is filled";
}

// Two devices of one name are told apart, and each name records its own.
TEST_F(FaultsTest, EqualNamesAreToldApart) {
    PrivateWorld::Options options;
    options.moreSinks = {"twin=Twin", "usb_a=USB Headset", "usb_b=USB Headset"};
    options.moreSources = {"twin_mic=Twin", "usb_a_mic=USB Headset", "usb_b_mic=USB Headset"};
    const PrivateWorld world(options);
    ASSERT_TRUE(world.ready());
    const QString sound = QDir::homePath() + "/sound.wav";
    test::writeWav(sound, test::tone(48000 * 20, 48000));
    const QJsonObject devices = QJsonDocument::fromJson(world.run(CANTOREL_CLI, {"devices", "--json"})).object();
    QSet<QString> outputs;
    for (const QJsonValue &name : devices["outputs"].toArray())
        outputs.insert(name.toString());
    EXPECT_EQ(outputs, (QSet<QString>{"Built-in Output", "Twin", "USB Headset", "USB Headset (2)"}));
    const struct {
        const char *name, *node;
    } cases[] = {
        {"Twin (Input)", "twin_mic"}, {"USB Headset (Input)", "usb_a_mic"}, {"USB Headset (Input) (2)", "usb_b_mic"}};
    for (const auto &[name, node] : cases) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(devices["inputs"].toArray().contains(QString::fromUtf8(name)));
        const auto player = world.feed(sound, node);
        const auto run = start({"--source", "mic", "--microphone", name, "--format", "2", "--seconds", "0.5"});
        EXPECT_EQ(run->status(), 0) << run->error.constData();
        EXPECT_EQ(run->event("started")["device"].toString(), name);
        const std::vector<float> samples = test::decoded(run->event("finished")["file"].toString());
        test::finish(*player);
        ASSERT_FALSE(samples.empty()) << run->error.constData();
        EXPECT_GT(*std::max_element(samples.begin(), samples.end()), 0.05f) << "the sound of another device";
    }
    EXPECT_EQ(world.metadata("default.configured.audio.source"), "");
}

// A machine with nothing but the virtual device: system sound is recorded, unheard; a microphone is asked for.
TEST_F(FaultsTest, OnlyTheVirtualDeviceIsEnoughForSystemSound) {
    PrivateWorld::Options options;
    options.output = options.microphone = false;
    const PrivateWorld world(options);
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

// The device that both sources are joined to is made once, without a word to the person.
TEST_F(FaultsTest, BothSourcesAgainAndSilence) {
    const PrivateWorld world;
    ASSERT_TRUE(world.ready());
    for (int i = 0; i < 2; ++i) {
        const auto run =
            start({"--source", "both", "--seconds", "0.3", "--format", "4"}, {"DBUS_SESSION_BUS_ADDRESS="});
        EXPECT_EQ(run->status(), 0) << run->error.constData();
        EXPECT_FALSE(run->error.contains("[No]") || run->error.contains("?")) << run->error.constData();
    }
    // Nothing plays, and the microphone is turned down: the device and the likely cause are named once.
    world.run(CANTOREL_CLI, {"devices", "volume", "Built-in Microphone", "0"});
    const auto system = start({"--source", "system", "--seconds", "4.5"});
    const QString other = mFolder.path() + "/other"; // with a state of its own, so that both may record at once
    QDir().mkpath(other);
    const auto microphone =
        start({"--source", "mic", "--seconds", "4.5", "--folder", other}, {"XDG_STATE_HOME=" + other});
    const struct {
        Run &run;
        const char *device, *cause;
    } cases[] = {{*system, "Built-in Output", "nothing plays"}, {*microphone, "Built-in Microphone", "muted"}};
    for (const auto &[run, device, cause] : cases) {
        EXPECT_EQ(run.status(), 0) << run.error.constData();
        const QString sentence = run.event("silent")["cause"].toString();
        EXPECT_TRUE(sentence.contains(device) && sentence.contains(cause)) << sentence.toStdString();
        EXPECT_EQ(run.out.count("\"silent\""), 1);
    }
}

// Every way to be without sound has its sentence, in doctor and in record.
TEST_F(FaultsTest, WithoutASoundServerTheCauseIsNamed) {
    struct Place {
        const char *name;
        bool server, pulse;
        const char *sentence;
    };
    const Place places[] = {{"none", false, false, "No PipeWire sound server is running"},
                            {"silent", true, false, "install the package wireplumber"},
                            {"pulse", false, true, "PulseAudio carries the sound"},
                            {"beside", true, true, "PulseAudio carries the sound"},
                            {"", false, false, "XDG_RUNTIME_DIR is not set"}};
    std::vector<std::unique_ptr<QProcess>> servers, doctors;
    std::vector<std::unique_ptr<Run>> runs;
    for (const Place &place : places) {
        auto environment = QProcessEnvironment::systemEnvironment();
        const QString folder = QDir::homePath() + "/" + place.name;
        QDir().mkpath(folder + "/pulse");
        environment.insert("XDG_RUNTIME_DIR", *place.name ? folder : QString());
        if (place.pulse)
            test::store(folder + "/pulse/native", {});
        if (place.server) {
            servers.push_back(std::make_unique<QProcess>());
            servers.back()->setProcessEnvironment(environment);
            servers.back()->start("pipewire", QStringList());
            ASSERT_TRUE(eventually([&] { return QFile::exists(folder + "/pipewire-0"); }));
        }
        doctors.push_back(std::make_unique<QProcess>());
        doctors.back()->setProcessEnvironment(environment);
        doctors.back()->start(CANTOREL_CLI, {"doctor"});
        runs.push_back(start({"--source", "system"}, {"XDG_RUNTIME_DIR=" + environment.value("XDG_RUNTIME_DIR")}));
    }
    for (std::size_t i = 0; i < std::size(places); ++i) {
        SCOPED_TRACE(places[i].name);
        EXPECT_EQ(runs[i]->status(), 1);
        expectOneSentence(runs[i]->lastLine(), places[i].sentence);
        doctors[i]->waitForFinished(30000);
        EXPECT_EQ(doctors[i]->exitCode(), 1);
        EXPECT_TRUE(doctors[i]->readAllStandardOutput().contains(places[i].sentence));
        expectOneSentence(QString::fromUtf8(doctors[i]->readAllStandardError()).trimmed().section('\n', -1), "FAILED");
    }
    for (const auto &server : servers)
        test::finish(*server);
}

} // namespace cantorel
