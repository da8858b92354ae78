#include "editor/levels/GroupMeans.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace cantorel {

namespace {

constexpr std::size_t kBatch = 256; // groups; their sums stay in the cache
constexpr auto kFrames = static_cast<std::int32_t>(kGroupFrames);

using Sums = std::array<std::int32_t, kBatch>;

// No mean of 11 differs from the true one by so much that its quotient as a float is cut off elsewhere, and floats are
// divided four at a time.
std::int32_t mean(std::int32_t sum) { return static_cast<std::int32_t>(static_cast<float>(sum) / kFrames); }

// Eight samples at a time, seen as four pairs.
using Samples [[gnu::vector_size(16)]] = std::int16_t;
using Pairs [[gnu::vector_size(16)]] = std::int32_t;

Samples load(const std::int16_t *samples) {
    Samples eight;
    std::memcpy(&eight, samples, sizeof eight);
    return eight;
}

// The first samples of the pairs, then the second ones.
Pairs firstOf(Pairs pairs) { return std::endian::native == std::endian::little ? pairs << 16 >> 16 : pairs >> 16; }
Pairs secondOf(Pairs pairs) { return std::endian::native == std::endian::little ? pairs >> 16 : pairs << 16 >> 16; }

std::int32_t total(Pairs sums) {
    sums += __builtin_shufflevector(sums, sums, 2, 3, 0, 1);
    return sums[0] + sums[1];
}

// The last eight samples of a group lie partly in those before them and count but once.
void sumStereo(const std::int16_t *samples, std::size_t groups, Sums &left, Sums &right) {
    constexpr Samples kRest = {0, 0, -1, -1, -1, -1, -1, -1};
    for (std::size_t group = 0; group < groups; ++group, samples += 2 * kGroupFrames) {
        const auto a = Pairs(load(samples)), b = Pairs(load(samples + 8)), c = Pairs(load(samples + 14) & kRest);
        left[group] = total(firstOf(a) + firstOf(b) + firstOf(c));
        right[group] = total(secondOf(a) + secondOf(b) + secondOf(c));
    }
}

void sumMono(const std::int16_t *samples, std::size_t groups, Sums &sums) {
    constexpr Samples kRest = {0, 0, 0, 0, 0, -1, -1, -1};
    for (std::size_t group = 0; group < groups; ++group, samples += kGroupFrames) {
        const auto a = Pairs(load(samples)), b = Pairs(load(samples + 3) & kRest);
        sums[group] = total(firstOf(a) + secondOf(a) + firstOf(b) + secondOf(b));
    }
}

} // namespace

void groupMeans(const std::int16_t *samples, int channels, std::size_t groups, std::int16_t *levels) {
    Sums left, right;
    const auto width = static_cast<std::size_t>(channels);
    while (groups > 0) {
        const std::size_t count = std::min(groups, kBatch);
        if (channels == 2) {
            sumStereo(samples, count, left, right);
            for (std::size_t i = 0; i < count; ++i) {
                const std::int32_t l = mean(left[i]), r = mean(right[i]);
                const std::int32_t both = l + r;
                levels[i] = static_cast<std::int16_t>(r != 0 ? (both + (both < 0)) >> 1 : l);
            }
        } else {
            sumMono(samples, count, left);
            for (std::size_t i = 0; i < count; ++i)
                levels[i] = static_cast<std::int16_t>(mean(left[i]));
        }
        samples += count * kGroupFrames * width;
        levels += count;
        groups -= count;
    }
}

} // namespace cantorel
