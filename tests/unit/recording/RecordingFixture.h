#pragma once

#include "audio_device/ZQAudioKextKit.h"
#include "capture/ZQAVRecorderKit.h"
#include "platform/desktop/Services.h"
#include "recording/library/RecordedList.h"
#include "recording/session/RecordingSession.h"
#include "settings/AppSettings.h"
#include "settings/SettingsTable.h"
#include "settings/UserDefaultFunctions.h"
#include "tests/support/EmbeddedWorld.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/PrivateWorld.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace cantorel::test {

// Recordings on software devices, stepped by hand: sound plays to the default output and into the microphone.
class RecordingFixture : public ::testing::Test {
public:
    explicit RecordingFixture(EmbeddedWorld::Virtual installed = EmbeddedWorld::Virtual::Installed) : world(installed) {
        standardUserDefaults().setArgument(QString::fromLatin1(setting::kOutputFolderPath.key), folder.path());
        ZQAudioKextKit::activateSVAD();
        world.backend->setSource(
            QStringLiteral("builtin_microphone"),
            [](std::span<float> samples, int channels, std::int64_t position) { stamp(samples, channels, position); });
        mPlayer = world.backend->play(
            [](std::span<float> samples, int channels, std::int64_t position) { stamp(samples, channels, position); });
    }
    ~RecordingFixture() override {
        RecorderRelease(ZQAVRecorderKit::sharedInstance().getAudioRecorder());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        ZQAudioKextKit::end();
    }

    void silencePlayer() { mPlayer.reset(); }
    // Lets time pass until the condition holds.
    bool stepUntil(const std::function<bool()> &condition) {
        return eventually([&] {
            world.advance(50);
            return condition();
        });
    }
    static QString output() { return ZQAudioKextKit::getDefaultAudioOutputName(); }
    std::optional<QString> chosenOutput() const { return world.backend->configuredDefault(hal::Direction::Output); }
    RecordingSession::Surroundings surroundings(const char *stateFolder) const {
        return {*world.clock, desktop::InstalledServices::current().sleep.get(),
                QDir::homePath() + QLatin1Char('/') + QLatin1String(stateFolder)};
    }
    QString path(const char *name) const { return folder.filePath(QString::fromUtf8(name)); }

    EmbeddedWorld world;
    QTemporaryDir folder;

private:
    std::shared_ptr<void> mPlayer;
};

} // namespace cantorel::test
