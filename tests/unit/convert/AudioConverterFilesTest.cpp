#include "convert/AudioConverter.h"
#include "platform/foundation/SearchPaths.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/Wave.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <tuple>

namespace cantorel {
namespace {

using namespace std::chrono_literals;
using test::contents;
using test::store;

const ConvertPreset kWave{"wav", ConvertQuality::High};

class AudioConverterFilesTest : public testing::Test {
protected:
    // A converter made of one line of shell; $in is the input, $out what it writes.
    Converter converter(const QByteArray &line) {
        const QString path = mTools.filePath("converter");
        test::storeProgram(path, "#!/bin/sh\nout=$CANTOREL_CONVERT_INTO in=$2\n" + line + "\n");
        return {path, 5s};
    }
    QString store(const QString &name) {
        test::store(mFolder.filePath(name), mSound);
        return mFolder.filePath(name);
    }
    // All that is in the folder of the results.
    QStringList results() const {
        return QDir(mResults.path()).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
    }
    foundation::Result<QString> convert(const QString &name, const QByteArray &line = "cp \"$in\" \"$out\"",
                                        const ConvertPreset &preset = kWave) {
        return AudioConverter::convertFile({mFolder.filePath(name), mResults.path(), preset, 2}, converter(line));
    }

    QTemporaryDir mFolder, mResults, mTools;
    const QByteArray mSound = test::wave(std::vector<float>(2 * 44100 * 2)); // 2 s
};

TEST_F(AudioConverterFilesTest, ArgumentsFollowFormatAndQuality) {
    using enum ConvertQuality;
    const struct {
        const char *format;
        ConvertQuality quality;
        const char *output, *arguments; // behind "-i in -vn"
    } cases[] = {
        {"mp3", Extreme, "o.mp3", "-ab 320k -ar 44100 -y o.mp3"},
        {"mp3", High, "o.mp3", "-ab 256k -ar 44100 -y o.mp3"},
        {"mp3", Standard, "o.mp3", "-ab 128k -ar 44100 -y o.mp3"},
        {"mp3", None, "o.mp3", "-ac 2 -ar 44100 -y o.mp3"},
        {"aac", High, "o.aac", "-ab 256k -ar 44100 -y o.aac"},
        {"m4a", Standard, "o.m4a", "-ab 128k -ar 44100 -strict -2 -y o.m4a"},
        {"m4r", Extreme, "o.m4a", "-ab 320k -ar 44100 -strict -2 -y o.m4a"},
        {"wma", Extreme, "o.wma", "-ab 128k -ar 44100 -y o.wma"},
        {"wma", High, "o.wma", "-ab 96k -ar 44100 -y o.wma"},
        {"wma", Standard, "o.wma", "-ab 64k -ar 44100 -y o.wma"},
        {"wav", Extreme, "o.wav", "-ac 2 -ar 44100 -y o.wav"},
        {"flac", Standard, "o.flac", "-ac 2 -ar 44100 -y o.flac"},
        {"alac", High, "d.alac/s.alac mix.alac", "-ab 256k -ar 44100 -acodec alac -y d.alac/s.alac mix.m4a"},
        {"alac(m4a)", High, "s.alac(m4a)", "-ab 256k -ar 44100 -acodec alac -y s.m4a"},
    };
    for (const auto &[format, quality, output, arguments] : cases)
        EXPECT_EQ(AudioConverter::getConvertArgumentsWithOutputPreset({format, quality}, "in", output)
                      .join(' ')
                      .toStdString(),
                  std::string("-i in -vn ") + arguments);
}

TEST_F(AudioConverterFilesTest, ResultsAreNamedAfterTheirFilesAndReplaceNone) {
    const QString longest(251, 'x'), wide = QString(83, QChar(0x97f3)); // 249 bytes
    const struct {
        QString source, format, result;
    } cases[] = {
        {"song.mp3", "wav", "song.wav"},
        {"song.ogg", "wav", "song-2.wav"},
        {"song", "wav", "song-3.wav"},
        {"-dash.mp3", "wav", "-dash.wav"},
        {"it's \"so\" [1] %1.mp3", "wav", "it's \"so\" [1] %1.wav"},
        {"a\nb.mp3", "wav", "a\nb.wav"},
        {"w.mp3", "wav", "w.wav"},
        {"w.ogg", "wav", "w-2.wav"}, // though the name stands in the extension as well
        {"My.alac mix.mp3", "alac", "My.alac mix(ALAC).m4a"},
        {"ring.mp3", "m4r", "ring.m4a"}, // the queue renames it
        {longest + ".mp3", "wav", longest + ".wav"},
        {longest + ".ogg", "wav", longest.chopped(11) + ".wav"}, // there has to be room for a number
        {longest + ".wav", "wav", longest.chopped(11) + "-2.wav"},
        {wide + ".mp3", "alac", wide.chopped(2) + "(ALAC).m4a"},
    };
    for (const auto &[source, format, result] : cases) {
        store(source);
        const auto converted = convert(source, "cp \"$in\" \"$out\"", {format, ConvertQuality::High});
        ASSERT_TRUE(converted) << source.toStdString() << converted.failure().detail.toStdString();
        EXPECT_EQ(converted.value().toStdString(), mResults.filePath(result).toStdString());
    }
    EXPECT_EQ(results().size(), int(std::size(cases)));
}

// Whatever goes wrong, there is one sentence that says what, and nothing is left.
TEST_F(AudioConverterFilesTest, FailuresAreToldByWhatTheConverterSays) {
    store("song.mp3");
    const struct {
        const char *line, *key;
    } cases[] = {
        {"echo 'song.mp3: Invalid data found when processing input'; exit 1", "ConvertNoSound"},
        {"echo 'song.mp3: End of file'; exit 1", "ConvertNoSound"},
        {"echo 'Input #0'; echo 'stream #0: Invalid data found when processing input'; exit 1", "ConvertOther"},
        {"echo 'Output #0 does not contain any stream'; exit 1", "ConvertNoSound"},
        {"echo \"Unknown encoder 'x'\"; exit 1", "ConvertNoEncoder"},
        {"echo 'av_interleaved_write_frame(): No space left on device'; exit 1", "DiskFull"},
        {"exit 127", "ConvertNoProgram"},
        {"kill -9 $$", "ConvertEnded"},
        {"cp \"$in\" \"$out\"; echo '[x @ 0x5] something odd'; echo 'Conversion failed!'; exit 69", "ConvertOther"},
        {": >\"$out\"", "ConvertIncomplete"},
        {"head -c 300000 \"$in\" >\"$out\"", "ConvertIncomplete"},
        {"cat \"$in\" \"$in\" >\"$out\"; exit 1", "ConvertOther"},
        {"echo no sound >\"$out\"", "ConvertIncomplete"},
        {"mv \"$out\" \"$out.x\"; cp \"$in\" \"$out\"; rm \"$out.x\"", "ConvertIncomplete"}, // not what was locked
        {"head -c 900000 /dev/zero; exit 3", "ConvertOther"},
        {"yes flood | head -n 100000; exit 3", "ConvertOther"},
    };
    for (const auto &[line, key] : cases) {
        const auto converted = convert("song.mp3", line);
        ASSERT_FALSE(converted) << line;
        EXPECT_EQ(converted.failure().sentence.key(), key) << line << converted.failure().detail.toStdString();
        for (const auto &argument : converted.failure().sentence.arguments())
            EXPECT_LT(argument.value.plainEnglish().size(), 310); // however much it says
        for (const QString &left : results())
            EXPECT_TRUE(QFile::remove(mResults.filePath(left)) && !left.endsWith("song.wav")) << line;
    }
    for (const auto &[line, reason] :
         {std::pair("echo '[x @ 0x5] something odd'; echo 'Conversion failed!'; exit 69", "something odd"),
          {"exit 126", "its exit status was 126"}})
        EXPECT_EQ(convert("song.mp3", line).failure().sentence.arguments()[1].value.plainEnglish(), reason);
    test::store(mFolder.filePath("none.mp3"), mSound.first(44)); // as long as its result, which is nothing
    EXPECT_EQ(convert("none.mp3").failure().sentence.key(), "ConvertIncomplete");

    Converter hangs = converter("while sleep 0.02; do echo size= 9kB; done"); // says always the same
    hangs.limit = 100ms;
    const FileToConvert song{mFolder.filePath("song.mp3"), mResults.path(), kWave, 2};
    EXPECT_EQ(AudioConverter::convertFile(song, hangs).failure().sentence.key(), "ConvertTimedOut");
    Converter slow = converter("for i in 1 2 3 4 5 6; do sleep 0.5; echo size= ${i}kB; done; cp \"$in\" \"$out\"");
    slow.limit = 2s;
    EXPECT_TRUE(AudioConverter::convertFile(song, slow) && QFile::remove(mResults.filePath("song.wav")));
    std::stop_source stopped;
    stopped.request_stop(); // before there is a child
    EXPECT_EQ(AudioConverter::convertFile(song, {hangs.program, 30s, stopped.get_token()}).failure().sentence.key(),
              "ConvertStopped");
    EXPECT_EQ(AudioConverter::convertFile(song, {"/nowhere"}).failure().sentence.key(), "ConverterMissing");
    EXPECT_EQ(convert("missing.mp3").failure().sentence.key(), "ConvertGone");
    EXPECT_EQ(convert(".").failure().sentence.key(), "ConvertNoSound");
    EXPECT_EQ(
        AudioConverter::convertFile({song.path, "/proc/none", kWave, 2}, converter("exit 1")).failure().sentence.key(),
        "ConvertFolder");
    EXPECT_EQ(AudioConverter::convertFile({song.path, mFolder.filePath("folder"), kWave, 2},
                                          converter("rm -r \"${out%/*}\"; exit 1"))
                  .failure()
                  .sentence.key(),
              "ConvertFolder");
    EXPECT_EQ(convert("song.mp3", "rm \"$in\"; exit 1").failure().sentence.key(), "ConvertGone");
    EXPECT_EQ(results(), QStringList());
}

// As RF64, which a short WAV is not.
TEST_F(AudioConverterFilesTest, AWaveMayExceedFourGiBWhereItsLengthNeedsIt) {
    const QString part = store("part.wav"), output = mResults.filePath("joined.wav");
    const Converter asks = converter("case \"$*\" in *' -rf64 auto -y '*) exit 3 ;; esac\n"
                                     "echo \"Unknown encoder 'none'\"; exit 1");
    const auto isAsked = [](const foundation::Result<QString> &made) {
        return made.failure().sentence.key() == "ConvertOther";
    };
    for (const auto &[seconds, format, asked] :
         {std::tuple(24400, "wav", true), {24300, "wav", true}, {3600, "wav", false}, {24400, "mp3", false}})
        EXPECT_EQ(isAsked(AudioConverter::convertFile({part, mResults.path(), {format, ConvertQuality::High}, seconds},
                                                      asks)),
                  asked)
            << seconds << format;
    EXPECT_FALSE(isAsked(AudioConverter::startMerge({part, part}, kWave, output, asks)));
    QByteArray slow = mSound;
    slow.replace(24, 4, QByteArray("\x04\0\0\0", 4)); // frames a second: it lasts six hours
    test::store(part, slow);
    EXPECT_TRUE(isAsked(AudioConverter::startMerge({part, part}, kWave, output, asks)));
}

TEST_F(AudioConverterFilesTest, NamesTakenMeanwhileStay) {
    store("song.mp3");
    const QByteArray taken = QFile::encodeName(mResults.filePath("song.wav"));
    const auto converted = convert("song.mp3", "cp \"$in\" \"$out\"; echo other >'" + taken + "'");
    ASSERT_TRUE(converted);
    EXPECT_EQ(converted.value(), mResults.filePath("song-2.wav"));
    EXPECT_EQ(contents(mResults.filePath("song.wav")), "other\n");
}

TEST_F(AudioConverterFilesTest, MediaInformationNeedsALengthAndSound) {
    const QString file = store("song.mp3");
    const char *const duration = "echo '  Duration: 00:03:25.31, start: 0'", *const sound =
                                                                                 "echo '  Stream #0:0: Audio: x'";
    for (const auto &[line, key] : {std::pair{QByteArray(duration) + "; " + sound + "; exit 1", ""},
                                    {QByteArray(duration) + "; exit 1", "ConvertNoSound"},
                                    {QByteArray(sound) + "; exit 1", "ConvertNoLength"},
                                    {"exit 127", "ConvertNoProgram"}}) {
        const auto read = AudioConverter::readMediaInformation(file, converter(line));
        EXPECT_EQ(read ? "" : read.failure().sentence.key(), key) << line.constData();
        EXPECT_EQ(read ? read.value().duration : "00:03:25", "00:03:25");
    }
}

// $2 is "concat" here and $4 the list.
TEST_F(AudioConverterFilesTest, JoinedFilesAreDecodedBeforeTheyCount) {
    const QString one = store("It's.wav"), two = store("two\nlines.wav");
    const QString list = mTools.filePath("list"), output = mResults.filePath("joined.wav");
    const QByteArray keep = "cp \"$4\" '" + QFile::encodeName(list) + "'; ";
    store("double.wav");
    test::store(mFolder.filePath("double.wav"), test::wave(std::vector<float>(2 * 44100 * 4)));
    const QByteArray whole = "cp '" + QFile::encodeName(mFolder.filePath("double.wav")) + "' \"$out\"";
    const auto join = [&](const QByteArray &line, const ConvertPreset &preset = kWave) {
        return AudioConverter::startMerge({one, two}, preset, output, converter(line));
    };
    EXPECT_EQ(join(keep + "cp \"" + QFile::encodeName(one) + "\" \"$out\"").failure().sentence.key(), "JoinIncomplete");
    EXPECT_EQ(results(), QStringList());
    const QList<QByteArray> lines = contents(list).split('\n');
    ASSERT_EQ(lines.size(), 3) << contents(list).constData();
    EXPECT_EQ(lines[0], "file '" + QFile::encodeName(one) + "'");
    EXPECT_EQ(lines[2], "");
    ASSERT_TRUE(join(whole));
    EXPECT_EQ(join(whole).value(), mResults.filePath("joined-2.wav"));
    EXPECT_EQ(join("exit 1").failure().sentence.key(), "ConvertOther");
    // Where the number of channels changes within such a file, its levels are wrong.
    test::store(two, test::wave(std::vector<float>(44100 * 2), 1));
    for (const auto &[format, key] :
         {std::pair{"m4a", "JoinChannels"}, {"wma", "JoinChannels"}, {"alac", "JoinChannels"}})
        EXPECT_EQ(join(whole, {format, ConvertQuality::High}).failure().sentence.key(), key) << format;
    EXPECT_TRUE(join(whole));
    std::stop_source stopped;
    Converter stops = converter(whole);
    stops.stop = stopped.get_token();
    stops.complete = [&](const QString &) { stopped.request_stop(); }; // before it is decoded
    EXPECT_EQ(AudioConverter::startMerge({one, two}, kWave, output, stops).failure().sentence.key(), "ConvertStopped");
    for (const QByteArray &line : {"rm '" + QFile::encodeName(two) + "'; exit 1", whole}) {
        const auto gone = join(line).failure().sentence;
        EXPECT_EQ(gone.key(), "ConvertGone");
        EXPECT_EQ(gone.arguments()[0].value.plainEnglish(), "two\nlines.wav");
    }
    EXPECT_EQ(QDir(foundation::searchPath(foundation::SearchPath::Caches)).entryList({"*.txt"}), QStringList());
}

} // namespace
} // namespace cantorel
