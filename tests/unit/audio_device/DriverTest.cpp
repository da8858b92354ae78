#include "audio_device/AudioKextTools.h"
#include "audio_device/ZQAudioKextKit.h"
#include "audio_device/ZQAudioKextLog.h"
#include "platform/desktop/Services.h"
#include "platform/foundation/SearchPaths.h"
#include "tests/support/EmbeddedWorld.h"
#include "tests/support/OrdinaryFile.h"

#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

using namespace cantorel;

namespace {

// A script host that does as it is told and remembers what it was given.
struct ScriptedHost : desktop::ScriptHost {
    QString compiled, executed;
    bool compiles = true, runs = true;
    foundation::Result<void> compile(const QString &source) override {
        compiled = source;
        return compiles ? foundation::Result<void>()
                        : foundation::Failure{QStringLiteral("It does not compile."), "line 1"};
    }
    foundation::Result<QString> execute(const QString &source) override {
        executed = source;
        if (runs)
            return QString();
        return foundation::Failure{QStringLiteral("It does not run."), "status 1"};
    }
};

struct DriverTest : testing::Test {
    DriverTest() {
        QDir().mkpath(folder);
        qputenv("CANTOREL_RESOURCES", folder.toUtf8());
        auto owned = std::make_unique<ScriptedHost>();
        host = owned.get();
        desktop::Services services;
        services.scripts = std::move(owned);
        installed = std::make_unique<desktop::InstalledServices>(std::move(services));
    }
    ~DriverTest() override { ZQAudioKextKit::end(); }
    void write(const char *name, const QByteArray &text) { test::store(folder + "/" + name, text); }
    QString folder = QDir::homePath() + "/resources";
    ScriptedHost *host = nullptr;
    std::unique_ptr<desktop::InstalledServices> installed;
};

} // namespace

TEST_F(DriverTest, NamesFollowTheVersionOfTheServices) {
    const struct {
        int major, minor;
        const char *driver, *path;
        bool after1010;
    } cases[] = {{10, 8, "SystemSound.kext", "/System/Library/Extensions/", false},
                 {10, 9, "Tessolar_AudioDevice.kext", "/Library/Extensions/", false},
                 {10, 11, "Tessolar_AudioDevice.kext", "/Library/Extensions/", true},
                 {11, 2, "SystemSound.kext", "/System/Library/Extensions/", false},
                 {9, 15, "SystemSound.kext", "/System/Library/Extensions/", false}};
    for (const auto &[major, minor, driver, path, after1010] : cases) {
        auto &version = desktop::InstalledServices::current().version;
        version.majorVersion = major;
        version.minorVersion = minor;
        EXPECT_EQ(AudioKextTools::audioDriverName(), driver);
        EXPECT_EQ(AudioKextTools::kextInstallPath(), path);
        EXPECT_EQ(ZQAudioKextKit::isMacVersionGreatThan1010(), after1010);
        EXPECT_EQ(AudioKextTools::audioDriverKextPath(), folder + "/" + driver);
    }
}

TEST_F(DriverTest, LoaderFillsInThePlaceholdersAndReportsWhatHappened) {
    EXPECT_FALSE(ZQAudioKextKit::loadAudioKext()) << "no driver";
    write("Tessolar_AudioDevice.kext", "driver");
    EXPECT_FALSE(ZQAudioKextKit::loadAudioKext()) << "no script";
    EXPECT_FALSE(ZQAudioKextKit::loaderFailure().isEmpty());
    EXPECT_EQ(host->compiled, QString());

    write("audioDriver_install.scpt", "cp '{dirverPath}' '{dirverInstallPath}{driverName}' {dirverPath}");
    EXPECT_TRUE(ZQAudioKextKit::loadAudioKext());
    const QString driver = folder + "/Tessolar_AudioDevice.kext";
    EXPECT_EQ(host->executed, "cp '" + driver + "' '/Library/Extensions/Tessolar_AudioDevice.kext' " + driver);
    EXPECT_TRUE(ZQAudioKextKit::loaderFailure().isEmpty());

    host->runs = false;
    EXPECT_FALSE(ZQAudioKextKit::loadAudioKext());
    EXPECT_EQ(ZQAudioKextKit::loaderFailure(), QStringLiteral("It does not run."));
    host->compiles = false;
    host->executed.clear();
    EXPECT_FALSE(ZQAudioKextKit::loadAudioKext());
    EXPECT_EQ(host->executed, QString());

    host->compiles = host->runs = true;
    write("audioDriver_install.scpt", "plain script");
    EXPECT_TRUE(ZQAudioKextKit::loadAudioKext());
    EXPECT_EQ(host->executed, "plain script");
}

TEST_F(DriverTest, LogWritesOnlyToAFileThatIsThere) {
    const QString path = folder + "/kit.log";
    ZQAudioKextLog::initWithLogPath(path);
    EXPECT_EQ(ZQAudioKextLog::LogFilePath(), QString());
    ZQAudioKextLog::I("dropped");
    EXPECT_FALSE(QFile::exists(path));
    write("kit.log", "");
    ZQAudioKextLog::initWithLogPath(path);
    ZQAudioKextLog::I("one");
    ZQAudioKextLog::E("two");
    ZQAudioKextLog::Ex("three");
    const QString text = test::contents(path);
    EXPECT_TRUE(
        QRegularExpression("^\\[\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\] INOF: one\n\\[[^]]+\\] ERROR: two\n"
                           "\\[[^]]+\\] INOF: three\n$")
            .match(text)
            .hasMatch())
        << text.toStdString();
    EXPECT_TRUE(ZQAudioKextLog::writeData("new", false));
    EXPECT_EQ(test::contents(path), "new");
    QFile::remove(path);
    EXPECT_FALSE(ZQAudioKextLog::writeData("gone", true));
}
