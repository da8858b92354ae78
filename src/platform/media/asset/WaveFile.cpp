#include "platform/media/asset/WaveFile.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace cantorel::media {

namespace {

using namespace std::string_view_literals;

constexpr int kMostChunks = 1000;
constexpr std::int64_t kStreamed = 0xFFFFFFFF; // as a size: its writer did not come to know it
constexpr std::int64_t kTriedBytes = 128 * 1024;
constexpr std::int64_t kPlain = 1, kExtensible = 0xFFFE; // kinds of samples
constexpr std::string_view kPlainGuid = "\x01\0\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71"sv;

// A part of the file in memory; less where the file ends.
class Part {
public:
    Part(const SourceFile &file, std::int64_t position, std::int64_t size)
        : mBytes(static_cast<std::size_t>(std::clamp<std::int64_t>(file.size() - position, 0, size))) {
        const auto got = file.read(position, mBytes);
        mBytes.resize(got ? got.value() : 0);
    }
    std::int64_t size() const { return static_cast<std::int64_t>(mBytes.size()); }
    // What lies outside is 0, or empty.
    std::int64_t number(std::size_t position, std::size_t count) const {
        std::uint64_t value = 0;
        for (std::size_t i = position + count; i-- > position;)
            value = value << 8 | (i < mBytes.size() ? mBytes[i] : 0u);
        return static_cast<std::int64_t>(value);
    }
    std::string_view text(std::size_t position = 0, std::size_t count = std::string_view::npos) const {
        const std::string_view all(reinterpret_cast<const char *>(mBytes.data()), mBytes.size());
        return all.substr(std::min(position, all.size()), count);
    }

private:
    std::vector<std::uint8_t> mBytes;
};

// What the chunk "fmt " says, with its samples still to be found; nothing where it contradicts itself.
std::optional<PlainSound> readFormat(const Part &chunk) {
    const std::int64_t kind = chunk.number(0, 2), bits = chunk.number(14, 2);
    const bool isPlain = kind == kPlain && (chunk.size() == 16 || (chunk.size() == 18 && chunk.number(16, 2) == 0));
    const bool isExtensible = kind == kExtensible && chunk.size() == 40 && chunk.number(16, 2) == 22
                              && chunk.number(18, 2) == bits && chunk.text(24) == kPlainGuid;
    PlainSound sound;
    sound.format = {static_cast<int>(std::min<std::int64_t>(chunk.number(4, 4), INT32_MAX)),
                    static_cast<int>(chunk.number(2, 2))};
    sound.sampleBytes = static_cast<int>(bits / 8);
    const bool isTrue = (isPlain || isExtensible) && sound.format.isSound() && bits % 8 == 0 && bits >= 8 && bits <= 32
                        && chunk.number(12, 2) == sound.frameBytes()
                        && chunk.number(8, 4) == sound.frameBytes() * sound.format.rate;
    return isTrue ? std::optional(sound) : std::nullopt;
}

// Sound of a coder may be wrapped up as if it were samples, so that it passes through what knows nothing else.
bool mayBeCoded(const Part &samples) {
    const std::size_t begin = std::min(samples.text().find_first_not_of('\0'), samples.text().size());
    const std::int64_t first = samples.number(begin, 1) << 8 | samples.number(begin + 1, 1);
    if ((first & 0xFFE0) == 0xFFE0 || (first & 0xFFE0) == 0x56E0 || first == 0x0B77 || first == 0x770B)
        return true; // Layers of MPEG, AAC, AC-3.
    // The kinds of DTS, and frames for a digital line.
    constexpr std::string_view kMarks[] = {"\x7F\xFE\x80\x01"sv, "\xFE\x7F\x01\x80"sv, "\x1F\xFF\xE8\x00"sv,
                                           "\xFF\x1F\x00\xE8"sv, "\x64\x58\x20\x25"sv, "\x72\xF8\x1F\x4E"sv};
    return std::any_of(std::begin(kMarks), std::end(kMarks),
                       [&](std::string_view mark) { return samples.text().find(mark) != std::string_view::npos; });
}

} // namespace

std::optional<PlainSound> findWaveSound(const SourceFile &file) {
    const Part top(file, 0, 36);
    const bool isLong = top.text(0, 4) == "RF64" && top.text(12, 4) == "ds64" && top.number(16, 4) >= 24;
    if ((!isLong && top.text(0, 4) != "RIFF") || top.text(8, 4) != "WAVE")
        return {};
    std::optional<PlainSound> sound;
    std::int64_t position = 12;
    for (int i = 0; i < kMostChunks; ++i) {
        const Part head(file, position, 8);
        if (head.size() < 8) {
            if (!sound || sound->frames == 0
                || (sound->sampleBytes == 2 && mayBeCoded(Part(file, sound->position, kTriedBytes))))
                return {};
            return sound;
        }
        const std::string_view name = head.text(0, 4);
        const std::int64_t begin = position + 8;
        std::int64_t size = head.number(4, 4);
        if (name == "fmt ") {
            if (sound)
                return {};
            sound = readFormat(Part(file, begin, std::min<std::int64_t>(size, 41)));
            if (!sound)
                return {};
        } else if (name == "data") {
            if (isLong)
                size = top.number(28, 8);
            if (!sound || sound->frames > 0 || size <= 0 || (size == kStreamed && !isLong))
                return {};
            sound->position = begin;
            sound->frames = std::min(size, file.size() - begin) / sound->frameBytes();
            if (size >= file.size() - begin)
                size = file.size() - begin;
        } else if (name == "XMA2" || name == "SMV0" || (name == "LIST" && size < 4) || (name == "bext" && size < 602)) {
            return {};
        }
        position = begin + size + size % 2;
    }
    return {};
}

} // namespace cantorel::media
