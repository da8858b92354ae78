// Songs of one's own from their folders to the name of a piece, with the real converter and without any service.

#include "tags/identify/OwnSongs.h"

#include "settings/AppSettings.h"
#include "tags/AudioIdentify.h"
#include "tags/identify/CommAudioIdentify.h"
#include "tags/identify/SongScan.h"
#include "tags/index/SongStore.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/MadeSongs.h"
#include "tests/support/PrivateWorld.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <gtest/gtest.h>

#include <stop_token>
#include <thread>

namespace cantorel {
namespace {

struct OwnSongsTest : testing::Test {
    const QString music = QDir::homePath() + "/Music", store = songStorePath();

    OwnSongsTest() { EXPECT_TRUE(QDir().mkpath(music + "/below")); }
    SongScan scanOf(const QStringList &folders) const {
        return {store, AppSettings::TessolarConverterPath(), folders, {}, {}};
    }
    SongScan::Summary scan(const QStringList &folders) const {
        const auto summary = scanOf(folders).run();
        EXPECT_TRUE(summary) << summary.failure().detail.toStdString();
        return summary ? summary.value() : SongScan::Summary{};
    }
    // Without a service to ask.
    static std::optional<RecognisedMusic> recognise(const QString &file) {
        return CommAudioIdentify(AppSettings::TessolarConverterPath(), {}, {}, songStorePath()).Start(file, true);
    }
    static QString title(const QString &file) {
        const auto music = recognise(file);
        return music ? music->Title() : QString();
    }
    struct Ran {
        int status;
        QByteArray said, told;
    };
    static Ran run(const QStringList &arguments) {
        QProcess process;
        process.start(CANTOREL_CLI, arguments);
        EXPECT_TRUE(process.waitForFinished(60000));
        return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    }
};

TEST_F(OwnSongsTest, PiecesFromAnywhereAreFoundAndOthersAreNot) {
    constexpr int kSongs = 10, kSeconds = 40;
    for (int i = 0; i < kSongs; ++i)
        ASSERT_TRUE(test::writeSong(QStringLiteral("%1/%2.mp3").arg(music).arg(i), i, kSeconds));
    EXPECT_EQ(scan({music}).known, kSongs);
    test::Dice dice(1);
    int right = 0;
    const QString piece = QDir::homePath() + "/piece.mp3";
    for (int i = 0; i < kSongs; ++i) {
        ASSERT_TRUE(test::writeMusic(piece, test::pieceOf(i, dice, kSeconds), {"-b:a", "128k"}));
        right += title(piece) == test::titleOf(i);
        ASSERT_TRUE(test::writeMusic(piece, test::pieceOf(1000 + i, dice, test::kPieceSeconds), {"-b:a", "128k"}));
        EXPECT_EQ(title(piece), "");
    }
    EXPECT_EQ(right, kSongs);
}

TEST_F(OwnSongsTest, AScanReadsWhatIsNewAndForgetsWhatIsGone) {
    const QString flac = music + "/below/One.flac", mp3 = music + "/Two.mp3", movie = music + "/Three.m4a";
    ASSERT_TRUE(test::writeSong(flac, 1, 20) && test::writeSong(mp3, 2, 20) && test::writeSong(movie, 3, 20));
    ASSERT_TRUE(test::writeMusic(music + "/Track1.mp3", test::MadeMusic(4, 10, test::kMusicRate).samples()));
    test::store(music + "/broken.mp3", test::contents(mp3).left(3000));
    const auto first = scan({music});
    EXPECT_EQ(first.known, 3) << "one has no title, and one no sound";
    const auto found = recognise(flac);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->Title() + found->Artist() + found->Album() + found->Gener() + found->Year(),
              "Song 1Band 1MadeFolk2001");
    EXPECT_EQ(scan({music}).read, 0);

    // Renamed, other tags, gone.
    ASSERT_TRUE(QFile::rename(mp3, music + "/below/Two again.mp3"));
    id3Tag tags = AudioIdentify::getID3TagFromFile(movie).value_or(id3Tag());
    tags.id3Title = "Hymn";
    ASSERT_TRUE(AudioIdentify::saveID3ToFile(tags, movie));
    QFile::remove(flac);
    const auto second = scan({music});
    EXPECT_EQ(second.read, 1) << "what was only renamed is not";
    EXPECT_EQ(second.known, 2);
    EXPECT_EQ(title(movie), "Hymn");

    // A folder that is not there now keeps its songs; one that is no longer wanted does not.
    ASSERT_TRUE(QDir().rename(music, QDir::homePath() + "/away"));
    EXPECT_EQ(scan({music}).known, 2);
    EXPECT_EQ(scan({QDir::homePath() + "/away"}).known, 2);
    EXPECT_EQ(scan({music}).known, 0);
}

TEST_F(OwnSongsTest, AScanThatWasEndedGoesOnAndIsAlone) {
    for (int i = 0; i < 6; ++i)
        ASSERT_TRUE(test::writeSong(QStringLiteral("%1/%2.mp3").arg(music).arg(i), i, 20));
    std::stop_source stop;
    SongScan stopped = scanOf({music});
    stopped.stop = stop.get_token();
    stopped.progress = [&](int known) {
        if (known == 2) {
            EXPECT_EQ(scan({music}).end, SongScan::End::Elsewhere);
            EXPECT_FALSE(SongScan::forget(store));
            stop.request_stop();
        }
    };
    const auto ended = stopped.run();
    ASSERT_TRUE(ended);
    EXPECT_EQ(ended.value().end, SongScan::End::Stopped);
    EXPECT_EQ(ended.value().known, 2);

    QProcess killed;
    killed.start(CANTOREL_CLI, {"--json", "identify", "--scan", music});
    const auto isHalfDone = [&] {
        const auto open = openSongStore(store, SongStore::Opening::ToRead);
        return open && open.value() && open.value()->count() && open.value()->count().value() >= 4;
    };
    EXPECT_TRUE(test::eventually(isHalfDone, 60000));
    killed.kill();
    EXPECT_TRUE(killed.waitForFinished());
    SongScan::Summary rest;
    EXPECT_TRUE(test::eventually( // A child that it was just starting has the lock for a moment more.
        [&] {
            rest = scan({music});
            return rest.end != SongScan::End::Elsewhere;
        },
        10000));
    EXPECT_EQ(rest.known, 6);
    EXPECT_LE(rest.read, 2) << "what was read is kept";
    EXPECT_EQ((QFileInfo(store).permissions() & (QFile::ReadGroup | QFile::ReadOther)), QFile::Permissions());
    EXPECT_TRUE(SongScan::forget(store));
    EXPECT_FALSE(QFileInfo::exists(store));
}

TEST_F(OwnSongsTest, AStopWhileASongIsDecodedLeavesItForTheNextScan) {
    ASSERT_TRUE(test::writeSong(music + "/One.mp3", 1, 20));
    SongScan slow = scanOf({music});
    slow.program = QDir::homePath() + "/slow";
    const QString begun = QDir::homePath() + "/begun";
    test::store(slow.program, "#!/bin/sh\ntouch '" + begun.toUtf8() + "'\nexec sleep 60\n");
    ASSERT_TRUE(QFile::setPermissions(slow.program, QFile::ReadOwner | QFile::ExeOwner));
    std::stop_source stop;
    slow.stop = stop.get_token();
    const std::jthread stopper([&] {
        (void)test::eventually([&] { return QFileInfo::exists(begun); }); // The scan goes on for its minute otherwise.
        stop.request_stop();
    });
    const auto stopped = slow.run();
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped.value().end, SongScan::End::Stopped);
    EXPECT_EQ(scan({music}).read, 1);
}

TEST_F(OwnSongsTest, AServiceIsAskedOnlyWhereTheyAreNotSure) {
    ASSERT_TRUE(test::writeSong(music + "/One.mp3", 1, 30) && QFile::copy(music + "/One.mp3", music + "/Two.mp3"));
    ASSERT_EQ(scan({music}).known, 2);
    double score = 0.95;
    test::LoopbackServer server([&](const QByteArray &) {
        return test::LoopbackServer::Reply::page(
            QStringLiteral(
                R"({"status":"ok","results":[{"id":"i","score":%1,"recordings":[{"id":"r","title":"Other"}]}]})")
                .arg(score)
                .toUtf8());
    });
    RecognitionServices services;
    services.lookup = server.url();
    services.client = "key";
    CommAudioIdentify recogniser(AppSettings::TessolarConverterPath(), services, {}, store);
    const auto found = recogniser.Start(music + "/One.mp3", false);
    EXPECT_EQ(found ? found->Title() : QString(), "Song 1");
    EXPECT_TRUE(server.requests().isEmpty());

    id3Tag tags = AudioIdentify::getID3TagFromFile(music + "/Two.mp3").value_or(id3Tag());
    tags.id3Title = "Hymn";
    ASSERT_TRUE(AudioIdentify::saveID3ToFile(tags, music + "/Two.mp3"));
    (void)scan({music});
    score = 0.6;
    EXPECT_FALSE(recogniser.Start(music + "/One.mp3", false)) << "two songs sound like it";
    ASSERT_TRUE(recogniser.proposal());
    EXPECT_NE(recogniser.proposal()->Title(), "Other");
    EXPECT_FALSE(server.requests().isEmpty());
    score = 0.95;
    const auto other = recogniser.Start(music + "/One.mp3", false);
    EXPECT_EQ(other ? other->Title() : QString(), "Other");
}

TEST_F(OwnSongsTest, TheCommandLearnsSongsAndAsksThemFirst) {
    ASSERT_TRUE(test::writeSong(music + "/One.mp3", 1, 30));
    ASSERT_TRUE(QFile::copy(music + "/One.mp3", QDir::homePath() + "/Track1.mp3"));
    const auto scanned = run({"--json", "identify", "--scan", music});
    EXPECT_EQ(scanned.status, 0) << scanned.told.constData();
    EXPECT_EQ(QJsonDocument::fromJson(scanned.said).object(),
              (QJsonObject{{"folders", QJsonArray{music}}, {"songs", 1}, {"read", 1}, {"forgotten", 0}}));
    EXPECT_TRUE(AppSettings::isOwnSongs());
    EXPECT_EQ(OwnSongs::folders(), QStringList{music});
    AppSettings::setRecognitionAccess("key"); // to a service that would be asked for what is not known
    const auto found = run({"--json", "identify", "--server", "http://127.0.0.1:9", QDir::homePath() + "/Track1.mp3"});
    EXPECT_EQ(found.status, 0) << found.told.constData();
    EXPECT_EQ(QJsonDocument::fromJson(found.said).object().value("renamedTo"), QDir::homePath() + "/Song 1.mp3");
    const QString other = QDir::homePath() + "/other.mp3";
    ASSERT_TRUE(test::writeMusic(other, test::MadeMusic(5, 10, test::kMusicRate).samples()));
    const auto unknown = run({"--json", "identify", "--local", other});
    EXPECT_EQ(unknown.status, 0) << unknown.told.constData();
    EXPECT_EQ(QJsonDocument::fromJson(unknown.said).object(), (QJsonObject{{"file", other}, {"result", QJsonValue()}}));
    EXPECT_EQ(run({"identify", "--scan", QDir::homePath() + "/missing"}).status, 2);
    EXPECT_EQ(run({"identify"}).status, 2);
    EXPECT_EQ(run({"identify", "--forget"}).status, 0);
    EXPECT_FALSE(QFileInfo::exists(store));
    EXPECT_FALSE(AppSettings::isOwnSongs());
}

TEST_F(OwnSongsTest, TheyAreReadInTheBackgroundOnlyWhereThatIsWanted) {
    ASSERT_TRUE(test::writeSong(music + "/One.mp3", 1, 20));
    AppSettings::setOwnSongFolders(music);
    OwnSongs songs(AppSettings::TessolarConverterPath(), store);
    songs.update();
    EXPECT_FALSE(songs.isReading());
    AppSettings::setOwnSongs(true);
    songs.update();
    EXPECT_TRUE(songs.isReading());
    EXPECT_TRUE(test::eventually([&] { return !songs.isReading(); }));
    EXPECT_EQ(songs.known(), 1);
    EXPECT_TRUE(songs.trouble().isEmpty());
    songs.forget();
    EXPECT_TRUE(test::eventually([&] { return !QFileInfo::exists(store); }));
    EXPECT_EQ(songs.known(), 0);
    EXPECT_FALSE(AppSettings::isOwnSongs());
    EXPECT_TRUE(CommAudioIdentify::songsInUse().isEmpty());

    QFile::remove(store);
    ASSERT_TRUE(QDir().mkpath(store)); // where a file should be
    AppSettings::setOwnSongs(true);
    songs.update();
    EXPECT_TRUE(test::eventually([&] { return !songs.isReading(); }));
    EXPECT_EQ(songs.trouble().key(), "SongsNotKept");
}

} // namespace
} // namespace cantorel
