#pragma once

#include "platform/foundation/Result.h"
#include "tags/index/SongSearch.h"

#include <QByteArray>

#include <cstdint>
#include <span>

namespace cantorel {

// What sound is known by, whoever coded it and however loud it is.
struct Fingerprint {
    FingerprintItems items;
    QByteArray text; // the same as services take it: compressed, in base 64
};

// Of mono sound. Too short sound has none. Any thread.
foundation::Result<Fingerprint> fingerprintOf(std::span<const std::int16_t> mono, int rate);

// The one function that the module exports, by this name and type; loaded when it is first needed, since its library
// brings those of the coders along.
inline constexpr const char *kFingerprintEntryPoint = "cantorel_fingerprint";
using FingerprintEntryPoint = Fingerprint (*)(std::span<const std::int16_t> mono, int rate);

} // namespace cantorel
