#pragma once

#include <cstddef>
#include <cstdint>

namespace cantorel {

// Frames that make one value of the series.
inline constexpr std::size_t kGroupFrames = 11;

// One value for each group of frames of one channel or of two: the mean of both channels' means, or the left one's
// alone where the right one's is 0. Means of signed samples, each division toward zero. Any thread.
void groupMeans(const std::int16_t *samples, int channels, std::size_t groups, std::int16_t *levels);

} // namespace cantorel
