// Recognition from a file to its new name and tags, with the real converter and services on loopback.

#include "platform/foundation/ChildProcess.h"
#include "platform/foundation/SearchPaths.h"
#include "recording/library/RecordedList.h"
#include "settings/AppSettings.h"
#include "tags/AudioIdentify.h"
#include "tags/identify/RecordingIdentification.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/PrivateWorld.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QUrlQuery>

#include <gtest/gtest.h>
#include <zlib.h>

#include <future>
#include <utility>

namespace cantorel {
namespace {

using foundation::ChildProcess;
using test::LoopbackServer;
using Reply = LoopbackServer::Reply;

QByteArray uncompressed(QByteArray gzip) {
    z_stream stream{};
    QByteArray text(1 << 20, '\0');
    stream.next_in = reinterpret_cast<Bytef *>(gzip.data());
    stream.avail_in = static_cast<uInt>(gzip.size());
    stream.next_out = reinterpret_cast<Bytef *>(text.data());
    stream.avail_out = static_cast<uInt>(text.size());
    EXPECT_EQ(inflateInit2(&stream, 15 + 16), Z_OK);
    EXPECT_EQ(inflate(&stream, Z_FINISH), Z_STREAM_END);
    text.truncate(static_cast<qsizetype>(stream.total_out));
    inflateEnd(&stream);
    return text;
}

QByteArray hit(double score, const char *title = "Song") {
    return QStringLiteral(R"({"status":"ok","results":[{"id":"i","score":%1,"recordings":[{"id":"rec","title":"%2",
        "artists":[{"name":"Choir"}],"releasegroups":[{"title":"Live","type":"Album",
        "releases":[{"id":"rel","date":{"year":2001}}]}]}]}]})")
        .arg(score)
        .arg(title)
        .toUtf8();
}

class IdentifyTest : public testing::Test {
protected:
    IdentifyTest() {
        QBuffer bytes(&cover);
        QImage picture(40, 40, QImage::Format_RGB32);
        picture.fill(Qt::red);
        picture.save(&bytes, "PNG");
        AppSettings::setRecognitionAgreed(true);
    }
    // Looks at each request as the real services do.
    Reply answer(const QByteArray &request) {
        const QByteArray path = request.split(' ').value(1);
        EXPECT_TRUE(request.contains("\r\nUser-Agent: Cantorel/")) << request.constData();
        if (path.startsWith("/ws/2/recording/rec?"))
            return Reply::page(R"({"genres":[{"name":"folk","count":2}]})");
        if (path == "/release/rel/front-500")
            return Reply::redirect(server.url("/picture"), "307 Temporary Redirect");
        if (path == "/picture")
            return Reply::page(cover);
        EXPECT_TRUE(request.startsWith("POST /v2/lookup ")) << request.constData();
        EXPECT_TRUE(request.contains("\r\nContent-Encoding: gzip\r\n"));
        const QUrlQuery form(QString::fromLatin1(uncompressed(request.mid(request.indexOf("\r\n\r\n") + 4))));
        EXPECT_EQ(form.queryItemValue("client"), "key");
        EXPECT_EQ(form.queryItemValue("meta", QUrl::FullyDecoded), "recordings releasegroups releases sources");
        EXPECT_GT(form.queryItemValue("fingerprint").size(), 40);
        EXPECT_FALSE(form.queryItemValue("fingerprint").contains('%'));
        lengths << form.queryItemValue("duration").toInt();
        return lookup(lengths.last());
    }
    RecognitionServices services() const {
        RecognitionServices services = RecognitionServices::at(server.url() + '/');
        services.client = "key";
        services.isAgreed = AppSettings::isRecognitionAgreed();
        services.patience = std::chrono::seconds(3);
        return services;
    }
    // Sound that differs all the time, with a second of silence in front.
    static QString sound(const QString &name, int seconds) {
        const QString path = QDir::homePath() + '/' + name;
        const QString source =
            QString("aevalsrc='if(gt(t,1),0.3*sin(600*t*(1+0.5*sin(t*1.7)))+0.2*sin(1900*t),0)':d=%1:s=44100")
                .arg(seconds + 1);
        EXPECT_TRUE(ChildProcess::run({"ffmpeg", {"-nostdin", "-y", "-f", "lavfi", "-i", source, path}, {}, {}}));
        return path;
    }
    QByteArray cover;
    QList<int> lengths; // that were asked about
    std::function<Reply(int seconds)> lookup = [](int) { return Reply::page(hit(0.95)); };
    LoopbackServer server{[this](const QByteArray &request) { return answer(request); }};
};

TEST_F(IdentifyTest, APieceIsAskedForWithTheLengthsItsSongMayHave) {
    const QString file = sound("piece.mp3", 20);
    CommAudioIdentify recogniser(AppSettings::TessolarConverterPath(), services());
    auto music = recogniser.Start(file, true);
    ASSERT_TRUE(music);
    EXPECT_EQ(lengths, QList<int>({20})) << "the silence in front does not count";
    EXPECT_EQ(music->Title() + music->Artist() + music->Album() + music->Year() + music->Gener(),
              "SongChoirLive2001Folk");
    EXPECT_EQ(music->CoverImage(), cover);

    lengths.clear();
    lookup = [](int seconds) {
        return Reply::page(seconds == 210 ? hit(0.9) : QByteArray(R"({"status":"ok","results":[]})"));
    };
    music = recogniser.Start(file, false);
    ASSERT_TRUE(music);
    EXPECT_EQ(lengths, QList<int>({20, 150, 210}));
    EXPECT_TRUE(music->CoverImage().isEmpty());

    lookup = [](int) { return Reply::page(hit(0.7)); };
    EXPECT_FALSE(recogniser.Start(file, false));
    ASSERT_TRUE(recogniser.proposal());
    EXPECT_EQ(recogniser.proposal()->Title(), "Song");
    EXPECT_TRUE(recogniser.trouble().isEmpty());
    lookup = [](int) { return Reply::page(hit(0.3)); };
    EXPECT_FALSE(recogniser.Start(file, false));
    EXPECT_FALSE(recogniser.proposal());
}

TEST_F(IdentifyTest, EveryFailureIsNoResultAndABusyServiceIsAskedOnceMore) {
    const QString file = sound("piece.mp3", 400 / 20);
    const QByteArray good = hit(0.95);
    const struct {
        const char *what;
        Reply first, second;
        bool isFound;
        int asked;
    } cases[] = {
        {"too many", {"HTTP/1.1 429 No\r\nRetry-After: 1\r\nContent-Length: 0\r\n\r\n"}, Reply::page(good), true, 2},
        {"unavailable", Reply::page("busy", "503 No"), Reply::page("busy", "503 No"), false, 2},
        {"cut off", {"HTTP/1.1 200 OK\r\nContent-Length: 900\r\n\r\n{\"status\""}, Reply::page(good), true, 2},
        {"a wrong key",
         Reply::page(R"({"status":"error","error":{"code":4,"message":"invalid API key"}})", "400 No"),
         {},
         false,
         1},
        {"broken", Reply::page("{\"status\":\"ok\",\"results\":"), {}, false, 1},
        {"endless",
         {"HTTP/1.1 200 OK\r\n\r\n" + QByteArray(4096, '['), Reply::Then::Repeat},
         {"HTTP/1.1 500 No\r\n\r\n"},
         false,
         2},
        {"silent", {"", Reply::Then::Hold}, {"", Reply::Then::Hold}, false, 2},
    };
    for (const auto &[what, first, second, isFound, asked] : cases) {
        SCOPED_TRACE(what);
        lengths.clear();
        lookup = [&, f = first, s = second](int) { return lengths.size() == 1 ? f : s; };
        CommAudioIdentify recogniser(AppSettings::TessolarConverterPath(), services());
        EXPECT_EQ(recogniser.Start(file, false).has_value(), isFound);
        EXPECT_EQ(recogniser.trouble().isEmpty(), isFound);
        EXPECT_EQ(lengths.size(), asked);
    }
    RecognitionServices nobody = services();
    nobody.client.clear();
    lengths.clear();
    CommAudioIdentify recogniser(AppSettings::TessolarConverterPath(), nobody);
    EXPECT_FALSE(recogniser.Start(file, false));
    EXPECT_TRUE(lengths.isEmpty()) << "nothing leaves the machine without a key";
    test::store(QDir::homePath() + "/text.mp3", "no sound");
    EXPECT_FALSE(CommAudioIdentify(AppSettings::TessolarConverterPath(), services())
                     .Start(QDir::homePath() + "/text.mp3", false));
    EXPECT_TRUE(lengths.isEmpty());
}

TEST(RecognitionAccess, IsRenewedByTheMakerUnlessThePersonHasEnteredOne) {
    LoopbackServer::Reply reply = Reply::page("<html>sorry</html>");
    LoopbackServer maker([&](const QByteArray &request) {
        EXPECT_TRUE(request.startsWith("GET /recognition/cantorel.txt "));
        return reply;
    });
    for (const auto &[answer, access] : {std::pair(reply, ""),
                                         {Reply::page("abcd1234", "404 No"), ""},
                                         {Reply::page("abc"), ""},
                                         {Reply::page("aB3-_xyz\n"), "aB3-_xyz"},
                                         {Reply::page("abc"), "aB3-_xyz"},
                                         {Reply::page("other123"), "other123"}}) {
        reply = answer;
        refreshRecognitionAccess(maker.url(), {});
        EXPECT_EQ(AppSettings::recognitionAccess(), access);
    }
    AppSettings::setRecognitionAccess("my-own");
    refreshRecognitionAccess(maker.url(), {});
    EXPECT_EQ(AppSettings::recognitionAccess(), "my-own");
    EXPECT_EQ(maker.requests().size(), 6);
}

struct RecordingsTest : IdentifyTest {
    RecordedAudioInfo &add(const QString &name, int seconds = 8) {
        return list.addRecordedFile(sound(name, seconds), QString("00:00:0%1").arg(seconds), "");
    }
    void identify(const QString &file) {
        identification.identifyID3TagsFromFile(file);
        settle();
    }
    void settle() {
        EXPECT_TRUE(test::eventually([&] { return identification.isIdle(); }));
    }
    static id3Tag tags(const QString &file) { return AudioIdentify::getID3TagFromFile(file).value_or(id3Tag()); }
    static QString path(const QString &name) { return QDir::homePath() + '/' + name; }

    foundation::WallClock clock;
    RecordedList list{QDir::homePath() + "/state", clock};
    RecordingIdentification identification{list, [this](std::stop_token stop) {
                                               return CommAudioIdentify(AppSettings::TessolarConverterPath(),
                                                                        services(), stop);
                                           }};
};

TEST_F(RecordingsTest, ASureSongNamesAndTagsTheFileAndUndoTakesItBack) {
    RecordedAudioInfo &item = add("Rec 1.mp3");
    EXPECT_TRUE(AudioIdentify::saveID3ToFile({"", "", "", "", "", {}, {}}, item.getFileName()));
    const QByteArray before = test::contents(item.getFileName());
    test::store(path("Song.mp3"), "somebody else's");
    std::optional<RecordingIdentification::Identified> done;
    QObject::connect(&identification, &RecordingIdentification::identified,
                     [&](const auto &identified) { done = identified; });
    identification.identifyID3TagsFromFile(item.getFileName());
    identification.identifyID3TagsFromFile(item.getFileName()); // once is enough
    EXPECT_TRUE(item.isIdentifying && item.isInUse());
    EXPECT_EQ(item.status(), "Identifying...");
    settle();
    EXPECT_EQ(lengths.size(), 1);
    EXPECT_EQ(item.getFileName(), path("Song(1).mp3"));
    EXPECT_EQ(test::contents(path("Song.mp3")), "somebody else's");
    EXPECT_FALSE(QFileInfo::exists(path("Rec 1.mp3")));
    EXPECT_EQ(item.artist() + item.album() + item.year() + item.status(), "ChoirLive2001");
    EXPECT_FALSE(item.isInUse() || item.isIdentifying || item.cover().isEmpty());
    EXPECT_EQ(tags(item.getFileName()).id3Title, "Song");
    EXPECT_EQ(tags(item.getFileName()).id3Genre, "Folk");
    RecordedList stored(QDir::homePath() + "/state", clock);
    stored.initRecordedList();
    ASSERT_TRUE(stored.itemWithFile(path("Song(1).mp3")));
    EXPECT_EQ(stored.items()[0]->artist(), "Choir");

    identify(item.getFileName());
    EXPECT_EQ(item.getFileName(), path("Song(1).mp3")) << "its name holds the title";
    ASSERT_TRUE(done);
    done->before = path("Rec 1.mp3");
    QFile::remove(item.getFileName());
    test::store(path("Rec 2.mp3"), before);
    list.remove(item);

    RecordedAudioInfo &again = list.addRecordedFile(path("Rec 2.mp3"), "00:00:08", "");
    identify(again.getFileName());
    EXPECT_EQ(again.getFileName(), path("Song(1).mp3"));
    identification.undo(*done);
    EXPECT_EQ(again.getFileName(), path("Rec 2.mp3"));
    EXPECT_EQ(test::contents(path("Rec 2.mp3")), before);
    EXPECT_EQ(again.artist(), "");
}

TEST_F(RecordingsTest, WhatChangesMeanwhileAndWhatIsNotSureIsLeftAlone) {
    RecordedAudioInfo &changed = add("changed.mp3"), &removed = add("removed.mp3"), &plain = add("plain.wav"),
                      &unsure = add("unsure.mp3");
    const QString first = changed.getFileName();
    lookup = [&](int) {
        QFile file(first);
        EXPECT_TRUE(file.open(QIODevice::Append) && file.write("x") == 1);
        return Reply::page(hit(0.95));
    };
    const QByteArray kept = test::contents(first) + 'x';
    identify(first);
    EXPECT_EQ(test::contents(first), kept);
    EXPECT_EQ(changed.artist() + changed.status(), "");
    EXPECT_FALSE(changed.isInUse());

    lookup = [](int) { return Reply::page(hit(0.95)); };
    const QString gone = removed.getFileName();
    identification.identifyID3TagsFromFile(gone);
    list.remove(removed);
    settle();
    EXPECT_TRUE(QFileInfo::exists(gone)) << "and under its name";

    const QByteArray wave = test::contents(plain.getFileName());
    identify(plain.getFileName());
    EXPECT_EQ(plain.getFileName(), path("Song.wav"));
    EXPECT_EQ(plain.artist(), "Choir");
    EXPECT_EQ(test::contents(plain.getFileName()), wave) << "it takes no tags";

    lookup = [](int) { return Reply::page(hit(0.6)); };
    QString proposed;
    QObject::connect(&identification, &RecordingIdentification::proposed,
                     [&](const QString &file, const RecognisedMusic &music) {
                         proposed = file;
                         identification.use(file, music);
                     });
    identification.identifyID3TagsFromFile(unsure.getFileName());
    EXPECT_TRUE(test::eventually([&] { return !proposed.isEmpty() && identification.isIdle(); }));
    EXPECT_EQ(proposed, path("unsure.mp3"));
    EXPECT_EQ(unsure.getFileName(), path("Song.mp3"));
}

// A service whose answer comes when the test wants it.
struct Held {
    std::promise<void> asked, wanted;
    bool isFirst = true;
    Reply answer() {
        if (std::exchange(isFirst, false)) {
            asked.set_value();
            wanted.get_future().wait();
        }
        return Reply::page(hit(0.95));
    }
    void awaitRequest() { EXPECT_EQ(asked.get_future().wait_for(std::chrono::seconds(60)), std::future_status::ready); }
};

TEST_F(RecordingsTest, TwoAtOnceWithOneTitleKeepTwoFiles) {
    RecordedAudioInfo &first = add("first.mp3"), &second = add("second.mp3");
    for (const RecordedAudioInfo *item : {&first, &second, &first})
        identification.identifyID3TagsFromFile(item->getFileName());
    settle();
    EXPECT_EQ(lengths.size(), 2) << "the same twice is asked once";
    const QStringList names{first.getFileName(), second.getFileName()};
    EXPECT_TRUE(names.contains(path("Song.mp3")) && names.contains(path("Song(1).mp3"))) << qPrintable(names.join(' '));
    for (const QString &name : names)
        EXPECT_EQ(tags(name).id3Title, "Song");
    EXPECT_EQ(QDir(QDir::homePath()).entryList({"*.mp3"}, QDir::Files | QDir::Hidden).size(), 2);
}

TEST_F(RecordingsTest, WhatIsRenamedMeanwhileIsFollowedAndWhatIsGoneIsLeft) {
    RecordedAudioInfo &moved = add("moved.mp3"), &gone = add("gone.mp3");
    for (RecordedAudioInfo *item : {&moved, &gone}) {
        Held held;
        lookup = [&](int) { return held.answer(); };
        identification.identifyID3TagsFromFile(item->getFileName());
        held.awaitRequest();
        if (item == &moved)
            EXPECT_TRUE(list.rename(moved, "elsewhere"));
        else
            QFile::remove(path("gone.mp3"));
        held.wanted.set_value();
        settle();
        EXPECT_FALSE(item->isIdentifying || item->isInUse());
    }
    EXPECT_EQ(moved.getFileName(), path("Song.mp3"));
    EXPECT_FALSE(QFileInfo::exists(path("moved.mp3")) || QFileInfo::exists(path("elsewhere.mp3")));
    EXPECT_EQ(gone.getFileName() + gone.artist(), path("gone.mp3"));
    EXPECT_FALSE(QFileInfo::exists(path("Song(1).mp3")));
}

TEST_F(RecordingsTest, EndingTheProgramMeanwhileLeavesTheFileAsItWas) {
    const QString file = add("asked.mp3").getFileName();
    const QByteArray before = test::contents(file);
    Held held;
    lookup = [&](int) { return held.answer(); };
    {
        RecordingIdentification ending(list, [this](std::stop_token stop) {
            return CommAudioIdentify(AppSettings::TessolarConverterPath(), services(), stop);
        });
        ending.identifyID3TagsFromFile(file);
        held.awaitRequest();
    }
    held.wanted.set_value();
    EXPECT_EQ(test::contents(file), before);
    EXPECT_FALSE(QFileInfo::exists(path("Song.mp3")));
}

TEST_F(IdentifyTest, KilledRightAfterTheNewNameItLosesNothing) {
    AppSettings::setRecognitionAccess("key");
    const QString file = sound("Track1.mp3", 8), named = QDir::homePath() + "/Song.mp3";
    const QByteArray before = test::contents(file);
    const QString state = foundation::stateFolder() + "/cantorel";
    foundation::WallClock clock;
    { RecordedList(state, clock).addRecordedFile(file, "00:00:08", ""); }
    QProcess process;
    process.start(CANTOREL_CLI, {"identify", "--server", server.url(), file});
    while (!QFileInfo::exists(named) && process.state() != QProcess::NotRunning)
        process.waitForFinished(1);
    process.kill();
    process.waitForFinished();
    RecordedList list(state, clock);
    list.initRecordedList();
    ASSERT_EQ(list.items().size(), 1u);
    const QString kept = list.items()[0]->getFileName();
    ASSERT_TRUE(QFileInfo::exists(kept)) << qPrintable(kept);
    const QByteArray now = test::contents(kept);
    EXPECT_TRUE(now == before || AudioIdentify::getID3TagFromFile(kept)->id3Title == "Song") << "nothing by halves";
    lengths.clear();
    EXPECT_EQ(QProcess::execute(CANTOREL_CLI, {"identify", "--server", server.url(), kept}), 0);
    EXPECT_EQ(AudioIdentify::getID3TagFromFile(named)->id3Title, "Song") << "the next time makes it whole";
    EXPECT_EQ(QDir(QDir::homePath()).entryList({"*.mp3"}, QDir::Files | QDir::Hidden), QStringList("Song.mp3"));
}

TEST_F(RecordingsTest, OnlyLongEnoughOnesAreIdentifiedByThemselves) {
    RecordedAudioInfo &shorter = add("five.mp3", 5), &longer = add("six.mp3", 6);
    EXPECT_FALSE(identification.identifyFinished(longer)) << "without access";
    AppSettings::setRecognitionAccess("key");
    EXPECT_FALSE(identification.identifyFinished(shorter));
    EXPECT_TRUE(identification.identifyFinished(longer));
    settle();
    EXPECT_EQ(longer.getFileName(), path("Song.mp3"));
    AppSettings::setAutoIdentifyID3(false);
    EXPECT_FALSE(identification.identifyFinished(add("seven.mp3", 7)));
}

TEST_F(RecordingsTest, NothingIsSentBeforeThePersonKnowsWhat) {
    AppSettings::setRecognitionAgreed(false);
    AppSettings::setRecognitionAccess("key");
    RecordedAudioInfo &first = add("first.mp3"), &second = add("second.mp3");
    int asked = 0, unknown = 0;
    QObject::connect(&identification, &RecordingIdentification::agreementWanted, [&] { ++asked; });
    QObject::connect(&identification, &RecordingIdentification::notIdentified, [&] { ++unknown; });
    EXPECT_TRUE(identification.identifyFinished(first));
    settle();
    EXPECT_EQ(asked, 1);
    identification.notNow();
    EXPECT_TRUE(identification.identifyFinished(first));
    settle();
    EXPECT_EQ(asked, 1) << "what begins by itself asks once";
    identify(second.getFileName());
    EXPECT_EQ(asked, 2) << "a person is asked again";
    EXPECT_TRUE(lengths.isEmpty());
    identification.agree();
    settle();
    EXPECT_EQ(second.getFileName(), path("Song.mp3"));
    EXPECT_EQ(first.getFileName(), path("first.mp3")) << "not now";

    lookup = [](int) { return Reply::page(R"({"status":"ok","results":[]})"); };
    EXPECT_TRUE(identification.identifyFinished(first));
    settle();
    EXPECT_EQ(unknown, 0) << "what begins by itself says nothing in vain";
    EXPECT_TRUE(identification.identifyFinished(first));
    identification.identifyID3TagsFromFile(first.getFileName());
    settle();
    EXPECT_EQ(unknown, 1) << "unless somebody asks for it meanwhile";
    EXPECT_EQ(asked, 2);
}

TEST_F(IdentifyTest, TheCommandSaysWhatItFound) {
    AppSettings::setRecognitionAccess("key");
    AppSettings::setRecognitionAgreed(false);
    const QString file = sound("Track1.mp3", 8);
    bool saysWhatIsSent = false;
    const auto run = [&](const QStringList &files) {
        QProcess process;
        process.start(CANTOREL_CLI, QStringList{"--json", "identify", "--server", server.url()} + files);
        EXPECT_TRUE(process.waitForFinished(60000));
        saysWhatIsSent = process.readAllStandardError().contains("fingerprint");
        return std::pair(process.exitCode(), process.readAllStandardOutput());
    };
    auto [status, said] = run({file});
    EXPECT_EQ(status, 0) << said.constData();
    EXPECT_TRUE(saysWhatIsSent);
    EXPECT_EQ(QJsonDocument::fromJson(said).object(), (QJsonObject{{"file", file},
                                                                   {"title", "Song"},
                                                                   {"artist", "Choir"},
                                                                   {"album", "Live"},
                                                                   {"year", "2001"},
                                                                   {"renamedTo", QDir::homePath() + "/Song.mp3"}}));
    lookup = [](int) { return Reply::page(R"({"status":"ok","results":[]})"); };
    const QString unknown = QDir::homePath() + "/Song.mp3";
    std::tie(status, said) = run({unknown});
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(saysWhatIsSent) << "once";
    EXPECT_EQ(QJsonDocument::fromJson(said).object(), (QJsonObject{{"file", unknown}, {"result", QJsonValue()}}));
    EXPECT_EQ(run({QDir::homePath() + "/missing.mp3"}).first, 1);
}

} // namespace
} // namespace cantorel
