#pragma once

#include "platform/media/asset/PlainSamples.h"

#include <optional>

namespace cantorel::media {

// Where the samples of an ordinary WAVE file lie, without the codecs. Nothing for all that is not plain, or not as the
// rules want it, damage included: the codecs' module knows what to do with that.
std::optional<PlainSound> findWaveSound(const SourceFile &file);

} // namespace cantorel::media
