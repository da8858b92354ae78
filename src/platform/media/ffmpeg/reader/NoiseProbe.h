#pragma once

#include "platform/media/ffmpeg/reader/SoundTrack.h"

#include <vector>

namespace cantorel::media {

// Tells whether a decoder of AAC has drawn noise. Its generator of noise runs on from packet to packet and can't be
// set, so that what follows depends on all noise before. Two decoders that are given a packet of noise draw the same
// only if they have drawn as much before.
class NoiseProbe {
public:
    explicit NoiseProbe(const SoundTrack &track);

    // True where that can't be told as well. The decoder is flushed.
    bool hasDrawn(AVCodecContext &decoder);

private:
    // What comes out of a packet of noise behind another.
    bool draw(AVCodecContext &decoder, std::vector<std::uint8_t> &drawn);

    CodecContextHandle mTwin; // has met nothing but these packets
    std::vector<std::uint8_t> mNoise;
    PacketHandle mPacket{av_packet_alloc()};
    FrameHandle mFrame{av_frame_alloc()};
    std::vector<std::uint8_t> mExpected, mDrawn;
};

} // namespace cantorel::media
