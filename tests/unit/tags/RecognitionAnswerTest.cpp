#include "tags/identify/RecognitionAnswer.h"

#include "tags/identify/LeadingSilence.h"
#include "tags/identify/RecognisedName.h"

#include <gtest/gtest.h>

#include <vector>

namespace cantorel {
namespace {

TEST(RecognitionAnswer, SongsComeBestFirstWithAnAlbumOfTheArtist) {
    const auto read = [](const QByteArray &results) {
        const auto candidates = recognitionCandidates("{\"status\":\"ok\",\"results\":[" + results + "]}");
        EXPECT_TRUE(candidates);
        return candidates ? candidates.value() : std::vector<RecognitionCandidate>();
    };
    const auto songs = read(R"(
        {"id":"a","score":0.7,"recordings":[{"id":"r1","title":"Low"}]},
        {"id":"b","score":0.9,"recordings":[
            {"id":"r2","title":"Song","sources":3,"artists":[{"name":"A","joinphrase":" & "},{"name":"B"}],
             "releasegroups":[
                {"title":"Hits","type":"Album","secondarytypes":["Compilation"],
                 "releases":[{"id":"x1","date":{"year":1980}}]},
                {"title":"Single","type":"Single","releases":[{"id":"x2","date":{"year":1979}}]},
                {"title":"Album","type":"Album",
                 "releases":[{"id":"x3","date":{"year":1999}},{"id":"x4","title":"First","date":{"year":1981}},{"id":"x5"}]}]},
            {"id":"r3","title":"song","artists":[{"name":"a & b"}]},
            {"id":"r4","title":"Other","sources":9},
            {"id":"r5"},{"id":"r6","title":" "}]},
        {"id":"c","score":1.0})");
    ASSERT_EQ(songs.size(), 3u);
    EXPECT_EQ(songs[0].title, "Other") << "more sources";
    EXPECT_EQ(songs[1], (RecognitionCandidate{0.9, "r2", "x4", "Song", "A & B", "First", "1981"}));
    EXPECT_EQ(songs[2].title, "Low");
    EXPECT_EQ(read(R"({"score":1,"recordings":[{"title":"T","artists":[{"name":"A"},{"name":"B"}]}]})")[0].artist,
              "A, B");
    EXPECT_EQ(
        read(R"({"score":1,"recordings":[{"title":"T","releasegroups":[{"title":"G","artists":[{"name":"P"}]}]}]})")[0]
            .artist,
        "P")
        << "left out where it is that of the album";

    for (const char *broken :
         {"", "{", "[]", "<html>", R"({"status":"error","error":{"code":4,"message":"invalid API key"}})"})
        EXPECT_FALSE(recognitionCandidates(broken)) << broken;
    EXPECT_EQ(mostNamedGenre(
                  R"({"genres":[{"name":"dub","count":1},{"name":"hard rock","count":3},{"name":"b","count":2}]})"),
              "Hard Rock");
    EXPECT_EQ(mostNamedGenre(R"({"genres":[{"name":"zeuhl","count":1}]})"), "Zeuhl");
    EXPECT_EQ(mostNamedGenre("{}"), "");
}

TEST(RecognisedName, AFileThatHoldsTheTitleKeepsItsName) {
    const auto name = [](const QString &file, const QString &title) {
        return recognisedName("/music/" + file, RecognisedMusic({1, {}, {}, title, {}, {}, {}}, {}, {}));
    };
    EXPECT_EQ(name("Rec 1.mp3", "Song"), "Song");
    EXPECT_EQ(name("My Song.mp3", "Song"), "");
    EXPECT_EQ(name("My song.mp3", "Song"), "Song");
    EXPECT_EQ(name("Rec.mp3", "AC/DC"), "AC-DC");
    EXPECT_EQ(name("AC-DC.mp3", "AC/DC"), "") << "what it was renamed to before";
    EXPECT_EQ(name(QString::fromUtf8("cafe\xCC\x81.mp3"), QString::fromUtf8("caf\xC3\xA9")), "")
        << "as other systems write it";
    EXPECT_EQ(name("Rec.mp3", ".."), "");
    EXPECT_EQ(name("Rec.mp3", ""), "");

    const id3Tag had{"T", "A", "L", "G", "1999", "picture", {}};
    const id3Tag tags = recognisedTags(RecognisedMusic({1, {}, {}, "Song", {}, "Album", {}}, {}, {})).applied(had);
    EXPECT_EQ(tags, (id3Tag{"Song", "A", "Album", "G", "1999", "picture", {}})) << "what is not known stays";
}

TEST(LeadingSilence, EndsWithTheFirstSoundAboveIt) {
    const std::vector<std::int16_t> sound{0, 33, -33, -34, 0, 5};
    EXPECT_EQ(withoutLeadingSilence(sound).size(), 3u);
    EXPECT_EQ(withoutLeadingSilence({}).size(), 0u);
    EXPECT_EQ(withoutLeadingSilence(std::span(sound).first(3)).size(), 0u);
}

} // namespace
} // namespace cantorel
