#pragma once

#include "platform/foundation/ChildProcess.h"
#include "tests/support/OrdinaryFile.h"

#include <QString>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <vector>

// Sounds of a known form, and what ffmpeg, as an independent reader, makes of a file.
namespace cantorel::test {

inline constexpr double kToneHertz = 997;
inline constexpr double kToneAmplitude = 0.1; // -20 dBFS as a peak

// Stereo, the right channel at half the level of the left.
inline std::vector<float> tone(std::size_t frames, double rate, std::size_t first = 0) {
    std::vector<float> samples(frames * 2);
    for (std::size_t i = 0; i < frames; ++i) {
        const double phase = 2 * std::numbers::pi * kToneHertz * static_cast<double>(first + i) / rate;
        samples[2 * i] = static_cast<float>(kToneAmplitude * std::sin(phase));
        samples[2 * i + 1] = samples[2 * i] / 2;
    }
    return samples;
}

// Interleaved stereo of the file as ffmpeg decodes it, at its own rate; empty when ffmpeg finds any fault.
inline std::vector<float> decoded(const QString &path) {
    const QString raw = path + ".decoded";
    const auto run = foundation::ChildProcess::run(
        {"ffmpeg", {"-v", "error", "-xerror", "-y", "-i", "file:" + path, "-f", "f32le", "file:" + raw}, {}, {}});
    if (!run || !run.value().ending.succeeded() || !run.value().output.isEmpty())
        return {};
    const QByteArray bytes = contents(raw);
    QFile::remove(raw);
    std::vector<float> samples(static_cast<std::size_t>(bytes.size()) / sizeof(float));
    if (!samples.empty())
        std::memcpy(samples.data(), bytes.constData(), samples.size() * sizeof(float));
    return samples;
}

// One value that ffprobe answers about the audio of a file, such as "stream=duration_ts".
inline QString probed(const QString &path, const char *entry) {
    const auto run = foundation::ChildProcess::run(
        {"ffprobe", {"-v", "error", "-show_entries", entry, "-of", "csv=p=0", "-i", "file:" + path}, {}, {}});
    return run ? QString::fromUtf8(run.value().output).trimmed() : QString();
}

// The largest difference between the left channel and the tone, from frame `from` to `to` of both.
inline double farthestFromTone(const std::vector<float> &samples, double rate, std::size_t from, std::size_t to) {
    double farthest = samples.size() < 2 * to ? 1 : 0;
    for (std::size_t i = from; i < to && 2 * i < samples.size(); ++i) {
        const double phase = 2 * std::numbers::pi * kToneHertz * static_cast<double>(i) / rate;
        farthest = std::max(farthest, std::abs(samples[2 * i] - kToneAmplitude * std::sin(phase)));
    }
    return farthest;
}

} // namespace cantorel::test
