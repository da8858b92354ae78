#pragma once

#include "platform/foundation/Result.h"

#include <QByteArray>

#include <cstdint>
#include <span>

namespace cantorel {

// What a recognition service knows sound by: the compressed fingerprint of mono sound in base 64. Too short sound has
// none. Any thread.
foundation::Result<QByteArray> fingerprintOf(std::span<const std::int16_t> mono, int rate);

// The one function that the module exports, by this name and type; loaded when it is first needed, since its library
// brings those of the coders along.
inline constexpr const char *kFingerprintEntryPoint = "cantorel_fingerprint";
using FingerprintEntryPoint = QByteArray (*)(std::span<const std::int16_t> mono, int rate);

} // namespace cantorel
