// The editor from the command line: what it writes is decoded by ffmpeg and compared with the samples that it should
// be.

#include "editor/operations/ZQAudioEditor.h"
#include "platform/foundation/ChildProcess.h"
#include "platform/media/asset/OpenAsset.h"
#include "tests/support/Sound.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <csignal>
#include <random>

namespace cantorel {
namespace {

using foundation::ChildProcess;
using test::contents;
using test::decoded;
using test::probed;
using Samples = std::vector<float>;

constexpr int kRate = 44100;
std::size_t frame(std::int64_t milliseconds) { return static_cast<std::size_t>((milliseconds * kRate + 500) / 1000); }
Samples cut(const Samples &samples, std::size_t from, std::size_t to) {
    return {samples.begin() + static_cast<std::ptrdiff_t>(2 * from),
            samples.begin() + static_cast<std::ptrdiff_t>(2 * to)};
}
Samples operator+(Samples left, const Samples &right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}
Samples silence(std::size_t frames) { return Samples(2 * frames, 0.0F); }
// The farthest that two sounds are from each other; 9 where their lengths differ.
float farthest(const Samples &left, const Samples &right) {
    float most = left.size() == right.size() ? 0 : 9;
    for (std::size_t i = 0; i < std::min(left.size(), right.size()); ++i)
        most = std::max(most, std::abs(left[i] - right[i]));
    return most;
}

class EditCommandTest : public testing::Test {
protected:
    // Noise of 16 bits, stereo, coded by those options.
    QString sound(const QString &name, double seconds, const QStringList &options = {}, unsigned seed = 1) const {
        std::mt19937 random(seed);
        QByteArray raw;
        std::int16_t value = 0;
        for (int i = 0; i < static_cast<int>(seconds * kRate) * 2; ++i) {
            value = static_cast<std::int16_t>(value / 2 + static_cast<int>(random() % 8192) - 4096);
            raw.append(reinterpret_cast<const char *>(&value), 2);
        }
        test::store(path("raw"), raw);
        const auto made = ChildProcess::run(
            {"ffmpeg",
             QStringList{"-nostdin", "-y", "-f", "s16le", "-ar", "44100", "-ac", "2", "-i", path("raw")} + options
                 + QStringList{"file:" + path(name)},
             {},
             {}});
        EXPECT_TRUE(made && made.value().ending.succeeded()) << made.value().output.toStdString();
        return path(name);
    }
    struct Ran {
        int status;
        QStringList outputs;
        std::string lastLine;
    };
    Ran edit(const QStringList &arguments, const QStringList &environment = {}) const {
        QProcess process;
        process.setEnvironment(QProcess::systemEnvironment() + environment);
        process.start(CANTOREL_CLI, QStringList{"--json", "edit"} + arguments);
        EXPECT_TRUE(process.waitForFinished(100000));
        return ran(process);
    }
    static Ran ran(QProcess &process) {
        Ran ran{process.exitCode(), {}, {}};
        const auto object = QJsonDocument::fromJson(process.readAllStandardOutput()).object();
        for (const auto output : object["outputs"].toArray())
            ran.outputs << output.toString();
        ran.lastLine = process.readAllStandardError().trimmed().split('\n').last().toStdString();
        return ran;
    }
    QString program(const QByteArray &script) const {
        test::storeProgram(path("program"), "#!/bin/sh\n" + script);
        return "CANTOREL_FFMPEG=" + path("program");
    }
    QString path(const QString &name) const { return mFolder.filePath(name); }
    QString result(const QString &name) const { return mResults.filePath(name); }
    QStringList results() const { return QDir(mResults.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }
    void clear() const {
        for (const QString &name : results())
            QFile::remove(result(name));
    }

    QTemporaryDir mFolder, mResults;
};

TEST_F(EditCommandTest, JoinedSelectionsStandAMillisecondApart) {
    const QString source = sound("s.wav", 6);
    const Samples whole = decoded(source);
    const Samples wanted = cut(whole, frame(1000), frame(2000)) + silence(frame(1001) - frame(1000))
                           + cut(whole, frame(5000), frame(5000) + frame(1501) - frame(1001));
    const QStringList selections{source, "--select", "1-2", "--select", "5.0-5.5", "--join"};
    for (const char *format : {"wav", "flac"}) {
        const Ran ran = edit(selections + QStringList{"--format", format, "--output", result("a.b")});
        EXPECT_EQ(ran.status, 0) << ran.lastLine;
        EXPECT_EQ(ran.outputs, QStringList{result("a.b.") + format});
        EXPECT_EQ(farthest(decoded(ran.outputs.value(0)), wanted), 0) << format;
    }
    for (const char *format : {"mp3", "wma", "aac"}) {
        const Ran ran = edit(selections + QStringList{"--format", format, "--output", result("c.wav")});
        EXPECT_EQ(ran.status, 0) << ran.lastLine;
        const QString extension = QString(format) == "aac" ? "m4a" : format;
        EXPECT_EQ(ran.outputs, QStringList{result("c." + extension)});
        EXPECT_NEAR(static_cast<double>(decoded(ran.outputs.value(0)).size()) / 2, static_cast<double>(frame(1501)),
                    4096);
    }
    EXPECT_EQ(probed(result("c.m4a"), "stream=duration_ts").toULongLong(), frame(1501));
    EXPECT_EQ(results(), (QStringList{"a.b.flac", "a.b.wav", "c.m4a", "c.mp3", "c.wma"}));
    EXPECT_EQ(decoded(source), whole);
}

TEST_F(EditCommandTest, PartsAreNumberedOnAndBeginAndEndToTheFrame) {
    const QString source = sound("s.flac", 5);
    const Samples whole = decoded(source);
    test::store(result("p.wav"), "somebody's");
    const QStringList parts{source,        "--select", "0.0007-0.0019", "--select",
                            "0.333-1.001", "--select", "4-99",          "--parts"};
    const Ran ran = edit(parts + QStringList{"--format", "wav", "--output", result("p")});
    EXPECT_EQ(ran.status, 0) << ran.lastLine;
    EXPECT_EQ(ran.outputs, (QStringList{result("p-2.wav"), result("p-3.wav"), result("p-4.wav")}));
    EXPECT_EQ(decoded(result("p-2.wav")), cut(whole, 0, frame(1)));
    EXPECT_EQ(decoded(result("p-3.wav")), cut(whole, frame(333), frame(1001)));
    EXPECT_EQ(decoded(result("p-4.wav")), cut(whole, frame(4000), 5 * kRate));
    EXPECT_EQ(contents(result("p.wav")), "somebody's");
    const Ran coded = edit(parts + QStringList{"--format", "aac", "--output", result("p")});
    EXPECT_EQ(coded.outputs, (QStringList{result("p.m4a"), result("p-2.m4a"), result("p-3.m4a")}));
    EXPECT_EQ(probed(result("p-2.m4a"), "stream=duration_ts").toULongLong(), frame(1001) - frame(333));
}

TEST_F(EditCommandTest, PartsHaveTheNamesAndTitlesThatTheyAreGiven) {
    const QString source = sound("s.mp3", 2, {"-metadata", "title=Old"});
    test::store(result("Intro.mp3"), "somebody's");
    const QStringList parts{source,        "--select", "0-0.5",       "--select",  "0.5-1",       "--select",
                            "1-2",         "--parts",  "--output",    result("p"), "--part-name", "Intro",
                            "--part-name", "",         "--part-name", "A.B"};
    for (const auto &[format, outputs] : {std::pair("mp3", QStringList{"Intro-2.mp3", "p.mp3", "A.B.mp3"}),
                                          {"aac", {"Intro.m4a", "p.m4a", "A.B.m4a"}}}) {
        const Ran ran = edit(parts + QStringList{"--format", format, "--part-title", "", "--part-title", "New"});
        ASSERT_EQ(ran.status, 0) << ran.lastLine;
        QStringList names, titles;
        for (const QString &path : ran.outputs) {
            names << QFileInfo(path).fileName();
            titles << probed(path, "format_tags=title").trimmed();
        }
        EXPECT_EQ(names, outputs);
        EXPECT_EQ(titles, (QStringList{"Old", "New", "Old"})) << format;
    }
    for (const char *refused : {"Intro", "a/b", ".hidden", "Intro.mp3"})
        EXPECT_EQ(edit(parts.first(parts.size() - 1) + QStringList{refused}).status, 2) << refused;
    EXPECT_EQ(edit(parts + QStringList{"--part-name", "fourth"}).status, 2);
}

TEST_F(EditCommandTest, OperationsAreDoneOneAfterTheOther) {
    const QString main = sound("main.wav", 3), other = sound("o@1.wav", 1.5, {}, 2);
    const Samples a = decoded(main), b = decoded(other);
    const Ran ran =
        edit({main, "--op", "silence@1:0.5", "--op", "insert=" + other + "@0.25", "--op", "append=" + other, "--op",
              "overwrite=" + other + "@2", "--op", "mix=" + other + "@0", "--format", "wav", "--output", result("r")});
    ASSERT_EQ(ran.status, 0) << ran.lastLine;
    Samples wanted = cut(a, 0, frame(1000)) + silence(frame(500)) + cut(a, frame(1000), 3 * kRate);
    wanted = cut(wanted, 0, frame(250)) + b + cut(wanted, frame(250), wanted.size() / 2) + b;
    wanted = cut(wanted, 0, frame(2000)) + b + cut(wanted, frame(3000), wanted.size() / 2);
    for (std::size_t i = 0; i < b.size(); ++i)
        wanted[i] = std::clamp(wanted[i] + b[i], -1.0F, 32767 / 32768.0F);
    EXPECT_EQ(farthest(decoded(ran.outputs.value(0)), wanted), 0);
}

// Coders put frames in front and behind, which are not there for the editor, as they are not for ffmpeg.
TEST_F(EditCommandTest, SoundOfEveryKindIsCutWhereItLies) {
    for (const auto &[name, options] : std::initializer_list<std::pair<const char *, QStringList>>{
             {"s.mp3", {"-b:a", "128k"}}, {"s.m4a", {"-aac_pns", "0"}}, {"s.ogg", {}}, {"s.wma", {}}, {"s.aiff", {}}}) {
        const QString source = sound(name, 4, options);
        const Ran ran = edit({source, "--select", "1.5-2.5", "--format", "wav", "--output", result(name)});
        ASSERT_EQ(ran.status, 0) << ran.lastLine;
        EXPECT_LT(farthest(decoded(ran.outputs.value(0)), cut(decoded(source), frame(1500), frame(2500))), 2 / 32768.0)
            << name;
    }
    const QString mono = sound("mono.wav", 2, {"-ac", "1", "-ar", "22050"});
    const Ran ran = edit({mono, "--format", "flac", "--output", result("mono")});
    EXPECT_EQ(probed(ran.outputs.value(0), "stream=sample_rate,channels"), "44100,2");
    EXPECT_EQ(decoded(ran.outputs.value(0)).size(), 4U * kRate);
}

TEST_F(EditCommandTest, TagsComeFromTheFileAndFromTheOptions) {
    ASSERT_EQ(QProcess::execute("ffmpeg", {"-v", "quiet", "-f", "lavfi", "-i", "testsrc=s=64x48:d=0.1", "-frames:v",
                                           "1", path("p.png")}),
              0);
    const QString source = sound("s.mp3", 1, {"-metadata", "title=Old", "-metadata", "artist=Somebody"});
    const Ran mp3 =
        edit({source, "--title", "New", "--year", "2010", "--cover", path("p.png"), "--output", result("t")});
    ASSERT_EQ(mp3.status, 0) << mp3.lastLine;
    const Ran aac = edit({mp3.outputs.value(0), "--genre", "Jazz", "--format", "aac", "--output", result("t")});
    const Ran flac = edit({source, "--title", "New", "--format", "flac", "--output", result("t")});
    const auto read = ChildProcess::run(
        {"/usr/bin/python3",
         {"-c",
          "import sys, mutagen\nfrom mutagen.id3 import ID3\nfrom mutagen.mp4 import MP4\n"
          "i = ID3(sys.argv[1])\nm = MP4(sys.argv[2]).tags\n"
          "print(i['TIT2'], i['TPE1'], i['TDRC'], bytes(i.getall('APIC')[0].data) == bytes(m['covr'][0]))\n"
          "print(m['\\xa9nam'], m['\\xa9ART'], m['\\xa9day'], m['\\xa9gen'], len(m['covr']))\n"
          "print(mutagen.File(sys.argv[3]).tags.get('title'))",
          mp3.outputs.value(0), aac.outputs.value(0), flac.outputs.value(0)},
         {},
         {}});
    EXPECT_EQ(read.value().output.trimmed().toStdString(),
              "New Somebody 2010 True\n['New'] ['Somebody'] ['2010'] ['Jazz'] 1\nNone");
}

TEST_F(EditCommandTest, WhatIsWrongIsRefusedBeforeAnythingIsWritten) {
    const QString source = sound("s.wav", 2);
    test::store(path("text.mp3"), "no sound");
    const QString output = result("x");
    const struct {
        QStringList arguments;
        int status;
        const char *says;
    } cases[] = {
        {{source, "--select", "1-1", "--output", output}, 2, "before its end"},
        {{source, "--select", "0-1", "--select", "1.5-1", "--output", output}, 2, "before its end"},
        {{source, "--select", "2-3", "--output", output}, 2, "ends at 2 s"},
        {{source, "--select", "1", "--output", output}, 2, "no selection"},
        {{source, "--op", "reverse", "--output", output}, 2, "no operation"},
        {{source, "--output", result("none/x")}, 2, "no folder"},
        {{source, "--op", "silence@1:0", "--output", output}, 1, "A silence is"},
        {{source, "--op", "silence@1:400000", "--output", output}, 1, "A silence is"},
        {{source, "--op", "overwrite=" + source + "@2.001", "--output", output}, 1, "behind the end"},
        {{source, "--op", "append=" + path("text.mp3"), "--output", output}, 1, "no sound file"},
        {{path("none.wav"), "--output", output}, 1, "none.wav"},
    };
    for (const auto &[arguments, status, says] : cases) {
        const Ran ran = edit(arguments);
        EXPECT_EQ(ran.status, status) << says;
        EXPECT_NE(ran.lastLine.find(says), std::string::npos) << ran.lastLine;
        EXPECT_EQ(results(), QStringList());
    }
}

TEST_F(EditCommandTest, NobodysFileIsReplacedOrRemoved) {
    const QString source = sound("s.wav", 1);
    // Somebody is quicker with the name.
    Ran ran = edit({source, "--format", "flac", "--output", result("a")},
                   {program("echo theirs > '" + result("a.flac").toUtf8() + "'\nexec ffmpeg \"$@\"")});
    EXPECT_EQ(ran.outputs, QStringList{result("a-2.flac")}) << ran.lastLine;
    EXPECT_EQ(contents(result("a.flac")), "theirs\n");
    clear();
    // Somebody puts another file in the place of the exported one.
    ran = edit({source, "--format", "flac", "--output", result("b")},
               {program("ffmpeg \"$@\"; cp '" + source.toUtf8() + "' '" + result("new").toUtf8() + "' && mv '"
                        + result("new").toUtf8() + "' '" + result("b.m4a").toUtf8() + "'")});
    EXPECT_EQ(ran.status, 0) << ran.lastLine;
    EXPECT_EQ(contents(result("b.m4a")), contents(source));
    clear();
    // What can't be converted is kept, and said.
    ran = edit({source, "--format", "mp3", "--output", result("c")}, {program("exit 1")});
    EXPECT_EQ(ran.status, 1);
    EXPECT_NE(ran.lastLine.find("is kept in \"c.m4a\""), std::string::npos) << ran.lastLine;
    EXPECT_EQ(decoded(result("c.m4a")), decoded(source));
    EXPECT_EQ(results(), QStringList{"c.m4a"});
}

TEST_F(EditCommandTest, ASignalLeavesNothingBehind) {
    QProcess process;
    process.setEnvironment(QProcess::systemEnvironment()
                           + QStringList{program("touch '" + path("began").toUtf8() + "'\nexec sleep 100")});
    process.start(CANTOREL_CLI, {"--json", "edit", sound("s.wav", 1), "--select", "0-0.5", "--select", "0.5-1",
                                 "--parts", "--output", result("a")});
    for (QElapsedTimer waiting; !QFileInfo::exists(path("began")); QThread::msleep(20)) {
        if (!waiting.isValid())
            waiting.start();
        ASSERT_LT(waiting.elapsed(), 60000);
    }
    EXPECT_EQ(results().filter("a").size(), 4); // two exported, two being converted
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    ASSERT_TRUE(process.waitForFinished(60000));
    EXPECT_EQ(ran(process).status, 130);
    EXPECT_EQ(results(), QStringList());
}

TEST_F(EditCommandTest, AKillLeavesNoHalfFileUnderAName) {
    const QString source = sound("s.wav", 30), other = sound("o.wav", 30, {}, 2);
    const QByteArray before = contents(source);
    const struct {
        QStringList arguments;
        int seconds; // of each file
    } cases[] = {{{"--select", "0-15", "--select", "15-30", "--parts", "--format", "aac"}, 15},
                 {{"--op", "mix=" + other + "@0", "--format", "flac"}, 30}};
    int killed = 0;
    for (const auto &[arguments, seconds] : cases) {
        const QStringList all = QStringList{"--json", "edit", source, "--output", result("a")} + arguments;
        for (const qint64 bytes : {0, 100'000, 2'000'000, 7'000'000}) { // that are written by then
            QProcess process;
            process.start(CANTOREL_CLI, all);
            const auto written = [this] {
                qint64 sum = 0;
                for (const QFileInfo &file : QDir(mResults.path()).entryInfoList(QDir::Files | QDir::Hidden))
                    sum += file.size();
                return sum;
            };
            ASSERT_TRUE(process.waitForStarted());
            while (written() <= bytes && !process.waitForFinished(1))
                ;
            process.kill();
            process.waitForFinished();
            killed += process.exitStatus() == QProcess::CrashExit;
            for (const QString &name : QDir(mResults.path()).entryList(QDir::Files))
                EXPECT_NEAR(static_cast<double>(decoded(result(name)).size()) / 2, seconds * kRate, 4096)
                    << name.toStdString() << " at " << bytes;
            EXPECT_EQ(contents(source), before);
            QFile::remove(result("a.m4a"));
        }
        EXPECT_EQ(edit(all.mid(2)).status, 0);
        EXPECT_EQ(QDir(mResults.path()).entryList({".*"}, QDir::Files | QDir::Hidden), QStringList()) << "swept";
        clear();
    }
    EXPECT_GE(killed, 4);
}

// A small disk of the test's own, which is full at any stage.
TEST_F(EditCommandTest, AFullDiskIsToldAndKeepsNothingThatIsNotWhole) {
    if (QProcess::execute("unshare", {"-Urm", "mount", "-t", "tmpfs", "none", "/mnt"}) != 0)
        GTEST_SKIP() << "no disk of its own can be mounted here";
    const QString source = sound("s.wav", 20); // 3.5 MB
    for (const char *size : {"2m", "5m"}) {
        QProcess process;
        process.start(
            "unshare",
            {"-Urm", "sh", "-c",
             QString(
                 "mount -t tmpfs -o size=%1 none '%2' || exit 99; \"$@\"; status=$?; ls -A '%2' >'%3'; exit $status")
                 .arg(size, mResults.path(), path("left")),
             "sh", CANTOREL_CLI, "--json", "edit", source, "--format", "wav", "--output", result("a")});
        ASSERT_TRUE(process.waitForFinished(60000));
        const Ran told = ran(process);
        EXPECT_EQ(told.status, 1);
        EXPECT_NE(told.lastLine.find("is full"), std::string::npos) << told.lastLine;
        EXPECT_EQ(contents(path("left")), QString(size) == "2m" ? "" : "a.m4a\n");
    }
}

// The same without the command line: the writer of the editor.
TEST_F(EditCommandTest, AChangedSourceIsRefusedAndTheFlowStillEnds) {
    struct Told : AudioExportDelegate {
        void AudioExportDelegate_ShouldBeginExport() override { ++begun; }
        void AudioExportDelegate_ShouldEndExportWithResult(bool result, const QStringList &outputPaths) override {
            EXPECT_TRUE(result);
            paths = outputPaths;
            ++ended;
        }
        int begun = 0, ended = 0;
        QStringList paths;
    } told;
    const QString source = sound("s.wav", 1);
    ZQAudioEditor editor(media::openAsset(QUrl::fromLocalFile(source)).value());
    editor.exportDelegate = &told;
    editor.addSelectedCutEntitys({{0.25, 0.75}});
    ZQAudioExportFormat format;
    format.fileType = "aac";
    const auto exported = [&] {
        editor.exportAudioWithExportFotmat(format, result("a.m4a"));
        editor.addSelectedCutEntitys({}); // too late for what was begun
        while (editor.isExporting())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    };
    exported();
    EXPECT_EQ(told.paths, QStringList{result("a.m4a")});
    EXPECT_EQ(probed(result("a.m4a"), "stream=duration_ts").toULongLong(), frame(750) - frame(250));
    EXPECT_EQ(editor.progress(), 1);
    QFile file(source);
    ASSERT_TRUE(file.open(QIODevice::Append) && file.write("more") == 4);
    file.close();
    exported();
    EXPECT_EQ(told.paths, QStringList());
    EXPECT_FALSE(editor.failure().isEmpty());
    EXPECT_EQ(told.begun, 2);
    EXPECT_EQ(told.ended, 2);
    EXPECT_EQ(results(), QStringList{"a.m4a"});
}

} // namespace
} // namespace cantorel
