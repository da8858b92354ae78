#include "log/Log.h"
#include "tags/AudioIdentify.h"
#include "tags/Id3Frames.h"
#include "tags/TagWriting.h"
#include "tests/unit/tags/TagFiles.h"

#include <QDir>
#include <QFile>

namespace cantorel {
namespace {

using test::contents;
using test::store;
using test::TagFiles;

const QString kArabic = QStringLiteral("أغنية \U0001D11E") + QStringLiteral(" x").repeated(700);

struct Kind {
    const char *name;
    id3Tag read;
    const char *version; // once written
    bool hasPicture = false;
};

std::vector<Kind> kinds() {
    const auto tag = [](const char *title, const char *artist = "", const char *album = "", const char *genre = "",
                        const char *year = "") { return id3Tag{title, artist, album, genre, year, {}, ""}; };
    return {
        {"none.mp3", tag(""), "2.3"},
        {"v1.mp3", tag("Old", "One", "Album", "Rock", "2009"), "2.3"},
        {"v22.mp3", tag("Old", "", "", "", "2009"), "2.3", true},
        {"v23.mp3", tag("Old", "One/Two", "Album", "Rock My Rock", "2009"), "2.3", true},
        {"v24.mp3", tag("Old", "One Two", "Album", "Rock My Rock", "2009"), "2.4", true},
        {"huge.mp3", tag(""), "2.3", true},
        {"plain_sizes.mp3", tag(QByteArray("A title that is longer than 127 letters ").repeated(4).trimmed()), "2.4"},
        {"unsafe.mp3", tag("Old"), "2.3"},
        {"unsafe_tag.mp3", tag("Old"), "2.4"},
        {"none.m4a", tag(""), "M4A"},
        {"end.m4a", tag("Old", "", "", "", "2009"), "M4A"},
        {"front.m4a", tag("Old"), "M4A", true},
        {"foreign.m4a", tag("Old", "", "", "", "2009"), "M4A"},
        {"fragments.m4a", tag(""), "M4A"}};
}

// What stays when what a title edit may change is taken away.
QJsonObject others(QJsonObject held) {
    for (const QString &key : held.keys())
        if (QStringList{"TIT2", "©nam", "version", "v1"}.contains(key) || key.startsWith("APIC"))
            held.remove(key);
    return held;
}

TEST_F(TagFiles, OnlyWhatDiffersIsWrittenAndAllElseStaysInEveryKind) {
    const QJsonObject before = held();
    for (const Kind &kind : kinds()) {
        SCOPED_TRACE(kind.name);
        auto tag = AudioIdentify::getID3TagFromFile(file(kind.name));
        ASSERT_TRUE(tag);
        id3Tag texts = *tag;
        texts.id3Title = texts.id3Title.trimmed();
        EXPECT_EQ(texts.description(), kind.read.description());
        EXPECT_EQ(!tag->id3Image.isEmpty(), kind.hasPicture);
        tag->id3Title = kArabic;
        ASSERT_TRUE(AudioIdentify::saveID3ToFile(*tag, file(kind.name)));
        EXPECT_EQ(AudioIdentify::getID3TagFromFile(file(kind.name))->id3Title, kArabic);
        // The same once more changes no byte.
        const QByteArray bytes = contents(file(kind.name));
        EXPECT_TRUE(AudioIdentify::saveID3ToFile(*AudioIdentify::getID3TagFromFile(file(kind.name)), file(kind.name)));
        EXPECT_EQ(contents(file(kind.name)), bytes);
    }
    const QJsonObject titled = held();
    for (const Kind &kind : kinds()) {
        SCOPED_TRACE(kind.name);
        const QJsonObject was = before[QLatin1String(kind.name)].toObject(),
                          is = titled[QLatin1String(kind.name)].toObject();
        const bool isMovie = is["version"] == "M4A";
        EXPECT_EQ(is["version"], kind.version);
        EXPECT_EQ(others(is), others(was));
        EXPECT_NE(is[isMovie ? "©nam" : "TIT2"], was[isMovie ? "©nam" : "TIT2"]);
        EXPECT_EQ(is["v1"] == "none", was["v1"] == "none");
        EXPECT_EQ(is.keys().filter("APIC").size(), kind.hasPicture && !isMovie ? 1 : 0);
        EXPECT_EQ(is["APIC:"].toString(), kind.hasPicture && !isMovie ? "image/jpeg 3 b'II*\\x00'" : "");
        ASSERT_TRUE(AudioIdentify::saveID3ToFile({"T", kArabic, "L", "Post-Punk", "1987", {}, {}}, file(kind.name)));
    }
    const QJsonObject full = held();
    for (const Kind &kind : kinds()) {
        SCOPED_TRACE(kind.name);
        const QJsonObject is = full[QLatin1String(kind.name)].toObject();
        const bool isMovie = is["version"] == "M4A";
        EXPECT_TRUE(is[isMovie ? "©gen" : "TCON"].toString().contains("Post-Punk"));
        EXPECT_TRUE(is[isMovie ? "©day" : is.contains("TYER") ? "TYER" : "TDRC"].toString().contains("'1987'"));
        EXPECT_EQ(is.keys().filter("APIC").size(), 0);
        EXPECT_EQ(is.contains("covr"), kind.hasPicture && isMovie);
        ASSERT_TRUE(AudioIdentify::saveID3ToFile({}, file(kind.name)));
        id3Tag cleared = *AudioIdentify::getID3TagFromFile(file(kind.name));
        EXPECT_EQ(cleared.description(), (id3Tag{"", "", "", "", "1987", {}, ""}.description()));
        EXPECT_EQ(is["sound"], before[QLatin1String(kind.name)].toObject()["sound"]);
    }
}

TEST_F(TagFiles, GenresAndYearsAreReadBack) {
    const QString path = file("none.mp3"), movie = file("none.m4a");
    const QStringList genres = id3Tag::getAllGenreList();
    EXPECT_GE(genres.size(), 148);
    EXPECT_EQ(genres[0], "Blues");
    EXPECT_EQ(genres[17], "Rock");
    for (const QString &genre : genres) {
        ASSERT_TRUE(AudioIdentify::saveID3ToFile({"", "", "", genre, "", {}, {}}, path));
        EXPECT_EQ(AudioIdentify::getID3TagFromFile(path)->id3Genre, genre);
    }
    const struct {
        const char *written, *read;
    } years[] = {{"2009", "2009"}, {"19x9", "2009"},  {"", "2009"}, {"-1", "2009"}, {"99999999999", "2009"},
                 {"١٩٩٩", "1999"}, {"12345", "1999"}, {"7", "7"},   {" 8", "7"},    {"0", ""}};
    for (const auto &[written, read] : years)
        for (const QString &one : {path, movie}) {
            ASSERT_TRUE(AudioIdentify::saveID3ToFile({"", "", "", "", QString::fromUtf8(written), {}, {}}, one))
                << written;
            EXPECT_EQ(AudioIdentify::getID3TagFromFile(one)->id3Year, read) << written;
        }
}

TEST_F(TagFiles, WhatTakesNoTagsIsRefusedAndStaysAsItIs) {
    LogFileCheck("tags.log");
    const QByteArray movie = contents(file("end.m4a")), mpeg = contents(file("v23.mp3"));
    const char *const noMpeg = " 'TagLib::MPEG::File' audio file is invalid \uFF01";
    const char *const noMovie = " 'TagLib::MP4::File' audio file is invalid \uFF01";
    const QByteArray frame = contents(file("none.mp3")).left(417);
    const struct {
        const char *name;
        QByteArray bytes;
        bool isRead;
        const char *message;
    } cases[] = {{"Song.WAV", mpeg, true, "'wav' format not suport id3 edit"},
                 {"song.aac", mpeg, true, "'aac' format not suport id3 edit"},
                 {"text.mp3", QByteArray("some text\n").repeated(500), false, noMpeg},
                 {"empty.mp3", "", false, noMpeg},
                 {"song.flac", "fLaC" + frame.repeated(9), false, noMpeg},
                 {"flac.mp3", "fLaC" + frame.repeated(9), false, noMpeg},
                 {"ogg.mp3", "OggS" + frame.repeated(9), false, noMpeg},
                 {"wave.mp3", "RIFF....WAVEfmt " + frame.repeated(9), true, noMpeg},
                 {"movie.mp3", movie, false, noMpeg},
                 {"song.m4r", movie, false, noMpeg},
                 {"song.mp4", movie, false, noMpeg},
                 {"tag.mp3", mpeg.left(mpeg.indexOf("PRIV")), false, noMpeg},
                 {"mpeg.m4a", mpeg, true, noMovie},
                 {"empty.M4A", "", true, noMovie},
                 {"cut.m4a", movie.chopped(9), true, noMovie},
                 {"old.m4a", contents(file("old_fragments.m4a")), true, noMovie}};
    for (const auto &[name, bytes, isRead, message] : cases) {
        SCOPED_TRACE(name);
        store(file(name), bytes);
        EXPECT_EQ(AudioIdentify::getID3TagFromFile(file(name)).has_value(), isRead);
        EXPECT_FALSE(AudioIdentify::saveID3ToFile({"New", "", "", "", "", {}, {}}, file(name)));
        EXPECT_EQ(contents(file(name)), bytes);
        EXPECT_TRUE(contents(GetLogFilePath()).endsWith(QByteArray("E: ") + message + '\n'));
    }
    EXPECT_FALSE(AudioIdentify::getID3TagFromFile(file("gone.mp3")));
    for (const char *name : {"gone.mp3", "gone.wav"}) {
        EXPECT_FALSE(AudioIdentify::saveID3ToFile({}, file(name)));
        EXPECT_TRUE(contents(GetLogFilePath()).endsWith("file can not found - " + file(name).toUtf8() + '\n'));
    }
    QDir().mkdir(file("folder.mp3"));
    EXPECT_FALSE(AudioIdentify::saveID3ToFile({}, file("folder.mp3")));
    EXPECT_TRUE(contents(GetLogFilePath()).endsWith(QByteArray(noMpeg) + '\n'));
    store(file("Song.M4A"), movie + "xyz"); // a few bytes more than its boxes
    EXPECT_TRUE(AudioIdentify::saveID3ToFile({"New", "", "", "", "", {}, {}}, file("Song.M4A")));
    EXPECT_EQ(AudioIdentify::getID3TagFromFile(file("Song.M4A"))->id3Title, "New");
}

TEST(Id3Frames, KeepWhatTheyDoNotKnow) {
    QByteArray tag("ID3\3\0\0\0\0\0\0", 10);
    tag += QByteArray("TIT2\0\0\0\2\0\0\0A", 12) + QByteArray("\xFF\x01junk\0\0", 8);
    tag[9] = static_cast<char>(tag.size() - 10);
    Id3Frames frames = Id3Frames::split(tag);
    ASSERT_EQ(frames.frames.size(), 1);
    EXPECT_EQ(frames.joined(tag.size()), tag); // in the room that there was
    EXPECT_TRUE(frames.joined(0).contains("\xFF\x01junk"));
    frames.remove({"TIT2"});
    EXPECT_FALSE(frames.joined(0).isEmpty());
    frames.rest.clear();
    EXPECT_TRUE(frames.joined(100).isEmpty());
}

} // namespace
} // namespace cantorel
