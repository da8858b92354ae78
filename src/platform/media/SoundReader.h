#pragma once

#include "platform/foundation/Result.h"

#include <cstddef>
#include <memory>

namespace cantorel::media {

// Reads a sound file of any kind from its beginning, as interleaved floats in the rate and with the channels asked for.
// Used by one thread at a time.
class SoundReader {
public:
    virtual ~SoundReader() = default;

    virtual double durationSeconds() const = 0; // as the file tells it; 0 when it does not
    // Reads up to that many frames; answers how many, 0 only at the end. A file that is damaged further on ends there.
    virtual std::size_t read(float *interleaved, std::size_t frames) = 0;
    // Goes on from that time; false when the file can't be sought in.
    virtual bool seek(double seconds) = 0;
};

// Opens a file by the reader's own module, loaded when it is first needed. Any thread.
foundation::Result<std::unique_ptr<SoundReader>> openSound(const QString &path, int rate, int channels);

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

// The two functions that the module exports, by these names and types; null, or false, and one line on why, when the
// file can't be read.
inline constexpr const char *kSoundReaderEntryPoint = "cantorel_open_sound";
using SoundReaderEntryPoint = SoundReader *(*)(const char *path, int rate, int channels, QString *why);
inline constexpr const char *kSoundFactsEntryPoint = "cantorel_sound_facts";
using SoundFactsEntryPoint = bool (*)(const char *path, bool asPromised, SoundFacts *facts, QString *why);

} // namespace cantorel::media
