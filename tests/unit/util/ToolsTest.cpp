#include "util/tools/Tools.h"

#include "log/Log.h"
#include "platform/desktop/recorded/RecordedServices.h"
#include "platform/foundation/SearchPaths.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaultFunctions.h"
#include "tests/support/OrdinaryFile.h"
#include "util/tools/KeepAwake.h"
#include "util/tools/ToolSystem.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>
#include <thread>

namespace cantorel {
namespace {

using desktop::CallRecord;
using desktop::InstalledServices;

template <class Condition> bool comesTrue(Condition condition) {
    const QDeadlineTimer deadline(10'000);
    while (!condition() && !deadline.hasExpired())
        std::this_thread::yield();
    return condition();
}

TEST(Tools, DurationsBelowAnHourMayBeShort) {
    const struct {
        int seconds;
        bool shortForm;
        const char *text;
    } cases[] = {{0, true, "00:00"},          {0, false, "00:00:00"},
                 {-1, true, "00:00"},         {3599, true, "59:59"},
                 {3600, true, "01:00:00"},    {3599, false, "00:59:59"},
                 {360000, true, "100:00:00"}, {std::numeric_limits<int>::max(), false, "596523:14:07"}};
    for (const auto &c : cases)
        EXPECT_EQ(Tools::formatDurationFromInteger(c.seconds, c.shortForm).toStdString(), c.text) << c.seconds;
}

TEST(Tools, SecondsAreReadFromTwoOrThreeParts) {
    const struct {
        const char *text;
        int seconds;
    } cases[] = {{"01:02:03", 3723}, {"02:03", 123}, {"7", 0},  {"", 0},
                 {"1:2:3:4", 0},     {"a:5x", 5},    {"::", 0}, {"99999999999:0:0", std::numeric_limits<int>::max()}};
    for (const auto &c : cases)
        EXPECT_EQ(Tools::getSecondsFromString(QString::fromLatin1(c.text)), c.seconds) << c.text;
}

TEST(Tools, SizesAreBinaryAndNeverBytes) {
    const struct {
        qint64 bytes;
        const char *text;
    } cases[] = {{0, " 0.0 KB"},         {500, " 0.5 KB"},     {1024, " 1.0 KB"},
                 {1048576, "1024.0 KB"}, {1048577, " 1.0 MB"}, {qint64(1) << 50, "1024.0 TB"}};
    for (const auto &c : cases)
        EXPECT_EQ(Tools::formatSizeFromByte(c.bytes).toStdString(), c.text) << c.bytes;
}

TEST(Tools, OnlyDigitsAreNumeric) {
    for (const char *text : {"2009", "0"})
        EXPECT_TRUE(Tools::isNumerice(QString::fromLatin1(text))) << text;
    for (const char *text : {"20a9", "", " 1", "-1", "1.5"})
        EXPECT_FALSE(Tools::isNumerice(QString::fromLatin1(text))) << text;
}

TEST(Tools, ADuplicateNameTakesTheFirstFreeNumber) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("b.mp3"));
    EXPECT_EQ(Tools::getNonDuplicateFileName(path), path);
    test::store(path, {});
    test::store(folder.filePath(QStringLiteral("b(1).mp3")), {});
    test::store(folder.filePath(QStringLiteral("b(3).mp3")), {});
    EXPECT_EQ(Tools::getNonDuplicateFileName(path), folder.filePath(QStringLiteral("b(2).mp3")));
}

TEST(Tools, WritingWithoutAppendDeliberatelyOverwritesInPlace) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("f"));
    EXPECT_TRUE(Tools::writeToFile(QStringLiteral("abcdef"), path, false));
    EXPECT_TRUE(Tools::writeToFile(QStringLiteral("é"), path, false));
    EXPECT_EQ(Tools::getFileContent(path), QStringLiteral("écdef"));
    EXPECT_TRUE(Tools::writeToFile(QStringLiteral("!"), path, true));
    EXPECT_EQ(Tools::getFileContent(path), QStringLiteral("écdef!"));
    EXPECT_FALSE(Tools::writeToFile(QStringLiteral("x"), folder.path(), true));
    EXPECT_EQ(Tools::getFileContent(folder.path()), QString());
}

TEST(Tools, AnAutomaticNameIsTheTrackWithTheRunningNumber) {
    AppSettings::setrecordNameBaseOn(7);
    EXPECT_EQ(Tools::getAudioNameFromTrack(), AppSettings::defaultMusicDirectoryPath() + QStringLiteral("/Track7.m4a"));
}

TEST(Tools, MarkersAreReplacedAndNothingReplacesNothing) {
    const QString text = QStringLiteral("Quit [#AppName#]?");
    EXPECT_EQ(Tools::strReplace(text, QStringLiteral("[#AppName#]"), QStringLiteral("X")), QStringLiteral("Quit X?"));
    EXPECT_EQ(Tools::strReplace(text, QStringLiteral("[#AppName#]"), {}), QStringLiteral("Quit ?"));
}

class RecordingAsker : public Asker {
public:
    QStringList told;
    void tell(const QString &title, const QString &message, AlertStyle style, QObject *) override {
        told << QStringLiteral("%1|%2|%3").arg(QString::number(static_cast<int>(style)), title, message);
    }
    int ask(const QString &, const QString &, const QStringList &, QObject *) override { return 0; }
    QString askForNewFile(const QString &folder, const QString &extension) override {
        return folder + QStringLiteral("/chosen.") + extension;
    }
};

TEST(Tools, AlertsGoThroughTheAskerWithTheirStyleAndTitle) {
    RecordingAsker asker;
    const InstalledAsker installed(asker);
    Tools::showErrorMessage(QStringLiteral("bad"), nullptr);
    Tools::showErrorMessage(QStringLiteral("bad"), QStringLiteral("Title"));
    Tools::showInformationMessage(QStringLiteral("good"), nullptr);
    EXPECT_EQ(asker.told, (QStringList{QStringLiteral("2|Cantorel|bad"), QStringLiteral("2|Title|bad"),
                                       QStringLiteral("1|Cantorel|good")}));
    EXPECT_TRUE(Tools::getAudioNameFromDialog().endsWith(QStringLiteral("/chosen.m4a")));
}

TEST(Tools, SoundsScriptsAndFilesGoThroughTheServices) {
    LogFileCheck(QString::fromLatin1(kApplicationLogName));
    const auto record = std::make_shared<CallRecord>();
    const InstalledServices installed(desktop::recordedServices(record));
    Tools::playSoundStartRecording();
    Tools::showInFinderWithFileNames({QStringLiteral("/a"), QStringLiteral("/b")});
    record->failOn(QStringLiteral("execute"), QStringLiteral("not allowed"));
    Tools::ShutdownSystem();
    EXPECT_EQ(record->calls(),
              (QStringList{QStringLiteral("play ") + foundation::resourcePath(QStringLiteral("recordingStart.wav")),
                           QStringLiteral("reveal /a /b"),
                           QStringLiteral("execute tell application \"Finder\" to shut down")}));
    EXPECT_TRUE(Tools::getFileContent(GetLogFilePath()).contains(QStringLiteral("ShutdownSystem: not allowed\n")));
    EXPECT_TRUE(QFile::exists(foundation::resourcePath(QStringLiteral("recordingStart.wav"))));
    EXPECT_TRUE(QFile::exists(foundation::resourcePath(QStringLiteral("recordingStop.wav"))));
}

TEST(Tools, WithoutServicesNothingHappens) {
    Tools::playSoundStopRecording();
    Tools::ShutdownSystem();
    ToolSystem::setAllowKeepSystemWakeEnable(true);
    ToolSystem::setAllowKeepSystemWakeEnable(false);
    EXPECT_FALSE(Tools::openFile(QStringLiteral("/a")));
}

TEST(Tools, TheSystemIsWhatTheServicesSay) {
    auto services = desktop::recordedServices(std::make_shared<CallRecord>());
    services.version.minorVersion = 8;
    services.version.bugFixVersion = 5;
    const InstalledServices installed(std::move(services));
    EXPECT_EQ(Tools::getOSversion(), QStringLiteral("Mac version: 10.8.5"));
    EXPECT_FALSE(Tools::getOSLanguage().isEmpty());
    standardUserDefaults().setArgument(QStringLiteral("AppleLanguages"),
                                       QStringList{QStringLiteral("de"), QStringLiteral("en")});
    EXPECT_EQ(Tools::getOSLanguage(), QStringLiteral("de"));
}

TEST(ToolSystem, KeepAwakeHoldsAtOnceReturnsAndLetsGo) {
    const auto record = std::make_shared<CallRecord>();
    const InstalledServices installed(desktop::recordedServices(record));
    ToolSystem::setAllowKeepSystemWakeEnable(true);
    ToolSystem::setAllowKeepSystemWakeEnable(true);
    EXPECT_TRUE(comesTrue([&] { return record->calls().size() == 1; }));
    ToolSystem::setAllowKeepSystemWakeEnable(false);
    EXPECT_EQ(record->calls(), (QStringList{QStringLiteral("hold Recording sound, or ready for the next recording"),
                                            QStringLiteral("release")}));
}

TEST(KeepAwake, AServiceThatIsMissingIsLoggedOnceAndAskedAgain) {
    LogFileCheck(QString::fromLatin1(kApplicationLogName));
    const auto record = std::make_shared<CallRecord>();
    record->failOn(QStringLiteral("hold"), QStringLiteral("nobody keeps us awake"));
    auto services = desktop::recordedServices(record);
    {
        const KeepAwake keepAwake(services.power, std::chrono::milliseconds(1));
        EXPECT_TRUE(comesTrue([&] { return record->calls().size() >= 5; }));
    }
    EXPECT_EQ(Tools::getFileContent(GetLogFilePath()).count(QStringLiteral("nobody keeps us awake")), 1);
    EXPECT_EQ(record->calls().constLast(), QStringLiteral("release"));
}

} // namespace
} // namespace cantorel
