// The virtual device is installed and removed by the product's own scripts, on a server that runs without it.

#include "audio_device/ZQAudioKextKit.h"
#include "lang/Lang.h"
#include "platform/desktop/Services.h"
#include "platform/desktop/ShellScriptHost.h"
#include "platform/hal/HardwareSystem.h"
#include "platform/hal/pipewire/PipeWireBackend.h"
#include "tests/support/EmbeddedWorld.h"
#include "tests/support/LoopbackNames.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/PrivateWorld.h"

#include <QFileInfo>

#include <gtest/gtest.h>

using namespace cantorel;
using test::eventually;
using test::PrivateWorld;

namespace {

const char *const kDevice = "Tessolar_AudioDevice";

desktop::Services withScripts() {
    desktop::Services services;
    services.scripts = std::make_unique<desktop::ShellScriptHost>();
    return services;
}

struct DriverInstallTest : testing::Test {
    ~DriverInstallTest() override { ZQAudioKextKit::end(); }

    static QString description() {
        return qEnvironmentVariable("XDG_CONFIG_HOME") + "/pipewire/pipewire.conf.d/50-Tessolar_AudioDevice.conf";
    }
    qsizetype nodes() const {
        return world.run("pw-cli", {"ls", "Node"}).count("node.name = \"Tessolar_AudioDevice\"");
    }

    PrivateWorld world{{.virtualDevice = false}};
    desktop::InstalledServices services{withScripts()};
};

} // namespace

TEST_F(DriverInstallTest, DeviceIsThereAtOnceAndAfterTheServersNextStart) {
    auto backend = hal::PipeWireBackend::connect(std::chrono::seconds(10), test::kLoopbackNames);
    ASSERT_TRUE(backend.ok());
    hal::HardwareBackend &hardware = *backend.value();
    const hal::HardwareSystem system(std::move(backend).value(), QDir::homePath());
    EXPECT_FALSE(ZQAudioKextKit::activateSVAD());
    const auto isLoopback = [&] {
        for (const hal::DeviceRecord &device : hardware.devices()) {
            if (device.uid == kDevice)
                return device.isLoopback && device.input.channels == 2 && device.output.channels == 2;
        }
        return false;
    };

    ASSERT_TRUE(ZQAudioKextKit::loadAudioKext()) << Lang::english(ZQAudioKextKit::loaderFailure()).toStdString();
    EXPECT_TRUE(ZQAudioKextKit::activateSVAD()) << "without waiting";
    EXPECT_TRUE(isLoopback());
    EXPECT_EQ(world.metadata("default.audio.sink"), R"({"name":"builtin_output"})")
        << "it is nobody's choice by itself";
    EXPECT_TRUE(ZQAudioKextKit::loadAudioKext());
    EXPECT_EQ(nodes(), 1) << "installed twice, there once";

    world.killServer();
    EXPECT_TRUE(eventually([&] { return hardware.devices().empty(); }));
    ASSERT_TRUE(world.startServer());
    EXPECT_TRUE(eventually(isLoopback));
    EXPECT_EQ(nodes(), 1);

    ASSERT_TRUE(ZQAudioKextKit::unloadAudioKext()) << Lang::english(ZQAudioKextKit::loaderFailure()).toStdString();
    EXPECT_EQ(nodes(), 0);
    EXPECT_FALSE(QFile::exists(description()));
    EXPECT_TRUE(eventually([] { return !ZQAudioKextKit::availableSVAD(); }));
    EXPECT_TRUE(ZQAudioKextKit::unloadAudioKext()) << "nothing left to remove";
}

TEST_F(DriverInstallTest, WithoutAServerOnlyTheDescriptionIsInstalled) {
    world.killServer();
    ASSERT_TRUE(ZQAudioKextKit::loadAudioKext()) << Lang::english(ZQAudioKextKit::loaderFailure()).toStdString();
    ASSERT_TRUE(QFile::exists(description()));
    ASSERT_TRUE(world.startServer());
    EXPECT_EQ(nodes(), 1);
    world.killServer();
    ASSERT_TRUE(ZQAudioKextKit::unloadAudioKext());
    EXPECT_FALSE(QFile::exists(description()));
}

TEST_F(DriverInstallTest, ResourcesMayLieUnderAnyName) {
    const QString odd = QDir::homePath() + "/it's \"odd\" $(touch " + QDir::homePath() + "/ran) `x` {driverName}/";
    const QString program = QFileInfo(QFile::symLinkTarget("/proc/self/exe")).path();
    for (const char *name :
         {"Tessolar_AudioDevice.kext", "audioDriver_install.scpt", "audioDriver_remove.scpt", "script-prelude.sh"}) {
        QDir().mkpath(QFileInfo(odd + name).path());
        ASSERT_TRUE(QFile::copy(program + "/../share/cantorel/" + name, odd + name));
    }
    qputenv("CANTOREL_RESOURCES", odd.toUtf8());
    // The name of a placeholder in a path is filled in as well: that folder is not there.
    EXPECT_FALSE(ZQAudioKextKit::loadAudioKext());
    EXPECT_TRUE(Lang::english(ZQAudioKextKit::loaderFailure()).endsWith("cannot be read; install Cantorel again."));
    const QString plain = QString(odd).remove("{driverName}");
    ASSERT_TRUE(QDir().rename(odd, plain));
    qputenv("CANTOREL_RESOURCES", plain.toUtf8());
    EXPECT_TRUE(ZQAudioKextKit::loadAudioKext()) << Lang::english(ZQAudioKextKit::loaderFailure()).toStdString();
    EXPECT_EQ(nodes(), 1);
    EXPECT_TRUE(ZQAudioKextKit::unloadAudioKext());
    const QString lines = plain.chopped(1) + "\nEND_OF_VALUE\ncd; touch ran\n/";
    ASSERT_TRUE(QDir().rename(plain, lines));
    qputenv("CANTOREL_RESOURCES", lines.toUtf8());
    EXPECT_FALSE(ZQAudioKextKit::loadAudioKext());
    const QString why = Lang::english(ZQAudioKextKit::loaderFailure());
    EXPECT_TRUE(why.contains("line break")) << why.toStdString();
    EXPECT_FALSE(QFile::exists(QDir::homePath() + "/ran"));
}

TEST_F(DriverInstallTest, AFolderThatCannotBeWrittenIsNamedInOneSentence) {
    const QString folder = QFileInfo(description()).path();
    const auto inOneSentence = [&](bool done) {
        const QString sentence = Lang::english(ZQAudioKextKit::loaderFailure());
        EXPECT_TRUE(sentence.startsWith("The virtual device cannot be") && sentence.contains(folder))
            << sentence.toStdString();
        EXPECT_EQ(sentence.count('.'), folder.count('.') + 1);
        return !done;
    };
    ASSERT_TRUE(QDir(folder).removeRecursively());
    test::touch(folder); // in the way
    EXPECT_TRUE(inOneSentence(ZQAudioKextKit::loadAudioKext()));
    EXPECT_EQ(nodes(), 0);

    QFile::remove(folder);
    QDir().mkpath(description() + "/full");
    EXPECT_TRUE(inOneSentence(ZQAudioKextKit::unloadAudioKext()));
}
