#include "app/start/Hardware.h"

#include "audio_device/AudioDeviceEngine.h"
#include "audio_device/ZQAudioKextKit.h"
#include "capture/DeviceSoundPlayer.h"
#include "capture/ZQAVRecorderKit.h"
#include "platform/desktop/Services.h"
#include "platform/foundation/SearchPaths.h"
#include "platform/hal/embedded/EmbeddedBackend.h"
#include "platform/hal/pipewire/PipeWireBackend.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFile>

namespace cantorel {

namespace {

// The software devices have the virtual one wherever the driver's drop-in is installed, as the server does.
bool isDriverInstalled() {
    return QFile::exists(
        foundation::configurationFolder()
        + QStringLiteral("/pipewire/pipewire.conf.d/50-%1.conf").arg(QLatin1String(kTessolarAudioDeviceName)));
}

std::unique_ptr<hal::HardwareBackend> makeBackend(BackendChoice choice) {
    if (choice != BackendChoice::Embedded)
        return std::make_unique<hal::PipeWireBackend>(AudioDeviceEngine::virtualDeviceNames());
    return std::make_unique<hal::EmbeddedBackend>(hal::makeWallDeviceClock(), isDriverInstalled,
                                                  QLatin1String(kTessolarAudioDeviceName));
}

} // namespace

Hardware::Hardware(std::unique_ptr<hal::HardwareBackend> backend)
    : mSystem(std::make_unique<hal::HardwareSystem>(std::move(backend), stateFolder())) {
    desktop::InstalledServices::current().sounds = std::make_unique<DeviceSoundPlayer>();
}

Hardware::~Hardware() {
    desktop::InstalledServices::current().sounds.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ZQAudioKextKit::end();
}

QString Hardware::stateFolder() { return foundation::stateFolder() + QStringLiteral("/cantorel"); }

QString Hardware::backendName() const { return hal::HardwareSystem::backend()->name(); }

foundation::Result<std::unique_ptr<Hardware>> Hardware::open(BackendChoice choice,
                                                             foundation::Clock::Duration patience) {
    auto backend = makeBackend(choice);
    if (const auto reached = backend->reach(patience); !reached)
        return reached.failure();
    return std::unique_ptr<Hardware>(new Hardware(std::move(backend))); // Its constructor is private.
}

std::unique_ptr<Hardware> Hardware::openInAnyCase(BackendChoice choice, foundation::Clock::Duration patience) {
    auto backend = makeBackend(choice);
    (void)backend->reach(patience); // A failure shows when sound is asked for.
    return std::unique_ptr<Hardware>(new Hardware(std::move(backend)));
}

} // namespace cantorel
