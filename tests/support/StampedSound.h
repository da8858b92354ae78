#pragma once

#include "tests/support/EmbeddedWorld.h"
#include "tests/support/Wave.h"

#include <QFile>

#include <algorithm>
#include <cstring>
#include <span>
#include <vector>

// Stamped sounds as other programs read and write them, and what became of the stamps. A machine may stall for a moment
// and lose frames between two programs, so a sound that came through is judged by its longest unbroken run.
namespace cantorel::test {

inline std::vector<float> stamped(std::size_t frames, int channels = 2) {
    std::vector<float> samples(frames * static_cast<std::size_t>(channels));
    stamp(samples, channels, 0);
    return samples;
}

// The samples of a float WAV file, also of one whose writer has not finished; empty when there is none.
inline std::vector<float> readWav(const QString &path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray bytes = file.readAll();
    const qsizetype data = bytes.indexOf("data");
    if (data < 0 || data + 8 > bytes.size())
        return {};
    std::vector<float> samples(static_cast<std::size_t>(bytes.size() - data - 8) / sizeof(float));
    if (!samples.empty())
        std::memcpy(samples.data(), bytes.constData() + data + 8, samples.size() * sizeof(float));
    return samples;
}

// The frames of the longest run in which each frame is, to the bit, the one that was stamped after the frame before it.
// first: the channel of the left stamps; the next one holds the right ones.
inline std::size_t longestStampedRun(std::span<const float> samples, int channels = 2, int first = 0) {
    const auto width = static_cast<std::size_t>(channels);
    std::size_t longest = 0, run = 0;
    std::int64_t before = -1;
    for (std::size_t i = static_cast<std::size_t>(first); i + 1 < samples.size(); i += width) {
        const std::int64_t position = stampOf(samples[i]);
        float expected[2];
        stamp(expected, 2, position);
        const bool exact = position >= 0 && samples[i] == expected[0] && samples[i + 1] == expected[1];
        run = !exact ? 0 : position == before + 1 ? run + 1 : 1;
        before = position;
        longest = std::max(longest, run);
    }
    return longest;
}

} // namespace cantorel::test
