// A recorder that is left running, and one that is killed: what it has finished is in the list and plays, and nothing
// leaks. bench/soak.sh runs it for ten minutes and thirty kills.

#include "tests/support/Sound.h"
#include "tests/support/StampedSound.h"
#include "tests/world/record/RecordProgram.h"

#include <QDirIterator>
#include <QElapsedTimer>
#include <QJsonArray>

#include <cstdio>
#include <map>
#include <random>

namespace cantorel {
namespace {

using test::eventually;
using test::PrivateWorld;

constexpr double kWavRate = 44100;
constexpr double kMostLost = 1.0;  // seconds, by a kill
constexpr double kMostGrowth = 16; // MiB; the queue of one recording that stayed has 3.7
constexpr int kAnswerSeconds = 30; // for what goes on in the background
const QString kWav = QStringLiteral("4");

int setting(const char *name, int otherwise) {
    bool isNumber = false;
    const int value = qEnvironmentVariableIntValue(name, &isNumber);
    return isNumber ? value : otherwise;
}

void pass(int milliseconds) {
    eventually([] { return false; }, milliseconds);
}

// What a process holds, and the server for all.
struct Held {
    qsizetype descriptors = 0, threads = 0, children = 0, nodes = 0;
    double mebibytes = 0; // resident

    bool isWithin(const Held &other) const {
        return descriptors <= other.descriptors && threads <= other.threads && children <= other.children
               && nodes <= other.nodes;
    }
    void print(const char *when) const {
        std::printf("%-10s %lld descriptors, %lld threads, %lld children, %lld nodes, %.1f MiB\n", when,
                    static_cast<long long>(descriptors), static_cast<long long>(threads),
                    static_cast<long long>(children), static_cast<long long>(nodes), mebibytes);
    }
};

struct SoakTest : test::RecordProgramTest {
    qsizetype nodes() const {
        qsizetype count = 0;
        for (const QJsonValue &object : QJsonDocument::fromJson(world.run("pw-dump", {})).array())
            count += object["type"].toString() == "PipeWire:Interface:Node" ? 1 : 0;
        return count;
    }
    Held heldBy(qint64 process) const {
        const QString place = QString("/proc/%1/").arg(process);
        Held held;
        held.descriptors = QDir(place + "fd").entryList(QDir::Files | QDir::System).size();
        for (const QString &thread : QDir(place + "task").entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            ++held.threads;
            held.children += test::contents(place + "task/" + thread + "/children").count(' ');
        }
        for (const QByteArray &line : test::contents(place + "status").split('\n')) {
            if (line.startsWith("VmRSS:"))
                held.mebibytes = line.mid(6).trimmed().split(' ').first().toDouble() / 1024;
        }
        held.nodes = nodes();
        return held;
    }
    static std::vector<QJsonObject> events(Run &run, const char *name) {
        std::vector<QJsonObject> all;
        (void)run.has(name);
        for (const QByteArray &line : run.out.split('\n')) {
            const QJsonObject object = QJsonDocument::fromJson(line).object();
            if (object["event"].toString() == name)
                all.push_back(object);
        }
        return all;
    }
    // The library's files in their order, and how long each is said to be.
    std::vector<std::pair<QString, QString>> library() const {
        std::vector<std::pair<QString, QString>> items;
        for (const QByteArray &line : world.run(CANTOREL_CLI, {"library", "list", "--json"}).split('\n')) {
            const QJsonObject item = QJsonDocument::fromJson(line).object();
            if (!item.isEmpty())
                items.emplace_back(item["file"].toString(), item["duration"].toString());
        }
        return items;
    }
    static double secondsIn(const QString &file) {
        const double rate = test::probed(file, "stream=sample_rate").toDouble();
        return rate > 0 ? static_cast<double>(test::decoded(file).size()) / 2 / rate : 0;
    }
    // Sound for both sources, until the server ends.
    void play() {
        const QString sound = QDir::homePath() + "/sound.wav";
        if (!QFile::exists(sound))
            test::writeWav(sound, test::tone(48000 * 60, 48000));
        players.push_back(world.start("pw-cat", {"-p", sound}));
        players.push_back(world.feed(sound, "builtin_microphone"));
    }
    void stopPlaying() {
        for (const auto &player : players)
            test::finish(*player);
        players.clear();
    }
    ~SoakTest() override { stopPlaying(); }

    PrivateWorld world;
    std::vector<std::unique_ptr<QProcess>> players;
};

} // namespace

TEST_F(SoakTest, ARecorderThatIsLeftRunningLosesAndKeepsNothing) {
    ASSERT_TRUE(world.ready());
    const double length = setting("CANTOREL_SOAK_SECONDS", 30);
    const qsizetype nodesBefore = nodes();
    const auto run = start({"--source", "both", "--format", kWav, "--split-every", "3"});
    ASSERT_TRUE(run->begins()) << run->error.constData();
    QElapsedTimer time;
    time.start();
    play();
    ASSERT_TRUE(eventually([&] { return events(*run, "finished").size() >= 2; }, 1000 * kAnswerSeconds));
    const qint64 process = run->process.processId();
    const Held early = heldBy(process);
    early.print("early");

    const auto passUntil = [&](double part) {
        pass(std::max(0, static_cast<int>(part * length * 1000 - static_cast<double>(time.elapsed()))));
    };
    passUntil(0.4);
    world.unplug("builtin_microphone");
    EXPECT_TRUE(eventually([&] { return events(*run, "deviceLost").size() == 1; }));
    pass(1000);
    ASSERT_TRUE(world.plugSource("builtin_microphone", "Built-in Microphone"));
    EXPECT_TRUE(eventually([&] { return events(*run, "deviceBack").size() == 1; })) << run->out.constData();
    passUntil(0.6);
    world.killServer();
    EXPECT_TRUE(eventually([&] { return events(*run, "deviceLost").size() == 2; }));
    ASSERT_TRUE(world.startServer());
    EXPECT_TRUE(eventually([&] { return events(*run, "deviceBack").size() == 2; }, 1000 * kAnswerSeconds));
    stopPlaying();
    play();
    passUntil(1.0);

    Held late;
    EXPECT_TRUE(eventually(
        [&] {
            late = heldBy(process);
            late.nodes -= 2; // the players
            return late.isWithin(early);
        },
        1000 * kAnswerSeconds));
    late.print("late");
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_LT(late.mebibytes - early.mebibytes, kMostGrowth);
#endif
    run->signal(SIGINT);
    const double recorded = static_cast<double>(time.elapsed()) / 1000;
    EXPECT_EQ(run->status(), 130) << run->error.constData();
    stopPlaying();
    EXPECT_TRUE(eventually([&] { return nodes() == nodesBefore; })) << nodes();

    EXPECT_FALSE(run->has("failed") || run->has("interrupted")) << run->out.constData();
    const auto finished = events(*run, "finished");
    EXPECT_GE(static_cast<double>(finished.size()), length / 5);
    QStringList files, listed;
    double seconds = 0;
    qint64 dropped = 0;
    for (const QJsonObject &event : finished) {
        files.append(event["file"].toString());
        EXPECT_NEAR(secondsIn(files.last()), event["seconds"].toDouble(), 0.05) << files.last().toStdString();
        seconds += event["seconds"].toDouble();
        dropped += event["droppedFrames"].toInteger();
    }
    for (const auto &[file, duration] : library())
        listed.append(file);
    EXPECT_EQ(listed, files);
    EXPECT_NEAR(seconds, recorded, 0.5) << "what the devices did not bring is silence";
    EXPECT_EQ(QDir(mFolder.path()).entryList(QDir::Files | QDir::Hidden).size(), files.size());
    std::printf("recorded   %.1f s in %zu files of %.1f s, %lld frames dropped\n", recorded, finished.size(), seconds,
                static_cast<long long>(dropped));
}

TEST_F(SoakTest, AKillAtAnyMomentCostsALastSecondAndNothingElse) {
    ASSERT_TRUE(world.ready());
    const int kills = setting("CANTOREL_SOAK_KILLS", 5);
    const int seed = setting("CANTOREL_SOAK_SEED", static_cast<int>(std::random_device()() % 100000));
    std::printf("seed       CANTOREL_SOAK_SEED=%d\n", seed);
    std::mt19937 random(static_cast<unsigned>(seed));
    const auto atMost = [&](int last) { return std::uniform_int_distribution(0, last)(random); };
    play();
    struct Expected {
        double seconds = 0;
        bool wasRunning = false; // its last second may be missing
        bool seen = false;
    };
    std::map<QString, Expected> expected; // by the path without its extension, which changes
    const auto stem = [](const QString &file) { return file.section('.', 0, -2); };
    double farthest = 0;
    const auto check = [&] {
        std::map<QString, QString> listed;
        for (const auto &[file, duration] : library())
            listed[stem(file)] = file;
        for (auto &[name, wanted] : expected) {
            EXPECT_TRUE(listed.count(name)) << name.toStdString() << " is not in the list";
            if (std::exchange(wanted.seen, true) || !listed.count(name))
                continue;
            const double seconds = secondsIn(listed[name]);
            EXPECT_GE(seconds, wanted.seconds - (wanted.wasRunning ? kMostLost : 0.05)) << listed[name].toStdString();
            if (wanted.wasRunning)
                farthest = std::max(farthest, wanted.seconds - seconds);
        }
    };
    const QStringList sources{"system", "mic", "both"};
    for (int kill = 0; kill < kills; ++kill) {
        const QString source = sources[atMost(2)];
        const QString choice = atMost(1) ? QStringLiteral("builtin_output") : QString();
        const int moment = atMost(6000);
        SCOPED_TRACE(testing::Message() << "kill " << kill << ": " << source.toStdString() << " after " << moment
                                        << " ms");
        world.choose("audio.sink", choice);
        const QByteArray before[] = {world.metadata("default.configured.audio.sink"),
                                     world.metadata("default.configured.audio.source")};
        QElapsedTimer time;
        time.start();
        const auto run = start({"--source", source, "--format", kWav, "--split-every", "2"});
        std::size_t begun = 0;
        double begin = 0; // of the running file
        eventually(
            [&] {
                if (const std::size_t now = events(*run, "started").size(); now > begun) {
                    if (begun == 0)
                        check(); // it has looked at what the last one left
                    begun = now;
                    begin = static_cast<double>(time.elapsed()) / 1000;
                }
                return time.elapsed() >= moment;
            },
            1000 * kAnswerSeconds);
        run->signal(SIGKILL);
        const double end = static_cast<double>(time.elapsed()) / 1000;
        EXPECT_EQ(run->status(), SIGKILL) << run->error.constData();
        // The running file is the last that was begun and not closed; what was closed is whole.
        const auto started = events(*run, "started"), closed = events(*run, "converting");
        for (const QJsonObject &event : closed)
            expected[stem(event["file"].toString())].seconds = 1;
        for (const QJsonObject &event : events(*run, "finished"))
            expected[stem(event["file"].toString())].seconds = event["seconds"].toDouble();
        if (started.size() > closed.size() && begun == started.size() && end - begin > kMostLost)
            expected[stem(started.back()["file"].toString())] = {end - begin, true};
        EXPECT_TRUE(eventually([&] {
            return world.metadata("default.configured.audio.sink") == before[0]
                   && world.metadata("default.configured.audio.source") == before[1];
        })) << world.metadata("default.configured.audio.sink").constData();
    }
    const auto last = start({"--source", "mic", "--format", kWav, "--seconds", "0.3"});
    EXPECT_EQ(last->status(), 0) << last->error.constData();
    check();
    std::printf("kills      %d, %zu files, at most %.2f s of a running one missing\n", kills, expected.size(),
                farthest);
}

} // namespace cantorel
