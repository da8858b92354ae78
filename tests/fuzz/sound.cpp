#include "editor/levels/GroupMeans.h"
#include "editor/levels/LevelReading.h"
#include "platform/media/asset/OpenAsset.h"
#include "tests/fuzz/FuzzFolder.h"

#include <QUrl>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

// A file of any kind: what it is opens, its tags and its sound are read, from the middle too, and reduced. Both readers
// of its sound, of which one may do without a decoder, give the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    using namespace cantorel;
    constexpr std::int64_t kLongest = 1 << 21; // a few bytes may well promise hours
    static const fuzz::FuzzFolder folder;
    folder.put("sound", data, size);
    const auto opened = media::openAsset(QUrl::fromLocalFile(folder.path() + QStringLiteral("/sound")));
    if (!opened || !opened.value()->isPlayable() || opened.value()->duration().value > kLongest)
        return 0;
    const media::Asset &asset = *opened.value();
    (void)asset.metadata();
    if (auto reader = asset.openReader({16000, 2})) {
        std::vector<float> sound(2 * 3000);
        const std::int64_t half = reader.value()->frames() / 2;
        reader.value()->seek(half);
        const auto got = reader.value()->read(sound.data(), 3000);
        if (got
            && static_cast<std::int64_t>(got.value()) != std::min<std::int64_t>(reader.value()->frames() - half, 3000))
            std::abort();
    }
    auto floats = asset.openReader(asset.format());
    auto samples = asset.openSampleReader();
    if (floats && samples) {
        const auto width = static_cast<std::size_t>(asset.format().channels);
        std::vector<float> sound(width * 3000);
        std::vector<std::int16_t> same(sound.size());
        const auto got = floats.value()->read(sound.data(), 3000), alike = samples.value()->read(same.data(), 3000);
        if (floats.value()->frames() != samples.value()->frames() || got.ok() != alike.ok()
            || (got && got.value() != alike.value()))
            std::abort();
        for (std::size_t i = 0; got && i < got.value() * width; ++i)
            if (std::abs(std::clamp(sound[i], -1.0f, 1.0f) * 32768 - same[i]) > 1.01f)
                std::abort();
    }
    LevelReading reading(opened.value(), folder.path());
    const auto read = reading.run({});
    if (read && reading.series()->values().size() != static_cast<std::size_t>(asset.duration().value) / kGroupFrames)
        std::abort();
    return 0;
}
