#pragma once

#include "platform/media/asset/Asset.h"
#include "tests/support/StampedSound.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace cantorel::test {

// Sound in memory, read at its own rate.
class MemoryAsset : public media::Asset {
public:
    MemoryAsset(media::SoundFormat format, std::vector<float> samples)
        : mFormat(format), mSamples(std::make_shared<std::vector<float>>(std::move(samples))) {}

    // Frames that carry their number, counted from that one.
    static std::shared_ptr<MemoryAsset> numbered(std::int64_t frames, media::SoundFormat format = {1000, 2},
                                                 std::int64_t first = 0) {
        std::vector<float> samples(static_cast<std::size_t>(frames * format.channels));
        stamp(samples, format.channels, first);
        return std::make_shared<MemoryAsset>(format, std::move(samples));
    }
    static std::shared_ptr<MemoryAsset> level(std::int64_t frames, float level, media::SoundFormat format = {1000, 2}) {
        return std::make_shared<MemoryAsset>(
            format, std::vector<float>(static_cast<std::size_t>(frames * format.channels), level));
    }

    QUrl url() const override { return {}; }
    media::MediaTime duration() const override {
        return {promisedFrames >= 0 ? promisedFrames
                                    : static_cast<std::int64_t>(mSamples->size()) / std::max(mFormat.channels, 1),
                std::max(mFormat.rate, 1)};
    }
    media::SoundFormat format() const override { return mFormat; }
    bool isPlayable() const override { return !mSamples->empty(); }
    bool hasProtectedContent() const override { return isProtected; }
    QList<media::MetadataItem> metadata() const override { return {}; }
    foundation::Result<std::unique_ptr<media::FrameReader>> openReader(media::SoundFormat format) const override {
        return std::unique_ptr<media::FrameReader>(std::make_unique<Reader>(*this, format));
    }

    std::int64_t promisedFrames = -1; // another length than the true one
    bool isProtected = false;

private:
    struct Reader : media::FrameReader {
        Reader(const MemoryAsset &asset, media::SoundFormat wanted)
            : own(asset.mFormat), format_(wanted), samples(asset.mSamples), length(asset.duration().value) {}
        media::SoundFormat format() const override { return format_; }
        std::int64_t frames() const override { return length; }
        void seek(std::int64_t frame) override { position = std::clamp<std::int64_t>(frame, 0, length); }
        foundation::Result<std::size_t> read(float *interleaved, std::size_t frames) override {
            const auto held = static_cast<std::int64_t>(samples->size()) / own.channels;
            // Less than asked for now and then, as decoders do.
            const auto count = std::min<std::int64_t>({static_cast<std::int64_t>(frames), held - position, 777});
            for (std::int64_t i = 0; i < std::max<std::int64_t>(count, 0); ++i)
                for (int channel = 0; channel < format_.channels; ++channel)
                    *interleaved++ = (*samples)[static_cast<std::size_t>((position + i) * own.channels
                                                                         + std::min(channel, own.channels - 1))];
            position += std::max<std::int64_t>(count, 0);
            return static_cast<std::size_t>(std::max<std::int64_t>(count, 0));
        }
        const media::SoundFormat own, format_;
        const std::shared_ptr<std::vector<float>> samples;
        const std::int64_t length;
        std::int64_t position = 0;
    };

    const media::SoundFormat mFormat;
    const std::shared_ptr<std::vector<float>> mSamples;
};

// All frames of an asset in its own format; empty when reading fails.
inline std::vector<float> framesOf(const media::Asset &asset) {
    auto reader = asset.openReader(asset.format());
    if (!reader)
        return {};
    const auto channels = static_cast<std::size_t>(asset.format().channels);
    std::vector<float> samples(static_cast<std::size_t>(asset.duration().value) * channels);
    for (std::size_t done = 0; done * channels < samples.size();) {
        const auto got = reader.value()->read(samples.data() + done * channels,
                                              std::min<std::size_t>(samples.size() / channels - done, 997));
        if (!got || got.value() == 0)
            return {};
        done += got.value();
    }
    return samples;
}

// The same by seeking to each frame from the last to the first.
inline std::vector<float> framesBackwards(const media::Asset &asset) {
    auto reader = asset.openReader(asset.format());
    const auto channels = static_cast<std::size_t>(asset.format().channels);
    std::vector<float> samples(static_cast<std::size_t>(asset.duration().value) * channels);
    for (auto frame = asset.duration().value; frame-- > 0;) {
        reader.value()->seek(frame);
        if (const auto got = reader.value()->read(&samples[static_cast<std::size_t>(frame) * channels], 1);
            !got || !got.value())
            return {};
    }
    return samples;
}

} // namespace cantorel::test
