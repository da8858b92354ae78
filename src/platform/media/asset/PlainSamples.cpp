#include "platform/media/asset/PlainSamples.h"

#include <algorithm>
#include <bit>

namespace cantorel::media {

using foundation::Result;

namespace {

constexpr std::size_t kSamplesAtOnce = 32 * 1024;

} // namespace

Result<std::size_t> PlainSamples::read(std::int16_t *interleaved, std::size_t frames) {
    const auto channels = static_cast<std::size_t>(mSound.format.channels);
    const auto wanted = static_cast<std::size_t>(std::min(mSound.frames - mNext, std::int64_t(frames)));
    const std::int64_t position = mSound.position + mNext * mSound.frameBytes();
    const std::span<std::int16_t> samples(interleaved, wanted * channels);
    const bool isOurs = mSound.sampleBytes == sizeof(std::int16_t) && std::endian::native == std::endian::little;
    auto got = isOurs ? mFile->read(position, {reinterpret_cast<std::uint8_t *>(interleaved), samples.size_bytes()})
                      : readOthers(position, samples);
    if (got) {
        got.value() /= isOurs ? sizeof(std::int16_t) * channels : channels;
        mNext += static_cast<std::int64_t>(got.value());
    }
    return got;
}

Result<std::size_t> PlainSamples::readOthers(std::int64_t position, std::span<std::int16_t> samples) {
    const auto width = static_cast<std::size_t>(mSound.sampleBytes);
    std::size_t done = 0;
    while (done < samples.size()) {
        const std::size_t count = std::min(samples.size() - done, kSamplesAtOnce);
        mBytes.resize(count * width);
        const auto got = mFile->read(position + static_cast<std::int64_t>(done * width), mBytes);
        if (!got)
            return got.failure();
        const std::size_t whole = got.value() / width;
        const std::uint8_t *top = mBytes.data() + width - 1;
        for (std::size_t i = 0; i < whole; ++i, top += width)
            samples[done + i] = static_cast<std::int16_t>(width == 1 ? (*top - 0x80) << 8 : *top << 8 | top[-1]);
        done += whole;
        if (whole < count)
            break;
    }
    return done;
}

void PlainSamples::seek(std::int64_t frame) { mNext = std::clamp<std::int64_t>(frame, 0, mSound.frames); }

} // namespace cantorel::media
