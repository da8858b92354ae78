// Codecs that code nothing: each 1024 frames become a packet of their number. For tests of hours, in which the coder is
// not what is tested; loaded in its place by CANTOREL_MODULES.

#include "platform/media/Codecs.h"

namespace cantorel::media {
namespace {

class QuickAacEncoder : public AacEncoder {
public:
    explicit QuickAacEncoder(int rate) : mFormat{rate, 2, defaultAacBitRate(rate), kFramesPerPacket, {0x11, 0x90}} {}

    const AacFormat &format() const override { return mFormat; }
    foundation::Result<void> encode(std::span<const float> interleaved, PacketRun &packets) override {
        mFrames += static_cast<std::int64_t>(interleaved.size() / 2);
        while ((mPackets + 1) * kFramesPerPacket <= mFrames)
            add(packets);
        return {};
    }
    foundation::Result<void> flush(PacketRun &packets) override {
        while (mPackets * kFramesPerPacket < mFrames + mFormat.primingFrames)
            add(packets);
        return {};
    }
    std::int64_t frames() const override { return mFrames; }

private:
    void add(PacketRun &packets) {
        for (int shift = 56; shift >= 0; shift -= 8)
            packets.bytes.push_back(static_cast<std::uint8_t>(mPackets >> shift));
        packets.sizes.push_back(8);
        ++mPackets;
    }

    const AacFormat mFormat;
    std::int64_t mFrames = 0, mPackets = 0;
};

class QuickCodecs : public Codecs {
public:
    foundation::Result<std::unique_ptr<AacEncoder>> makeAacEncoder(int inputRate, const AacSettings &) const override {
        return std::unique_ptr<AacEncoder>(new QuickAacEncoder(inputRate));
    }
};

} // namespace
} // namespace cantorel::media

extern "C" __attribute__((visibility("default"))) const cantorel::media::Codecs *cantorel_media_codecs() {
    static const cantorel::media::QuickCodecs codecs;
    return &codecs;
}
