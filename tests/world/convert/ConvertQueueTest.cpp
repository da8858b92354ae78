// The queue from the command line, with the real converter.

#include "convert/AudioConverter.h"
#include "platform/foundation/ChildProcess.h"
#include "settings/AppSettings.h"
#include "tags/Covers.h"
#include "tests/support/Sound.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <utility>

namespace cantorel {
namespace {

using foundation::ChildProcess;
using test::contents;
using test::probed;
using test::store;

class ConvertQueueTest : public testing::Test {
protected:
    static void make(const QString &path, const QStringList &options) {
        const auto made = ChildProcess::run(
            {"ffmpeg", QStringList{"-nostdin", "-y"} + options + QStringList{"file:" + path}, {}, {}});
        ASSERT_TRUE(made && made.value().ending.succeeded()) << made.value().output.toStdString();
    }
    // A tone of so many seconds.
    QString sound(const QString &name, double seconds, const QStringList &options = {}) const {
        make(path(name),
             QStringList{"-f", "lavfi", "-i", QString("sine=frequency=440:duration=%1").arg(seconds)} + options);
        return path(name);
    }
    struct Ran {
        int status;
        QList<QJsonObject> events;
        QString lastLine;
        QJsonObject event(const char *name, int index = 0) const {
            for (const QJsonObject &event : events)
                if (event["event"] == name && event["index"].toInt() == index)
                    return event;
            return {};
        }
    };
    Ran run(QStringList arguments, const QStringList &wrapper = {}) const {
        QProcess process;
        arguments = wrapper + QStringList{CANTOREL_CLI, "--json"} + arguments;
        process.start(arguments.takeFirst(), arguments);
        EXPECT_TRUE(process.waitForFinished(100000));
        Ran ran{process.exitCode(), {}, {}};
        for (const QByteArray &line : process.readAllStandardOutput().split('\n'))
            if (!line.isEmpty())
                ran.events << QJsonDocument::fromJson(line).object();
        ran.lastLine = QString::fromUtf8(process.readAllStandardError().trimmed().split('\n').last());
        return ran;
    }
    Ran convert(const QStringList &files, const QString &format, const QStringList &more = {}) const {
        return run(QStringList{"convert", "--folder", mResults.path(), "--format", format} + more + files);
    }
    QString path(const QString &name) const { return mFolder.filePath(name); }
    QStringList results() const { return QDir(mResults.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }

    QTemporaryDir mFolder, mResults;
};

TEST_F(ConvertQueueTest, EachFormatAndQualityGivesItsStream) {
    const QString source =
        sound("s.ogg", 1, {"-ac", "2", "-metadata", "title=A title", "-metadata", "date=2009-05-01"});
    const struct {
        const char *format, *quality, *name, *stream; // codec, rate, channels
        int bitRate;                                  // 0: not fixed
    } cases[] = {
        {"mp3", "extreme", "s.mp3", "mp3,44100,2", 320000},   {"mp3", "high", "s.mp3", "mp3,44100,2", 256000},
        {"mp3", "standard", "s.mp3", "mp3,44100,2", 128000},  {"aac", "high", "s.aac", "aac,44100,2", 0},
        {"m4a", "high", "s.m4a", "aac,44100,2", 0},           {"m4r", "standard", "s.m4r", "aac,44100,2", 0},
        {"wma", "extreme", "s.wma", "wmav2,44100,2", 128000}, {"wma", "high", "s.wma", "wmav2,44100,2", 96000},
        {"wma", "standard", "s.wma", "wmav2,44100,2", 64000}, {"wav", "high", "s.wav", "pcm_s16le,44100,2", 1411200},
        {"flac", "high", "s.flac", "flac,44100,2", 0},        {"alac", "extreme", "s(ALAC).m4a", "alac,44100,2", 0},
    };
    for (const auto &[format, quality, name, stream, bitRate] : cases) {
        SCOPED_TRACE(std::string(format) + quality);
        const Ran ran = convert({source}, format, {"--quality", quality});
        EXPECT_EQ(ran.status, 0) << ran.lastLine.toStdString();
        const QString output = ran.event("done")["output"].toString();
        EXPECT_EQ(output, mResults.filePath(name));
        EXPECT_EQ(probed(output, "stream=codec_name,sample_rate,channels").section('\n', 0, 0).toStdString(), stream);
        if (bitRate) {
            EXPECT_EQ(probed(output, "stream=bit_rate").toInt(), bitRate);
        }
        EXPECT_NEAR(static_cast<double>(test::decoded(output).size()) / 2 / 44100, 1, 0.1);
        if (QString(format) != "aac") { // it has no tags
            EXPECT_EQ(probed(output, "format_tags=title"), "A title");
        }
        for (const QString &result : results())
            QFile::remove(mResults.filePath(result));
    }
    EXPECT_EQ(convert({sound("six.wav", 1, {"-ac", "6"})}, "wma").status, 0); // which knows two channels
}

TEST_F(ConvertQueueTest, CoversGoWithTheSound) {
    make(path("c.jpg"), {"-f", "lavfi", "-i", "testsrc=size=200x100", "-frames:v", "1"});
    const QStringList attached = {"-i",   path("c.jpg"), "-map",           "0",           "-map", "1",
                                  "-c:v", "copy",        "-disposition:v", "attached_pic"};
    const QString film = sound("mp3.mp3", 1, attached), lossless = sound("flac.flac", 1, attached),
                  tiff = sound("tiff.mp3", 1);
    // Our own writer puts a TIFF there and calls it a JPEG, with which the converter fails.
    EXPECT_EQ(run({"tags", tiff, "--cover", path("c.jpg")}).status, 0);
    for (const char *format : {"mp3", "m4a", "flac", "wma", "alac"}) {
        const Ran ran = convert({film, lossless, tiff}, format);
        EXPECT_EQ(ran.status, 0) << format << ran.lastLine.toStdString();
        for (int i = 0; i < 2; ++i)
            EXPECT_TRUE(
                probed(ran.event("done", i)["output"].toString(), "stream=codec_name,width").contains("mjpeg,200"))
                << format << i;
        EXPECT_EQ(coverOf(ran.event("done", 2)["output"].toString()), coverOf(tiff)) << format;
    }
    EXPECT_FALSE(coverOf(tiff).isEmpty());
    EXPECT_EQ(convert({film}, "wav").status, 0); // which holds none
}

TEST_F(ConvertQueueTest, JoinedFilesHoldAllTheirParts) {
    const struct {
        const char *format, *extension;
        QStringList first, second; // how they are coded
        int copies;                // of the second
    } cases[] = {
        {"mp3", "mp3", {}, {}, 49},
        {"aac", "aac", {}, {"-ac", "2"}, 1},
        {"m4a", "m4a", {}, {}, 1},
        {"wma", "wma", {}, {}, 1},
        {"wav", "wav", {}, {}, 1},
        {"flac", "flac", {"-sample_fmt", "s16"}, {"-sample_fmt", "s32"}, 2},
        {"alac", "m4a", {"-acodec", "alac", "-sample_fmt", "s32p"}, {"-acodec", "alac", "-sample_fmt", "s16p"}, 2},
    };
    for (const auto &[format, extension, first, second, copies] : cases) {
        SCOPED_TRACE(format);
        QStringList parts = {sound(QString("It's 1.%1").arg(extension), 1.3, first)};
        const QString other = sound(QString("two \"2\"\nlines.%1").arg(extension), 0.9, second);
        for (int i = 0; i < copies; ++i)
            parts << other;
        const ConvertPreset preset{format, ConvertQuality::High};
        const auto joined =
            AudioConverter::startMerge(parts, preset, AudioConverter::mergedPath(parts[0], mResults.path(), preset),
                                       {AppSettings::TessolarConverterPath()});
        ASSERT_TRUE(joined) << joined.failure().detail.toStdString();
        EXPECT_EQ(
            joined.value(),
            mResults.filePath(QString("It's 1-merge%1.%2").arg(format == std::string("alac") ? "-2" : "", extension)));
        const bool isExact = QString("wav flac alac").contains(format);
        EXPECT_NEAR(static_cast<double>(test::decoded(joined.value()).size()) / 44100, 1.3 + 0.9 * copies,
                    isExact ? 0.002 : 0.08 * (1 + copies));
        if (QString("flac alac").contains(format)) {
            EXPECT_EQ(probed(joined.value(), "stream=bits_per_raw_sample"), "24");
        }
    }
}

TEST_F(ConvertQueueTest, WhatCannotBeConvertedIsLeftOutAndNamed) {
    store(path("none.mp3"), "no sound");
    const QStringList files = {sound("a.wav", 1.3), path("none.mp3"), sound("b.wav", 0.9)};
    Ran ran = convert(files, "m4r", {"--merge"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.lastLine.contains("none.mp3")) << ran.lastLine.toStdString();
    EXPECT_EQ(ran.event("merged")["output"], mResults.filePath("a-merge.m4r"));
    EXPECT_EQ(ran.event("done", 1)["status"], 4);
    EXPECT_EQ(results(), QStringList("a-merge.m4r"));
    ran = convert({files[0], sound("wide.wav", 1, {"-ac", "2"})}, "m4a", {"--merge"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.lastLine.contains("channels")) << ran.lastLine.toStdString();
    EXPECT_EQ(results().filter("m4a"), QStringList({"a.m4a", "wide.m4a"}));
    ran = convert({files[0], path("none.mp3")}, "wav", {"--merge"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.lastLine.contains("Nothing was joined")) << ran.lastLine.toStdString();
}

TEST_F(ConvertQueueTest, InformationIsThatOfTheConverter) {
    const QStringList files = {sound("My Duration 12 mix.mp3", 3.4), path("none"), path("text.mp3"),
                               sound("-b.wav", 61)};
    store(path("text.mp3"), "a film of a terminal, as ffmpeg has it");
    const Ran ran = run(QStringList("info") + files);
    EXPECT_EQ(ran.status, 1);
    const QJsonValue durations[] = {"00:00:03", QJsonValue(), QJsonValue(), "00:01:01"};
    ASSERT_EQ(ran.events.size(), 4);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(ran.events[i]["file"], files[i]);
        EXPECT_EQ(ran.events[i]["duration"], durations[i]) << i;
    }
    EXPECT_EQ(ran.events[3]["size"], " 5.1 MB");
    EXPECT_EQ(run({"info"}).status, 2);
    EXPECT_EQ(run({"convert", "--folder", path("missing"), files[0]}).status, 2);
    EXPECT_EQ(run({"convert", "--format", "ogg", files[0]}).status, 2);
}

TEST_F(ConvertQueueTest, ProgressGrowsAndASignalEndsTheChildAtOnce) {
    const QStringList files = {sound("a.wav", 1), sound("long.wav", 500, {"-ar", "8000"}), path("a.wav")};
    QProcess process;
    process.start(CANTOREL_CLI,
                  QStringList{"--json", "convert", "--format", "aac", "--folder", mResults.path()} + files);
    double last = 0;
    QList<QJsonObject> done;
    bool isAsked = false;
    while (process.waitForReadyRead(60000))
        while (process.canReadLine()) {
            const QJsonObject event = QJsonDocument::fromJson(process.readLine()).object();
            if (event["event"] == "done")
                done << event;
            if (event["event"] != "progress" || event["index"] != 1)
                continue;
            const double percent = event["percent"].toDouble();
            EXPECT_GT(percent, last);
            EXPECT_LE(percent, 100);
            last = percent;
            if (percent > 1 && !std::exchange(isAsked, true))
                ::kill(static_cast<pid_t>(process.processId()), SIGINT);
        }
    EXPECT_TRUE(process.state() == QProcess::NotRunning || process.waitForFinished(60000));
    EXPECT_EQ(process.exitCode(), 130);
    ASSERT_EQ(done.size(), 3);
    EXPECT_EQ(done[0]["status"], 3);
    EXPECT_EQ(done[1]["status"], 4);
    EXPECT_EQ(done[2]["status"], 4);
    EXPECT_LT(last, 100);
    EXPECT_EQ(results(), QStringList("a.aac"));
}

// The results lie on a small disk of the test's own, which is full at any stage.
TEST_F(ConvertQueueTest, AFullDiskLeavesNoPartOfAResult) {
    if (QProcess::execute("unshare", {"-Urm", "mount", "-t", "tmpfs", "none", "/mnt"}) != 0)
        GTEST_SKIP() << "this machine gives no namespace to mount a small disk in";
    const QStringList files = {sound("a.wav", 2, {"-ac", "2"}), sound("b.wav", 2, {"-ac", "2"})};
    const struct {
        const char *size;
        QStringList more;
        QStringList left;
    } cases[] = {
        {"4k", {}, {}},                             // not even the first bytes
        {"200k", {}, {}},                           // in the middle
        {"344k", {}, {}},                           // the last ones
        {"400k", {}, {"a.wav"}},                    // the second file
        {"1000k", {"--merge"}, {"a.wav", "b.wav"}}, // the joined one
        {"2000k", {"--merge"}, {"a-merge.wav"}},
    };
    for (const auto &[size, more, left] : cases) {
        SCOPED_TRACE(size);
        const QString list = mFolder.filePath("list");
        const Ran ran = run(
            QStringList{"convert", "--folder", mResults.path(), "--format", "wav"} + more + files,
            {"unshare", "-Urm", "sh", "-c",
             QString(
                 "mount -t tmpfs -o size=%1 none '%2' || exit 99; \"$@\"; status=$?; ls -A '%2' >'%3'; exit $status")
                 .arg(size, mResults.path(), list),
             "sh"});
        EXPECT_EQ(QString::fromUtf8(contents(list)).split('\n', Qt::SkipEmptyParts), left);
        EXPECT_EQ(ran.status, left == QStringList("a-merge.wav") ? 0 : 1);
        if (ran.status == 1) {
            const QJsonObject failed = ran.event("done", left.isEmpty() ? 0 : 1);
            const QString reason = more.isEmpty() ? failed["reason"].toString() : ran.lastLine;
            EXPECT_TRUE(reason.contains("full")) << reason.toStdString();
        }
    }
}

} // namespace
} // namespace cantorel
