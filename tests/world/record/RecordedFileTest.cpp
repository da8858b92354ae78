// What a person hears in the file that "record" leaves: the sound that was played, whole, in phase and as loud.

#include "tests/support/Sound.h"
#include "tests/support/StampedSound.h"
#include "tests/world/record/RecordProgram.h"

#include <ostream>

namespace cantorel {
namespace {

using test::eventually;
using test::PrivateWorld;

constexpr double kRate = 48000;
constexpr std::size_t kSweepFrames = 48000, kToneFrames = 72000;
constexpr std::size_t kBlock = 1024;

// A sweep from 50 Hz to 12 kHz, then the tone, both at -20 dBFS, in both channels.
std::vector<float> sweepAndTone() {
    std::vector<float> samples;
    const double growth = std::log(12000.0 / 50.0) / double(kSweepFrames);
    for (std::size_t i = 0; i < kSweepFrames + kToneFrames; ++i) {
        const double phase = i < kSweepFrames
                                 ? 50 * 2 * std::numbers::pi / kRate * std::expm1(growth * double(i)) / growth
                                 : 2 * std::numbers::pi * test::kToneHertz * double(i - kSweepFrames) / kRate;
        samples.insert(samples.end(), 2, static_cast<float>(test::kToneAmplitude * std::sin(phase)));
    }
    return samples;
}

struct Likeness {
    double correlation = 0; // 1: the same but for its loudness
    double gain = 0;        // decibels
};

// Of the left channels of two stretches of stereo.
Likeness likeness(const float *samples, const float *reference, std::size_t frames) {
    double cross = 0, ours = 0, theirs = 0;
    for (std::size_t i = 0; i < 2 * frames; i += 2) {
        cross += double(samples[i]) * reference[i];
        ours += double(samples[i]) * samples[i];
        theirs += double(reference[i]) * reference[i];
    }
    return {cross / (std::sqrt(ours * theirs) + 1e-12), 10 * std::log10(ours / theirs + 1e-12)};
}

struct Comparison {
    double worst = 0;        // the least correlation of any block, all at one shift
    double farthestGain = 0; // of the tone's blocks, in decibels
};

Comparison compare(const std::vector<float> &samples, const std::vector<float> &reference) {
    std::size_t onset = 0;
    while (2 * onset < samples.size() && std::abs(samples[2 * onset]) < 0.02f)
        ++onset;
    std::size_t shift = 0;
    double best = 0;
    for (std::size_t at = onset - std::min<std::size_t>(onset, 1024); at < onset + 1024; ++at) {
        if (samples.size() < 2 * at + reference.size())
            break;
        const double correlation = likeness(&samples[2 * at], reference.data(), 8 * kBlock).correlation;
        if (correlation > best) {
            best = correlation;
            shift = at;
        }
    }
    Comparison comparison{best > 0 ? 1.0 : 0.0, 0};
    for (std::size_t first = 0; best > 0 && 2 * (first + kBlock) <= reference.size(); first += kBlock) {
        const Likeness block = likeness(&samples[2 * (shift + first)], &reference[2 * first], kBlock);
        comparison.worst = std::min(comparison.worst, block.correlation);
        // The coder smears the tone's two ends a little.
        if (first > kSweepFrames + kBlock && 2 * (first + 2 * kBlock) < reference.size())
            comparison.farthestGain = std::max(comparison.farthestGain, std::abs(block.gain));
    }
    return comparison;
}

struct Source {
    const char *name;
    const char *option;
    bool spoken; // into the microphone

    friend void PrintTo(const Source &source, std::ostream *out) { *out << source.name; }
};

class RecordedFile : public test::RecordProgramTest, public testing::WithParamInterface<Source> {};

} // namespace

// A single lost or doubled frame turns the tone by 0.13 rad in all blocks that follow, which this bound sees.
TEST_P(RecordedFile, HoldsTheSoundInPhaseAndAsLoud) {
    PrivateWorld::Options options;
    options.pulse = true;
    const PrivateWorld world(options);
    ASSERT_TRUE(world.ready());
    const QString sound = QDir::homePath() + "/sound.wav", heard = QDir::homePath() + "/heard.wav";
    const std::vector<float> reference = sweepAndTone();
    std::vector<float> padded(9600, 0.0f);
    padded.insert(padded.end(), reference.begin(), reference.end());
    padded.insert(padded.end(), 24000, 0.0f);
    test::writeWav(sound, padded);

    const auto run = start({"--source", GetParam().option, "--format", "2"});
    ASSERT_TRUE(run->begins()) << run->error.constData();
    const auto listener = world.listen("builtin_output", heard);
    const auto player = GetParam().spoken ? world.feed(sound, "builtin_microphone") : world.start("paplay", {sound});
    EXPECT_TRUE(eventually([&] { return player->state() == QProcess::NotRunning; }, 15000));
    eventually([] { return false; }, 200); // what is still on its way
    test::finish(*listener, SIGINT);
    run->signal(SIGINT);
    ASSERT_EQ(run->status(), 130) << run->error.constData();

    const QJsonObject finished = run->event("finished");
    const std::vector<float> samples = test::decoded(finished["file"].toString());
    const auto captured = static_cast<std::size_t>(std::llround(finished["seconds"].toDouble() * kRate));
    EXPECT_GE(samples.size() / 2, captured);
    EXPECT_LT(samples.size() / 2, captured + 1024) << "only the last packet is filled up";
    EXPECT_EQ(finished["droppedFrames"].toInt(), 0);
    const Comparison file = compare(samples, reference);
    EXPECT_GT(file.worst, 0.995);
    EXPECT_LT(file.farthestGain, 0.1);
    if (!GetParam().spoken) {
        const Comparison ear = compare(test::readWav(heard), reference);
        EXPECT_GT(ear.worst, 0.99999);
        EXPECT_LT(ear.farthestGain, 0.001);
    }
}

INSTANTIATE_TEST_SUITE_P(, RecordedFile,
                         testing::Values(Source{"System", "system", false}, Source{"Microphone", "mic", true},
                                         Source{"SystemOfBoth", "both", false},
                                         Source{"MicrophoneOfBoth", "both", true}),
                         [](const auto &source) { return std::string(source.param.name); });

} // namespace cantorel
