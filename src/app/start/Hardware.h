#pragma once

#include "platform/foundation/Result.h"
#include "platform/hal/HardwareSystem.h"

#include <memory>

namespace cantorel {

enum class BackendChoice { Automatic, PipeWire, Embedded };

// The audio hardware of one run: the backend that the person chose, and everything that stands on it, which it ends in
// order. Made by the window's program and by each command that needs devices; main thread.
class Hardware {
public:
    // How long an automatic choice waits for a server that carries sound.
    static constexpr std::chrono::seconds kPatience{10};

    // Fails with one sentence that names the cause. The software devices are taken only when they are named.
    static foundation::Result<std::unique_ptr<Hardware>> open(BackendChoice choice,
                                                              foundation::Clock::Duration patience = kPatience);
    // Without a server by then there are no devices until one comes.
    static std::unique_ptr<Hardware> openInAnyCase(BackendChoice choice, foundation::Clock::Duration patience);
    ~Hardware();

    QString backendName() const;
    // Where the program keeps what outlives it.
    static QString stateFolder();

private:
    explicit Hardware(std::unique_ptr<hal::HardwareBackend> backend);

    std::unique_ptr<hal::HardwareSystem> mSystem;
};

} // namespace cantorel
