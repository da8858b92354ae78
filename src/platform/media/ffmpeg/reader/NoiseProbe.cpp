#include "platform/media/ffmpeg/reader/NoiseProbe.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace cantorel::media {

namespace {

// Writes numbers bit by bit, the highest first.
class BitWriter {
public:
    void put(unsigned value, int bits) {
        for (int i = bits - 1; i >= 0; --i, ++mCount) {
            if (mCount % 8 == 0)
                mBytes.push_back(0);
            mBytes.back() |= static_cast<std::uint8_t>((value >> i & 1) << (7 - mCount % 8));
        }
    }
    std::vector<std::uint8_t> take() { return std::move(mBytes); }

private:
    std::vector<std::uint8_t> mBytes;
    int mCount = 0;
};

// One channel whose lowest band is noise, all above it silence.
void putNoise(BitWriter &out) {
    out.put(130, 8); // gain
    out.put(0, 4);   // one long window
    out.put(1, 6);   // bands
    out.put(0, 1);   // no prediction
    out.put(13, 4);  // the code book that stands for noise
    out.put(1, 5);   // for one band
    out.put(256, 9); // its level
    out.put(0, 3);   // no pulses, no shaping, no gain control
}

std::vector<std::uint8_t> packetOfNoise(int channels) {
    BitWriter out;
    out.put(channels == 2 ? 1 : 0, 3);
    out.put(0, 4);
    if (channels == 2)
        out.put(0, 1); // a window each
    for (int i = 0; i < channels; ++i)
        putNoise(out);
    out.put(7, 3);
    return out.take();
}

} // namespace

NoiseProbe::NoiseProbe(const SoundTrack &track) : mNoise(packetOfNoise(track.format.channels)) {
    if (auto decoder = openDecoder(track))
        mTwin = std::move(decoder).value();
}

bool NoiseProbe::draw(AVCodecContext &decoder, std::vector<std::uint8_t> &drawn) {
    avcodec_flush_buffers(&decoder);
    for (int i = 0; i < 2; ++i) {
        mPacket->data = mNoise.data();
        mPacket->size = static_cast<int>(mNoise.size());
        av_frame_unref(mFrame.get());
        if (avcodec_send_packet(&decoder, mPacket.get()) < 0 || avcodec_receive_frame(&decoder, mFrame.get()) < 0)
            return false;
    }
    const int width = av_get_bytes_per_sample(static_cast<AVSampleFormat>(mFrame->format));
    drawn.assign(mFrame->extended_data[0], mFrame->extended_data[0] + mFrame->nb_samples * width);
    avcodec_flush_buffers(&decoder);
    return std::any_of(drawn.begin(), drawn.end(), [](std::uint8_t byte) { return byte != 0; });
}

bool NoiseProbe::hasDrawn(AVCodecContext &decoder) {
    return !mTwin || !draw(*mTwin, mExpected) || !draw(decoder, mDrawn) || mExpected != mDrawn;
}

} // namespace cantorel::media
