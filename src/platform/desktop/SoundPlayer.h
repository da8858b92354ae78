#pragma once

#include "platform/foundation/Result.h"

namespace cantorel::desktop {

// Plays short sounds beside everything else.
class SoundPlayer {
public:
    virtual ~SoundPlayer() = default;

    // Plays a WAV file once to the default output and returns at once; fails when the file cannot be read.
    virtual foundation::Result<void> play(const QString &waveFile) = 0;
};

} // namespace cantorel::desktop
