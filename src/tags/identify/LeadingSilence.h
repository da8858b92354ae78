#pragma once

#include <cstdint>
#include <span>

namespace cantorel {

// The sound without the silence in front of it: services know songs from where they begin. Silence is below -60 dB.
std::span<const std::int16_t> withoutLeadingSilence(std::span<const std::int16_t> mono);

} // namespace cantorel
