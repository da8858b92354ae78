#include "util/tools/Tools.h"

#include "log/Log.h"
#include "platform/desktop/recorded/RecordedServices.h"
#include "platform/foundation/SearchPaths.h"
#include "settings/AppSettings.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/PrivateWorld.h"
#include "util/tools/KeepAwake.h"
#include "util/tools/ToolSystem.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

namespace cantorel {
namespace {

using desktop::CallRecord;
using desktop::InstalledServices;

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

TEST(Tools, SizesAreBinaryAndNeverBytes) {
    const struct {
        qint64 bytes;
        const char *text;
    } cases[] = {{0, " 0.0 KB"},         {500, " 0.5 KB"},     {1024, " 1.0 KB"},
                 {1048576, "1024.0 KB"}, {1048577, " 1.0 MB"}, {qint64(1) << 50, "1024.0 TB"}};
    for (const auto &c : cases)
        EXPECT_EQ(Tools::formatSizeFromByte(c.bytes).toStdString(), c.text) << c.bytes;
}

TEST(Tools, ADuplicateNameTakesTheFirstFreeNumber) {
    const QTemporaryDir folder;
    const QString path = folder.filePath("b.mp3");
    EXPECT_EQ(Tools::getNonDuplicateFileName(path), path);
    test::store(path, {});
    test::store(folder.filePath("b(1).mp3"), {});
    test::store(folder.filePath("b(3).mp3"), {});
    EXPECT_EQ(Tools::getNonDuplicateFileName(path), folder.filePath("b(2).mp3"));
}

TEST(Tools, WritingWithoutAppendDeliberatelyOverwritesInPlace) {
    const QTemporaryDir folder;
    const QString path = folder.filePath("f");
    EXPECT_TRUE(Tools::writeToFile("abcdef", path, false));
    EXPECT_TRUE(Tools::writeToFile("é", path, false));
    EXPECT_EQ(Tools::getFileContent(path), "écdef");
    EXPECT_TRUE(Tools::writeToFile("!", path, true));
    EXPECT_EQ(Tools::getFileContent(path), "écdef!");
    EXPECT_FALSE(Tools::writeToFile("x", folder.path(), true));
    EXPECT_EQ(Tools::getFileContent(folder.path()), QString());
}

class RecordingAsker : public Asker {
public:
    QStringList told;
    void tell(const QString &title, const QString &message, AlertStyle style, QObject *) override {
        told << QStringLiteral("%1|%2|%3").arg(QString::number(static_cast<int>(style)), title, message);
    }
    int ask(const QString &, const QString &, const QStringList &, QObject *) override { return 0; }
    QString askForNewFile(const QString &folder, const QString &extension) override {
        return folder + "/chosen." + extension;
    }
};

TEST(Tools, AlertsGoThroughTheAskerWithTheirStyleAndTitle) {
    RecordingAsker asker;
    const InstalledAsker installed(asker);
    Tools::showErrorMessage("bad", nullptr);
    Tools::showErrorMessage("bad", "Title");
    Tools::showInformationMessage("good", nullptr);
    EXPECT_EQ(asker.told, (QStringList{"2|Cantorel|bad", "2|Title|bad", "1|Cantorel|good"}));
    EXPECT_TRUE(Tools::getAudioNameFromDialog().endsWith("/chosen.m4a"));
}

TEST(Tools, SoundsScriptsAndFilesGoThroughTheServices) {
    LogFileCheck(kApplicationLogName);
    const auto record = std::make_shared<CallRecord>();
    const InstalledServices installed(desktop::recordedServices(record));
    Tools::playSoundStartRecording();
    Tools::showInFinderWithFileNames({"/a", "/b"});
    record->failOn("execute", "not allowed");
    Tools::ShutdownSystem();
    EXPECT_EQ(record->calls(), (QStringList{"play " + foundation::resourcePath("recordingStart.wav"), "reveal /a /b",
                                            "execute tell application \"Finder\" to shut down"}));
    EXPECT_TRUE(Tools::getFileContent(GetLogFilePath()).contains("ShutdownSystem: not allowed\n"));
    EXPECT_TRUE(QFile::exists(foundation::resourcePath("recordingStart.wav")));
    EXPECT_TRUE(QFile::exists(foundation::resourcePath("recordingStop.wav")));
}

TEST(Tools, WithoutServicesNothingHappens) {
    Tools::playSoundStopRecording();
    Tools::ShutdownSystem();
    ToolSystem::setAllowKeepSystemWakeEnable(true);
    ToolSystem::setAllowKeepSystemWakeEnable(false);
    EXPECT_FALSE(Tools::openFile("/a"));
}

TEST(ToolSystem, KeepAwakeHoldsAtOnceReturnsAndLetsGo) {
    const auto record = std::make_shared<CallRecord>();
    const InstalledServices installed(desktop::recordedServices(record));
    ToolSystem::setAllowKeepSystemWakeEnable(true);
    ToolSystem::setAllowKeepSystemWakeEnable(true);
    EXPECT_TRUE(test::eventually([&] { return record->calls().size() == 1; }));
    ToolSystem::setAllowKeepSystemWakeEnable(false);
    EXPECT_EQ(record->calls(), (QStringList{"hold Recording sound, or ready for the next recording", "release"}));
}

TEST(KeepAwake, AServiceThatIsMissingIsLoggedOnceAndAskedAgain) {
    LogFileCheck(kApplicationLogName);
    const auto record = std::make_shared<CallRecord>();
    record->failOn("hold", "nobody keeps us awake");
    auto services = desktop::recordedServices(record);
    {
        const KeepAwake keepAwake(services.power, std::chrono::milliseconds(1));
        EXPECT_TRUE(test::eventually([&] { return record->calls().size() >= 5; }));
    }
    EXPECT_EQ(Tools::getFileContent(GetLogFilePath()).count("nobody keeps us awake"), 1);
    EXPECT_EQ(record->calls().constLast(), "release");
}

} // namespace
} // namespace cantorel
