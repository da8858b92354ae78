#pragma once

#include "platform/hal/HardwareBackend.h"

#include <functional>
#include <memory>
#include <vector>

namespace cantorel::test {

// A backend and the world around it, as the contract of backends needs them: an output "builtin_output", an input
// "builtin_microphone" and the loopback "Tessolar_AudioDevice", all stereo at 48 kHz, and hands to touch them with.
class BackendWorld {
public:
    virtual ~BackendWorld() = default;
    virtual hal::HardwareBackend &backend() = 0;

    // Lets time pass until the condition holds; false when it does not come to hold.
    virtual bool until(const std::function<bool()> &condition) = 0;

    // Sound that goes on until the handle ends. The stamps count from the position given.
    virtual std::shared_ptr<void> feed(const QString &input, std::int64_t first) = 0;
    // Another program that plays.
    virtual std::shared_ptr<void> play(const QString &output, std::int64_t first) = 0;

    // Listens to what comes out of a device; heard() ends that and answers the stereo samples.
    virtual void listen(const QString &output) = 0;
    virtual std::vector<float> heard() = 0;

    virtual void unplug(const QString &uid) = 0;
    // A stereo device of one side.
    virtual void plug(const QString &uid, hal::Direction direction) = 0;
};

std::unique_ptr<BackendWorld> embeddedManualWorld();
std::unique_ptr<BackendWorld> embeddedWallWorld();
std::unique_ptr<BackendWorld> pipeWireWorld();

} // namespace cantorel::test
