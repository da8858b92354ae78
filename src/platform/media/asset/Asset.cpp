#include "platform/media/asset/Asset.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace cantorel::media {

namespace {

// Rounds what a reader of floats gives.
class RoundedSamples : public SampleReader {
public:
    explicit RoundedSamples(std::unique_ptr<FrameReader> reader) : mReader(std::move(reader)) {}

    SoundFormat format() const override { return mReader->format(); }
    std::int64_t frames() const override { return mReader->frames(); }
    foundation::Result<std::size_t> read(std::int16_t *interleaved, std::size_t frames) override {
        const auto channels = static_cast<std::size_t>(format().channels);
        mFloats.resize(frames * channels);
        auto got = mReader->read(mFloats.data(), frames);
        if (got)
            std::transform(mFloats.begin(), mFloats.begin() + static_cast<std::ptrdiff_t>(got.value() * channels),
                           interleaved, [](float sample) {
                               const long rounded = std::lrintf(std::clamp(sample, -2.0f, 2.0f) * 32768);
                               return static_cast<std::int16_t>(std::clamp(rounded, -32768L, 32767L));
                           });
        return got;
    }
    void seek(std::int64_t frame) override { mReader->seek(frame); }

private:
    std::unique_ptr<FrameReader> mReader;
    std::vector<float> mFloats;
};

} // namespace

foundation::Result<std::unique_ptr<SampleReader>> Asset::openSampleReader() const {
    auto reader = openReader(format());
    if (!reader)
        return reader.failure();
    return std::unique_ptr<SampleReader>(std::make_unique<RoundedSamples>(std::move(reader).value()));
}

} // namespace cantorel::media
