#include "cli/Commands.h"

#include "cli/TerminalAsker.h"
#include "platform/foundation/Console.h"
#include "platform/media/DiskSpace.h"
#include "recording/library/RecordedAudioInfo.h"
#include "settings/AppSettings.h"
#include "settings/SettingsTable.h"
#include "settings/UserDefaultFunctions.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/Wave.h"
#include "tests/unit/cli/CommandRun.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <stdexcept>
#include <vector>

namespace cantorel {
namespace {

QStringList words(const char *text) { return QString::fromUtf8(text).split(' '); }

QJsonObject json(const QString &line) { return QJsonDocument::fromJson(line.toUtf8()).object(); }

TEST(DoctorCommand, AnswersTheFreeSpaceThatARecordingGoesBy) {
    const QString nearlyNone = "/proc/self"; // a file system without room
    for (const QString &path : {QDir::homePath(), nearlyNone}) {
        AppSettings::setOutputPath(path);
        const bool enough = media::freeBytes(path).value_or(0) > 100 * 1024 * 1024;
        const CommandRun told = runCommand(words("doctor --backend embedded"));
        EXPECT_EQ(told.out.filter("free space").value(0).startsWith("ok"), enough)
            << told.out.join(u'\n').toStdString();
    }
}

TEST(LibraryCommand, ListsRenamesAndRemovesWithoutLosingAnything) {
    const QTemporaryDir folder;
    const QString one = folder.filePath("One.mp3"), two = folder.filePath("Two.mp3");
    QVariantList stored;
    for (const QString &path : {one, two}) {
        test::touch(path);
        stored.append(archivedItem({path, "00:00:05", "1.00 MB", "now", "somebody", {}, {}}));
    }
    AppSettings::setRecordedMovieList(stored);
    const CommandRun listed = runCommand(words("--json library list"));
    ASSERT_EQ(listed.out.size(), 2);
    EXPECT_EQ(json(listed.out[1])["file"], two);
    EXPECT_EQ(json(listed.out[0])["artist"], "somebody");

    const QString other = folder.filePath("Other.mp3");
    const struct {
        QStringList arguments;
        int status;
        bool one, two, other;
    } cases[] = {{{"library", "rename", one, "Two"}, 1, true, true, false},
                 {{"library", "rename", one, "/"}, 2, true, true, false},
                 {{"library", "rename", other, "X"}, 1, true, true, false},
                 {{"library", "rename", one, "Other/"}, 0, false, true, true},
                 {{"library", "remove", one}, 1, false, true, true},
                 {{"library", "remove", two}, 0, false, true, true},
                 {{"library", "remove", other, "--delete"}, 0, false, true, false}};
    for (const auto &[arguments, status, hasOne, hasTwo, hasOther] : cases) {
        SCOPED_TRACE(arguments.join(' ').toStdString());
        const CommandRun done = runCommand(arguments);
        EXPECT_EQ(done.status, status);
        EXPECT_EQ(done.error.isEmpty(), status == 0);
        EXPECT_EQ(QFile::exists(one), hasOne);
        EXPECT_EQ(QFile::exists(two), hasTwo);
        EXPECT_EQ(QFile::exists(other), hasOther);
    }
    EXPECT_TRUE(runCommand(words("library list")).out.isEmpty());

    // Where nothing can be saved, nothing has changed, and one sentence says so.
    AppSettings::setRecordedMovieList(QVariantList() << stored[1]);
    const QString settings = standardUserDefaults().filePath();
    const QString lock = QFileInfo(settings).path() + "/.com.tessolar.Cantorel.lock";
    ASSERT_TRUE(QFile::remove(lock) && QDir().mkpath(lock));
    for (const QStringList &arguments : {QStringList{"library", "remove", two}, {"library", "rename", two, "New"}}) {
        const CommandRun failed = runCommand(arguments);
        EXPECT_EQ(failed.status, 1);
        EXPECT_TRUE(failed.error.constLast().contains(settings));
    }
    EXPECT_EQ(runCommand(words("--json library list")).out, QStringList{listed.out[1]});
}

TEST(TagsCommand, ShowsAndWritesWhatIsNamedAndHasTheListKnow) {
    const QTemporaryDir folder;
    const QString one = folder.filePath("One.mp3"), two = folder.filePath("two.mp3"), none = folder.filePath("none");
    for (const QString &path : {one, two}) // silence
        test::store(path, (QByteArray("\xFF\xFB\x90\x64") + QByteArray(413, '\0')).repeated(9));
    QImage(400, 200, QImage::Format_RGB32).save(none, "png");
    AppSettings::setRecordedMovieList({archivedItem({one, "00:00:05", "1.00 MB", "now", "somebody", {}, {}})});
    const auto tags = [](const QStringList &more) { return runCommand(QStringList{"--json", "tags"} + more); };
    EXPECT_EQ(tags({one}).out, QStringList{R"({"album":"","artist":"","cover":null,"genre":"","title":"","year":""})"});
    const CommandRun written = tags({one, "--title", "T", "--artist", "A", "--year", "1999", "--cover", none});
    EXPECT_EQ(written.status, 0);
    const QJsonObject object = json(written.out.value(0));
    EXPECT_EQ(object["artist"], "A");
    EXPECT_EQ(object["cover"].toObject()["height"], 150);
    EXPECT_EQ(written.error, QStringList());
    const QJsonObject listed = json(runCommand(words("--json library list")).out.value(0));
    EXPECT_EQ(listed["artist"], "A");
    EXPECT_EQ(listed["year"], "1999");
    EXPECT_NE(listed["size"], "1.00 MB");

    const CommandRun cleared = tags({one, two, "--title=", "--year", "19x9", "--cover", "none"});
    EXPECT_EQ(cleared.status, 0);
    EXPECT_EQ(cleared.error.size(), 1); // that the year stays
    EXPECT_EQ(json(cleared.out.value(0))["title"], "");
    EXPECT_EQ(json(cleared.out.value(0))["artist"], "A");
    EXPECT_EQ(json(cleared.out.value(0))["year"], "1999");
    EXPECT_TRUE(json(cleared.out.value(0))["cover"].isNull());
    EXPECT_EQ(json(cleared.out.value(1))["file"], two);

    test::store(folder.filePath("text.mp3"), "text");
    test::store(folder.filePath("song.m4a"), "text");
    const struct {
        QStringList arguments;
        int status;
        qsizetype shown;
    } cases[] = {{{folder.filePath("gone.mp3"), one}, 1, 1},
                 {{folder.filePath("text.mp3")}, 1, 0},
                 {{folder.filePath("text.mp3"), one, "--title", "X"}, 1, 1},
                 {{folder.filePath("song.m4a"), "--cover", none}, 1, 0},
                 {{one, "--cover", folder.filePath("text.mp3")}, 2, 0},
                 {{one, "--cover", folder.filePath("gone.png")}, 2, 0},
                 {{"--title", "X"}, 2, 0}};
    for (const auto &[arguments, status, shown] : cases) {
        const CommandRun run = tags(arguments);
        EXPECT_EQ(run.status, status) << arguments.join(' ').toStdString();
        EXPECT_EQ(run.out.size(), shown);
        EXPECT_TRUE(run.error.value(run.error.size() - 1).endsWith('.'));
    }
    EXPECT_EQ(test::contents(folder.filePath("text.mp3")), "text");
    EXPECT_TRUE(tags({folder.filePath("song.m4a"), "--cover", none}).error.value(0).contains("--cover"));
}

TEST(WaveCommand, AnswersTheSeriesAndWritesItInPlaceOfAnother) {
    const QTemporaryDir folder;
    const QString sound = folder.filePath("sound.wav"), raw = folder.filePath("levels");
    std::vector<float> samples(2 * 30, 0.25f); // two groups of frames, and eight that make none
    for (std::size_t i = 0; i < 22; ++i)
        samples[i] = -0.5f;
    ASSERT_TRUE(test::writeWav(sound, samples));
    QFile old(raw);
    ASSERT_TRUE(old.open(QIODevice::WriteOnly) && old.write("longer than what follows") > 0);
    old.close();
    const CommandRun run = runCommand({"--json", "wave", sound, "--raw", raw});
    ASSERT_EQ(run.status, 0);
    EXPECT_EQ(
        run.out,
        QStringList(R"({"channels":2,"duration":0.000625,"max":8192,"min":-16384,"sampleRate":48000,"values":2})"));
    EXPECT_EQ(test::contents(raw), QByteArray("\x00\xC0\x00\x20", 4));

    const QString picture = folder.filePath("wave.png");
    ASSERT_EQ(runCommand({"wave", sound, "--png", picture, "--size", "300x100"}).status, 0);
    const QByteArray png = test::contents(picture);
    EXPECT_TRUE(png.startsWith("\x89PNG"));
    EXPECT_EQ(png.mid(16, 8), QByteArray("\0\0\x01\x2C\0\0\0\x64", 8)); // its sides
    for (const char *size : {"300", "10x100", "300x20", "99999x100", "axb"})
        EXPECT_EQ(runCommand({"wave", sound, "--png", picture, "--size", size}).status, 2) << size;

    EXPECT_EQ(runCommand({"wave", folder.filePath("missing.wav")}).status, 1);
    ASSERT_EQ(runCommand({"wave", raw, "--raw", sound}).status, 1);
    EXPECT_GT(QFileInfo(sound).size(), 200); // not touched by a reading that fails
}

TEST(SettingsCommand, GetAnswersWhatTheGetterAnswersInItsOwnType) {
    EXPECT_EQ(runCommand(words("settings get audioFormat")).out, QStringList{"0"});
    const auto value = [](const char *command) { return json(runCommand(words(command)).out.value(0)).value("value"); };
    EXPECT_EQ(value("settings get audioFormat --json"), QJsonValue(0));
    EXPECT_EQ(value("--json settings get isAutoSkipSilence"), QJsonValue(true));
    EXPECT_EQ(value("settings --json get microphoneName"), QJsonValue(QString()));
    EXPECT_EQ(value("settings get outputFolderPath --json"), QJsonValue(AppSettings::defaultMusicDirectoryPath()));
    EXPECT_EQ(value("settings get isBeep --json"), QJsonValue()); // it has no getter
}

TEST(SettingsCommand, ListShowsEveryRowOnceAndNotTheArchives) {
    const CommandRun listed = runCommand(words("settings list --json"));
    ASSERT_EQ(listed.out.size(), static_cast<qsizetype>(settingRows().size()));
    for (qsizetype i = 0; i < listed.out.size(); ++i)
        EXPECT_EQ(json(listed.out[i]).value("key").toString(), settingRows()[static_cast<std::size_t>(i)].key);
    EXPECT_TRUE(runCommand(words("settings list")).out.contains("audioFormat = 0"));
}

TEST(SettingsCommand, SetStoresAValueOfTheRightTypeOnly) {
    const struct {
        const char *command;
        int status;
        const char *out;
    } cases[] = {
        {"settings set audioFormat 3", 0, "3"},
        {"settings set isAutoSkipSilence off", 0, "false"},
        {"settings set hotkeyStartRecording ALT", 0, "alt"},
        {"settings set microphoneName -- -x", 0, "-x"},
        {"settings set audioFormat 8", 2, ""},
        {"settings set audioFormat 99999999999", 2, ""},
        {"settings set isAutoSkipSilence maybe", 2, ""},
        {"settings set Language Klingon", 2, ""},
        {"settings set outputFolderPath /no/such", 2, ""},
        {"settings set noSuchKey 1", 2, ""},
        {"settings get noSuchKey", 2, ""},
        {"", 2, ""},
        {"settings get audioFormat more", 2, ""},
        {"--backend tape settings list", 2, ""},
    };
    for (const auto &c : cases) {
        const CommandRun result = runCommand(words(c.command));
        EXPECT_EQ(result.status, c.status) << c.command;
        EXPECT_EQ(result.out.value(0).toStdString(), c.out) << c.command;
        EXPECT_EQ(result.error.size(), c.status == 0 ? 0 : 1) << c.command;
        EXPECT_TRUE(c.status == 0 || result.error.constLast().endsWith('.')) << c.command;
    }
    EXPECT_EQ(AppSettings::getAudioFormat(), 3);
}

TEST(SettingsCommand, AFolderIsStoredByItsWholePath) {
    EXPECT_EQ(runCommand({"settings", "set", "outputFolderPath", "."}).status, 0);
    EXPECT_EQ(AppSettings::outputPath(), QDir::currentPath());
}

TEST(SettingsCommand, NothingThatIsPrintedActsOnTheTerminal) {
    const QString name = "a\x1B[31m\xC2\x9B\x7F\xE2\x80\xAE ä";
    AppSettings::setMicrophone(name);
    const CommandRun shown = runCommand(words("settings get microphoneName"));
    EXPECT_EQ(shown.out, QStringList{"a\uFFFD[31m\uFFFD\uFFFD\uFFFD ä"});
    const CommandRun asJson = runCommand(words("--json settings get microphoneName"));
    EXPECT_EQ(json(asJson.out.value(0))["value"], name);
    EXPECT_EQ(foundation::printable(asJson.out.value(0)), asJson.out.value(0));
    EXPECT_FALSE(runCommand({"settings", "get", name}).error.value(0).contains(QChar(0x1B)));
}

TEST(SettingsCommand, AValueThatCannotBeSavedIsAFailureThatNamesTheFile) {
    ASSERT_TRUE(QDir().mkpath(standardUserDefaults().filePath())); // a folder in the file's place
    const CommandRun result = runCommand(words("settings set audioFormat 1"));
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.out.isEmpty());
    EXPECT_TRUE(result.error.constLast().contains(standardUserDefaults().filePath()));
    const CommandRun read = runCommand(words("settings get autoFilterSeconds"));
    EXPECT_EQ(read.status, 0);
    EXPECT_EQ(read.out.value(0), "5");
}

TEST(LangCommand, TextsAndLanguagesAreShown) {
    EXPECT_EQ(runCommand(words("lang get commTitle")).out, QStringList{"Title"});
    EXPECT_EQ(json(runCommand(words("lang get commTitle --json")).out.value(0)).value("text"), "Title");
    EXPECT_EQ(runCommand(words("lang get commTitle --code xx")).status, 0);
    EXPECT_EQ(runCommand(words("lang get noSuchKey")).status, 2);
    EXPECT_EQ(runCommand(words("lang get commTitle --language Klingon")).status, 2);
    EXPECT_EQ(runCommand(words("lang get commTitle --language German --code de")).status, 2);
    const CommandRun listed = runCommand(words("lang list --json"));
    ASSERT_EQ(listed.out.size(), 19);
    EXPECT_EQ(listed.out[1].toStdString(), R"({"codes":["hk","zh"],"display":"简体中文","name":"ChineseSimplified"})");
}

TEST(CommandLine, HelpIsOfferedByEveryCommandWithAnExample) {
    for (const char *command : {"--help", "settings --help", "settings get --help", "lang get --help"}) {
        const CommandRun result = runCommand(words(command));
        EXPECT_EQ(result.status, 0) << command;
        EXPECT_TRUE(result.error.isEmpty()) << command;
        EXPECT_TRUE(result.out.join('\n').contains("Example: cantorel-cli ")) << command;
    }
    EXPECT_EQ(runCommand(words("--version")).out.value(0), "cantorel-cli 2.5.0");
}

TEST(CommandLine, WhatIsNotUnderstoodIsNamed) {
    for (const char *command : {"dance", "settings dance", "settings list --dance", "--dance settings list"}) {
        const CommandRun result = runCommand(words(command));
        EXPECT_EQ(result.status, 2) << command;
        EXPECT_TRUE(result.error.value(0).contains("dance")) << result.error.value(0).toStdString();
    }
}

void addThrowing(CLI::App &root, CommandSession &session) {
    root.add_subcommand("throw")->callback(
        [&session] { session.action = []() -> Outcome { throw std::runtime_error("planted"); }; });
}

void addFailing(CLI::App &root, CommandSession &session) {
    root.add_subcommand("fail")->callback(
        [&session] { session.action = [] { return Outcome::failed(QStringLiteral("No luck.")); }; });
}

TEST(CommandLine, AFailureEndsInItsSentenceAndWhatIsThrownInOneToo) {
    static constexpr AddCommand kCommands[] = {addThrowing, addFailing};
    const CommandRun failed = runCommand({"fail"}, kCommands);
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.error, QStringList{QStringLiteral("No luck.")});
    const CommandRun thrown = runCommand({"throw"}, kCommands);
    EXPECT_EQ(thrown.status, 1);
    EXPECT_TRUE(thrown.error.join(' ').contains("planted"));
    EXPECT_TRUE(thrown.error.constLast().endsWith('.'));
}

TEST(TerminalAsker, TakesTheSafeChoiceAndSaysSo) {
    TerminalAsker asker;
    testing::internal::CaptureStderr();
    EXPECT_EQ(asker.ask("Driver", "Install?", {"Yes", "No"}, nullptr), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Driver: Install? [No]\n");
}

using test::LoopbackServer;
using Reply = LoopbackServer::Reply;

CommandRun check(const QStringList &options) { return runCommand(QStringList{"update", "check"} + options); }

TEST(UpdateCommand, TellsWhatTheServerDescribes) {
    LoopbackServer server([](const QByteArray &) {
        return Reply::page("<u><AppID>c</AppID><AppVersion>2.6.0</AppVersion><AppUpdateAddress>https://a.example"
                           "</AppUpdateAddress><AppChangeLogs>One[CRLF]Two</AppChangeLogs></u>");
    });
    const CommandRun json = check({"--json", "--server", server.url()});
    EXPECT_EQ(json.status, 0);
    const QJsonObject expected{{"appID", "c"},
                               {"appVersion", "2.6.0"},
                               {"appUpdateAddress", "https://a.example"},
                               {"appUpdateFiles", QJsonValue()},
                               {"appUsers", QJsonValue()},
                               {"appChangeLogs", "One\nTwo"},
                               {"appUpdateSize", QJsonValue()},
                               {"appFailedUpdateDownloadURL", QJsonValue()}};
    EXPECT_EQ(QJsonDocument::fromJson(json.out.value(0).toUtf8()).object(), expected)
        << json.out.join(u' ').toStdString();
    const CommandRun text = check({"--server", server.url()});
    EXPECT_EQ(text.out, (QStringList{"Version 2.6.0 is available: https://a.example", "One", "Two"}));
}

TEST(UpdateCommand, FailsInOneSentence) {
    LoopbackServer empty([](const QByteArray &) { return Reply::page(""); });
    LoopbackServer page([](const QByteArray &) { return Reply::page("<html>Not here</html>", "404 Not Found"); });
    const struct {
        QString server;
        int status;
    } cases[] = {{empty.url(), 1},          {page.url(), 1},    {"http://127.0.0.1:1", 1},
                 {"file:///etc/passwd", 2}, {"example.com", 2}, {"https://", 2}};
    for (const auto &[server, status] : cases) {
        const CommandRun run = check({"--json", "--server", server});
        EXPECT_EQ(run.status, status) << server.toStdString();
        EXPECT_TRUE(run.out.isEmpty());
        ASSERT_EQ(run.error.size(), 1);
        EXPECT_TRUE(run.error[0].endsWith('.')) << run.error[0].toStdString();
    }
}

} // namespace
} // namespace cantorel
