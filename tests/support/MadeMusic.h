#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

// Music that is made up: chords, a melody, a bass and drums, another piece for each number, and always the same for
// one.
namespace cantorel::test {

// The same numbers on every machine.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : mState(seed * 0x9E3779B97F4A7C15u + 1) {}

    std::uint32_t roll() {
        mState = mState * 6364136223846793005u + 1442695040888963407u;
        const auto mixed = static_cast<std::uint32_t>(((mState >> 18) ^ mState) >> 27);
        const auto turn = static_cast<int>(mState >> 59);
        return (mixed >> turn) | (mixed << ((32 - turn) & 31));
    }
    int below(int end) { return static_cast<int>(roll() % static_cast<std::uint32_t>(end)); }
    float between(float low, float high) { return low + (high - low) * static_cast<float>(roll()) / 4294967296.0f; }

private:
    std::uint64_t mState;
};

class MadeMusic {
public:
    MadeMusic(std::uint64_t number, int seconds, int rate)
        : mRate(rate), mSamples(static_cast<std::size_t>(seconds * rate)), mDice(number) {
        compose();
    }
    // Mono, in -1 to 1.
    const std::vector<float> &samples() const { return mSamples; }

private:
    void compose() {
        const float beat = 60.0f / mDice.between(72, 150);
        const int root = 45 + mDice.below(12);
        const auto &scale = kScales[static_cast<std::size_t>(mDice.below(static_cast<int>(kScales.size())))];
        const std::array<float, 5> colour = {1, mDice.between(0, 0.7f), mDice.between(0, 0.5f), mDice.between(0, 0.3f),
                                             mDice.between(0, 0.2f)};
        const float chords = mDice.between(0.05f, 0.12f), drums = mDice.between(0.1f, 0.4f);
        const float end = static_cast<float>(mSamples.size()) / static_cast<float>(mRate);
        int degree = 0, note = 7;
        for (float bar = 0; bar < end; bar += 4 * beat) {
            degree = mDice.below(7);
            const auto pitch = [&](int step) {
                return root + 12 * (step / 7) + scale[static_cast<std::size_t>(step % 7)];
            };
            for (const int third : {0, 2, 4})
                play(bar, 4 * beat, pitch(degree + third), chords, colour);
            for (int at = 0; at < 4; ++at)
                play(bar + static_cast<float>(at) * beat, beat * 0.8f, pitch(degree) - 12, 0.15f, colour);
            for (float at = 0; at < 4;) {
                const float lasts = std::array{0.5f, 0.5f, 1.0f, 1.5f}[static_cast<std::size_t>(mDice.below(4))];
                note = std::clamp(note + mDice.below(7) - 3, 3, 17);
                if (mDice.below(6) != 0)
                    play(bar + at * beat, lasts * beat, pitch(note), 0.2f, colour);
                at += lasts;
            }
            for (int at = 0; at < 8; ++at)
                if (at % 2 == 0 || mDice.below(3) != 0)
                    hit(bar + static_cast<float>(at) * beat / 2, at % 4 == 0 ? 0.12f : 0.03f, drums);
        }
        const float loudest = std::abs(*std::max_element(
            mSamples.begin(), mSamples.end(), [](float one, float other) { return std::abs(one) < std::abs(other); }));
        for (float &sample : mSamples)
            sample *= 0.7f / loudest;
    }
    void play(float from, float lasts, int pitch, float loudness, const std::array<float, 5> &colour) {
        const float frequency = 440 * std::pow(2.0f, static_cast<float>(pitch - 69) / 12);
        each(from, lasts, [&](float time) {
            float sum = 0;
            for (std::size_t i = 0; i < colour.size(); ++i)
                sum += colour[i] * sine(frequency * static_cast<float>(i + 1) * time);
            return sum * loudness * std::min({1.0f, time * 50, (lasts - time) * 20}) * std::exp(-time);
        });
    }
    void hit(float from, float lasts, float loudness) {
        each(from, lasts, [&](float time) { return mDice.between(-1, 1) * loudness * std::exp(-time * 5 / lasts); });
    }
    template <class Sound> void each(float from, float lasts, Sound &&sound) {
        const auto first = static_cast<std::size_t>(from * static_cast<float>(mRate));
        const auto count = static_cast<std::size_t>(lasts * static_cast<float>(mRate));
        for (std::size_t i = 0; i < count && first + i < mSamples.size(); ++i)
            mSamples[first + i] += sound(static_cast<float>(i) / static_cast<float>(mRate));
    }
    // Of so many whole turns, by a table.
    static float sine(float turns) {
        static const auto table = [] {
            std::array<float, 4096> made{};
            for (std::size_t i = 0; i < made.size(); ++i)
                made[i] = std::sin(2 * std::numbers::pi_v<float> * static_cast<float>(i) / 4096);
            return made;
        }();
        return table[static_cast<std::size_t>(turns * 4096) % 4096];
    }

    static constexpr std::array<std::array<int, 7>, 4> kScales = {
        {{0, 2, 4, 5, 7, 9, 11}, {0, 2, 3, 5, 7, 8, 10}, {0, 2, 3, 5, 7, 9, 10}, {0, 2, 4, 5, 7, 9, 10}}};

    const int mRate;
    std::vector<float> mSamples;
    Dice mDice;
};

} // namespace cantorel::test
