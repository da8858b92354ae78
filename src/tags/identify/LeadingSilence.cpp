#include "tags/identify/LeadingSilence.h"

#include <algorithm>
#include <cstdlib>

namespace cantorel {

namespace {

constexpr int kSilent = 33; // a thousandth of full scale

} // namespace

std::span<const std::int16_t> withoutLeadingSilence(std::span<const std::int16_t> mono) {
    const auto first =
        std::find_if(mono.begin(), mono.end(), [](std::int16_t sample) { return std::abs(int{sample}) > kSilent; });
    return mono.subspan(static_cast<std::size_t>(first - mono.begin()));
}

} // namespace cantorel
