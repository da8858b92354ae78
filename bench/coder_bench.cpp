// The coder's settings against FFmpeg's own defaults: CPU of coding, and segmental SNR of what ffmpeg decodes again,
// for four made-up sounds. Prints a table of ratios of one run. usage: coder_bench [seconds of each sound] [rate]

#include "platform/media/AudioFileWriter.h"
#include "tests/support/Sound.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <random>

using namespace cantorel;

namespace {

int kRate = 48000; // frames a second
using Sound = std::vector<float>;

double uniform(std::mt19937 &random) { return random() / 2147483648.0 - 1; }

// Plucked strings, four to a chord, a chord every half second, spread over the sides.
Sound chords(std::size_t frames) {
    Sound sound(frames * 2);
    std::mt19937 random(1);
    const double roots[] = {110, 146.83, 98, 130.81};
    for (std::size_t start = 0, chord = 0; start < frames; start += kRate / 2, ++chord) {
        int voice = 0;
        for (const double step : {1.0, 1.25, 1.5, 2.0}) {
            const double hertz = roots[chord % 4] * step;
            std::vector<double> string(static_cast<std::size_t>(kRate / hertz));
            for (double &point : string)
                point = uniform(random);
            const double pan = 0.2 + 0.2 * voice++;
            for (std::size_t i = 0; i < static_cast<std::size_t>(kRate) && start + i < frames; ++i) {
                double &point = string[i % string.size()];
                const double value = point;
                point = 0.498 * (point + string[(i + 1) % string.size()]);
                sound[2 * (start + i)] += static_cast<float>(0.2 * value * (1 - pan));
                sound[2 * (start + i) + 1] += static_cast<float>(0.2 * value * pan);
            }
        }
    }
    return sound;
}

// Pulses through two moving resonances, in syllables, the same on both sides.
Sound speech(std::size_t frames) {
    Sound sound(frames * 2);
    double a1 = 0, a2 = 0, b1 = 0, b2 = 0, phase = 0;
    for (std::size_t i = 0; i < frames; ++i) {
        const double t = static_cast<double>(i) / kRate;
        phase += (110 + 25 * std::sin(3 * t)) / kRate;
        const double pulse = phase >= 1 ? 1 : 0;
        phase -= std::floor(phase);
        const auto resonance = [](double input, double hertz, double &y1, double &y2) {
            constexpr double kRadius = 0.995;
            const double y =
                input + 2 * kRadius * std::cos(2 * std::numbers::pi * hertz / kRate) * y1 - kRadius * kRadius * y2;
            y2 = y1;
            return y1 = y;
        };
        const double voiced = resonance(pulse, 500 + 250 * std::sin(7 * t), a1, a2)
                              + resonance(pulse, 1500 + 700 * std::sin(5 * t + 1), b1, b2);
        const double syllable = std::max(0.0, std::sin(2 * std::numbers::pi * 2.2 * t));
        sound[2 * i] = sound[2 * i + 1] = static_cast<float>(0.02 * voiced * syllable);
    }
    return sound;
}

Sound sweep(std::size_t frames) {
    Sound sound(frames * 2);
    double phase = 0;
    for (std::size_t i = 0; i < frames; ++i) {
        phase += 20 * std::pow(1000, static_cast<double>(i) / static_cast<double>(frames)) / kRate;
        sound[2 * i] = sound[2 * i + 1] = static_cast<float>(0.3 * std::sin(2 * std::numbers::pi * phase));
    }
    return sound;
}

Sound noise(std::size_t frames) {
    Sound sound(frames * 2);
    std::mt19937 random(2);
    double left = 0, right = 0;
    for (std::size_t i = 0; i < frames; ++i) {
        left = 0.7 * left + 0.1 * uniform(random);
        right = 0.7 * right + 0.1 * uniform(random);
        sound[2 * i] = static_cast<float>(left);
        sound[2 * i + 1] = static_cast<float>(right);
    }
    return sound;
}

double segmentalSnr(const Sound &original, const Sound &coded) {
    double sum = 0;
    int segments = 0;
    for (std::size_t start = 0; start + 2048 <= std::min(original.size(), coded.size()); start += 2048) {
        double signal = 0, error = 1e-12;
        for (std::size_t i = start; i < start + 2048; ++i) {
            signal += double(original[i]) * original[i];
            error += double(original[i] - coded[i]) * (original[i] - coded[i]);
        }
        if (signal < 2048 * 1e-8)
            continue;
        sum += std::clamp(10 * std::log10(signal / error), -10.0, 80.0);
        ++segments;
    }
    return segments ? sum / segments : 0;
}

struct Outcome {
    double cpuSeconds;
    double snr;
    double kilobits;
};

Outcome measure(const Sound &sound, const media::AacSettings &settings, const QString &path) {
    const std::clock_t begin = std::clock();
    auto writer = media::AudioFileWriter::open(path, kRate, settings);
    if (!writer)
        std::exit(1);
    for (std::size_t at = 0; at < sound.size(); at += kRate)
        if (!writer.value()->append(std::span(sound).subspan(at, std::min<std::size_t>(kRate, sound.size() - at))))
            std::exit(1);
    if (!writer.value()->finish())
        std::exit(1);
    const double cpu = double(std::clock() - begin) / CLOCKS_PER_SEC;
    return {cpu, segmentalSnr(sound, test::decoded(path)),
            writer.value()->bytes() * 8.0 * kRate / 1000 / (static_cast<double>(sound.size()) / 2)};
}

} // namespace

int main(int argc, char **argv) {
    QCoreApplication application(argc, argv);
    if (argc > 2)
        kRate = std::atoi(argv[2]);
    const std::size_t frames = kRate * static_cast<std::size_t>(argc > 1 ? std::atoi(argv[1]) : 30);
    const QTemporaryDir folder;
    const std::pair<const char *, Sound> sounds[] = {
        {"chords", chords(frames)}, {"speech", speech(frames)}, {"sweep", sweep(frames)}, {"noise", noise(frames)}};
    using S = media::AacSettings;
    // Bit rate, then: noise substitution, intensity stereo, temporal noise shaping, mid/side, fast coder.
    const std::pair<const char *, S> choices[] = {
        {"ffmpeg's defaults", S{256000, true, true, true, true, false}},
        {"no pns", S{256000, false, true, true, true, false}},
        {"no pns, is, tns", S{256000, false, false, false, true, false}},
        {"no pns, is, tns, ms", S{256000, false, false, false, false, false}},
        {"fast, no pns", S{256000, false, true, true, true, true}},
        {"fast, no pns, is, tns", S{256000, false, false, false, true, true}},
        {"fast, no pns, is, tns, ms", S{256000, false, false, false, false, true}},
        {"fast, no pns, is, ms", S{256000, false, false, true, false, true}},
    };
    std::vector<double> base;
    for (const auto &[name, settings] : choices) {
        std::printf("%-27s", name);
        double cpu = 0, baseCpu = 0, snr = 0;
        for (std::size_t i = 0; i < std::size(sounds); ++i) {
            const Outcome outcome = measure(sounds[i].second, settings, folder.filePath(QStringLiteral("x.m4a")));
            if (base.size() <= i)
                base.push_back(outcome.cpuSeconds);
            cpu += outcome.cpuSeconds;
            baseCpu += base[i];
            snr += outcome.snr / 4;
            std::printf(" | %s x%.2f %5.1f dB %3.0fk", sounds[i].first, outcome.cpuSeconds / base[i], outcome.snr,
                        outcome.kilobits);
        }
        std::printf(" | all x%.2f %5.1f dB\n", cpu / baseCpu, snr);
    }
}
