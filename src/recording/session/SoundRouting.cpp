#include "recording/session/SoundRouting.h"

#include "audio_device/ZQAudioKextKit.h"

#include <utility>

namespace cantorel {

void SoundRouting::begin(std::function<void(bool isHeard)> heard) {
    mHearing = foundation::NotificationCenter::defaultCenter().subscribe<bool>(
        kNotificationRoutedSoundIsHeard, [heard = std::move(heard)](const bool &isHeard) { heard(isHeard); });
    const bool stays = ZQAudioKextKit::isRoutingKept();
    const bool isRouted = ZQAudioKextKit::setSVAD();
    // Where the routing goes on, so does the volume that the person has chosen meanwhile. An output that is recorded
    // itself, for lack of a virtual device, deliberately keeps its volume: turned up, it would be heard so.
    if (isRouted && !stays)
        (void)ZQAudioKextKit::setVolume(1.0f, ZQAudioKextKit::getDefaultAudioOutputName());
}

void SoundRouting::end() {
    ZQAudioKextKit::unsetSVAD();
    mHearing.cancel();
}

} // namespace cantorel
