#pragma once

#include "convert/Converter.h"

#include <QString>
#include <QTemporaryFile>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>

namespace cantorel {

// The sound of a file as fingerprints are made of it: mono, at kRate. It lies in a temporary file, of which only what
// is being read takes memory.
class DecodedSound {
public:
    static constexpr int kRate = 11025;

    // program: the converter. So many seconds are decoded at most. Nothing, with the trouble, when that fails. Blocks.
    static std::optional<DecodedSound> decode(const QString &program, const QString &file, int seconds,
                                              const std::stop_token &stop, ConvertTrouble &trouble);

    std::span<const std::int16_t> samples() const { return mSamples; }

private:
    DecodedSound(std::unique_ptr<QTemporaryFile> file, std::span<const std::int16_t> samples)
        : mFile(std::move(file)), mSamples(samples) {}

    std::unique_ptr<QTemporaryFile> mFile;
    std::span<const std::int16_t> mSamples; // mapped from the file
};

} // namespace cantorel
