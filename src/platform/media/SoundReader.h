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

// How long the sound in a file is by what really lies in it, whatever its header promises; the padding of its coder
// counts. Reads all of the file and decodes none of it. Any thread.
foundation::Result<double> soundSeconds(const QString &path);

// The two functions that the module exports, by these names and types; null, or a length below 0, and one line on why,
// when the file can't be read.
inline constexpr const char *kSoundReaderEntryPoint = "cantorel_open_sound";
using SoundReaderEntryPoint = SoundReader *(*)(const char *path, int rate, int channels, QString *why);
inline constexpr const char *kSoundSecondsEntryPoint = "cantorel_sound_seconds";
using SoundSecondsEntryPoint = double (*)(const char *path, QString *why);

} // namespace cantorel::media
