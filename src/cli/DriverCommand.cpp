#include "app/start/Hardware.h"
#include "audio_device/ZQAudioKextKit.h"
#include "cli/Commands.h"
#include "platform/foundation/Clock.h"
#include "recording/session/RecordingJournal.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace cantorel {

namespace {

constexpr auto kAppearPatience = std::chrono::seconds(3);

Outcome show(const CommandSession &session) {
    const bool installed = ZQAudioKextKit::activateSVAD();
    const QString device = installed ? ZQAudioKextKit::getSystemSoundDeviceName() : QString();
    const bool inUse = installed
                       && (ZQAudioKextKit::getDefaultAudioOutputName() == device
                           || !RecordingJournal(Hardware::stateFolder()).claim());
    session.answer({{QStringLiteral("installed"), installed},
                    {QStringLiteral("device"), installed ? QJsonValue(device) : QJsonValue()},
                    {QStringLiteral("inUse"), inUse}},
                   installed ? QStringLiteral("The virtual device \"%1\" is installed%2.")
                                   .arg(device, inUse ? QStringLiteral(" and in use") : QString())
                             : QStringLiteral("The virtual device is not installed."));
    return Outcome::done();
}

// The server needs a moment for what a script asks of it.
bool waitForVirtualDevice(bool there) {
    foundation::WallClock clock;
    const auto deadline = clock.now() + kAppearPatience;
    while (ZQAudioKextKit::availableSVAD() != there) {
        if (clock.now() > deadline)
            return false;
        clock.sleepFor(std::chrono::milliseconds(10));
    }
    return true;
}

Outcome install(const CommandSession &session) {
    if (!ZQAudioKextKit::loadAudioKext())
        return Outcome::failed(ZQAudioKextKit::loaderFailure());
    if (!waitForVirtualDevice(true))
        return Outcome::failed(
            QStringLiteral("The virtual device was installed but did not appear; log out and in again."));
    return show(session);
}

Outcome remove(const CommandSession &session) {
    if (!RecordingJournal(Hardware::stateFolder()).claim())
        return Outcome::failed(QStringLiteral("A recording is using the virtual device; stop it first."));
    ZQAudioKextKit::resetDefaultAudioDevice();
    if (!ZQAudioKextKit::unloadAudioKext())
        return Outcome::failed(ZQAudioKextKit::loaderFailure());
    if (!waitForVirtualDevice(false))
        return Outcome::failed(
            QStringLiteral("The virtual device is still there; another program made it, so remove it there."));
    return show(session);
}

} // namespace

void addDriverCommand(CLI::App &root, CommandSession &session) {
    CLI::App &driver =
        addVerb(root, session, "driver", "The virtual device that system sound is recorded through", "driver install");
    const auto add = [&](const char *name, const char *what, Outcome (*act)(const CommandSession &)) {
        addVerb(driver, session, name, what, std::string("driver ") + name, [&session, act] {
            const auto hardware = Hardware::open(session.backend);
            return hardware ? act(session) : Outcome::failed(hardware.failure().sentence);
        });
    };
    add("status", "Whether it is installed and in use", show);
    add("install", "Installs it for this user, for now and for every later login", install);
    add("remove", "Removes it", remove);
}

} // namespace cantorel
