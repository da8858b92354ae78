#pragma once

#include "platform/desktop/SoundPlayer.h"
#include "platform/media/Player.h"

#include <memory>
#include <vector>

namespace cantorel {

// Plays short sounds to the default output of the hardware layer. Owned by the desktop's services; main thread.
class DeviceSoundPlayer : public desktop::SoundPlayer {
public:
    foundation::Result<void> play(const QString &waveFile) override;

private:
    std::vector<std::unique_ptr<media::Player>> mPlaying;
};

} // namespace cantorel
