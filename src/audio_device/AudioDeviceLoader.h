#pragma once

#include "platform/foundation/Sentence.h"

#include <QString>

namespace cantorel {

// Installs and removes the driver of the virtual device by running its scripts, filled in with where the driver is and
// belongs. Blocks while a script runs.
class AudioDeviceLoader {
public:
    // False on every failure; why stands in the device kit's log.
    bool loadAudioDeviceWithSH();
    // The same operation.
    bool loadSoundFlower();
    bool unloadAudioDeviceWithSH();

    // One sentence on why the last operation failed; empty when it did not.
    const foundation::Sentence &failure() const { return mFailure; }

private:
    bool run(const QString &scriptPath);

    foundation::Sentence mFailure;
};

} // namespace cantorel
