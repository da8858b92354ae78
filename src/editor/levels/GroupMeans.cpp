#include "editor/levels/GroupMeans.h"

#include <algorithm>
#include <array>

namespace cantorel {

namespace {

constexpr std::size_t kBatch = 256; // groups; their sums stay in the cache
constexpr auto kFrames = static_cast<std::int32_t>(kGroupFrames);

using Sums = std::array<std::int32_t, kBatch>;

// No mean of 11 differs from the true one by so much that its quotient as a float is cut off elsewhere, and floats are
// divided four at a time.
std::int32_t mean(std::int32_t sum) { return static_cast<std::int32_t>(static_cast<float>(sum) / kFrames); }

void sumStereo(const std::int16_t *samples, std::size_t groups, Sums &left, Sums &right) {
    for (std::size_t group = 0; group < groups; ++group, samples += 2 * kGroupFrames) {
        std::int32_t l = 0, r = 0;
        for (std::size_t i = 0; i < kGroupFrames; ++i) {
            l += samples[2 * i];
            r += samples[2 * i + 1];
        }
        left[group] = l;
        right[group] = r;
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
            for (std::size_t i = 0; i < count; ++i) {
                std::int32_t sum = 0;
                for (std::size_t frame = 0; frame < kGroupFrames; ++frame)
                    sum += samples[i * kGroupFrames + frame];
                levels[i] = static_cast<std::int16_t>(mean(sum));
            }
        }
        samples += count * kGroupFrames * width;
        levels += count;
        groups -= count;
    }
}

} // namespace cantorel
