#pragma once

#include "platform/foundation/Result.h"

#include <QString>

namespace cantorel::media {

// What lies in a sound file.
struct SoundFacts {
    double seconds = 0; // the padding of its coder counts
    double padding = 0; // how much of that its coder may have added, and how far its lengths may be off
    int rate = 0;       // frames a second
    int channels = 0;
};

// What really lies in a file, whatever its header promises: reads all of it and decodes none. Any thread.
foundation::Result<SoundFacts> soundFacts(const QString &path);
// The same as its header promises it, which costs nothing. Any thread.
foundation::Result<SoundFacts> promisedSoundFacts(const QString &path);

// The function that the module exports, by this name and type; false, and one line on why, when the file can't be read.
inline constexpr const char *kSoundFactsEntryPoint = "cantorel_sound_facts";
using SoundFactsEntryPoint = bool (*)(const char *path, bool asPromised, SoundFacts *facts, QString *why);

} // namespace cantorel::media
