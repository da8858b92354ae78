#include "recording/control/RecordingAdvice.h"

#include "audio_device/ZQAudioKextKit.h"
#include "platform/hal/HardwareSystem.h"
#include "recording/session/StartConditions.h"

namespace cantorel {

namespace {

constexpr foundation::SentenceKey kUnrouted("Unrouted");
constexpr std::chrono::milliseconds kLook(50); // short enough not to be noticed

} // namespace

RecordingAdvice RecordingAdvice::of(RecordingSource source) {
    if (const auto reached = hal::HardwareSystem::reach(); !reached)
        return {Lack::SoundServer, reached.failure().sentence};
    if (!includesSystemSound(source) || ZQAudioKextKit::availableSVAD())
        return {};
    const bool hasOutput = !ZQAudioKextKit::getDefaultAudioOutputName().isEmpty();
    return {Lack::VirtualDevice, hasOutput ? kUnrouted() : kNoSystemSound()};
}

void RecordingAdvice::lookForServer() { (void)hal::HardwareSystem::reach(kLook); }

} // namespace cantorel
