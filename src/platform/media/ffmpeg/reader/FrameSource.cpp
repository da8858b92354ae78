#include "platform/media/ffmpeg/reader/FrameSource.h"

#include <algorithm>
#include <utility>

extern "C" {
#include <libavutil/samplefmt.h>
}

namespace cantorel::media {

using foundation::Result;

namespace {

constexpr std::size_t kWindowBytes = 256 * 1024;
constexpr std::size_t kCheckedAtOnce = 64; // packets

bool isOfKind(const AVFrame &frame, const SoundTrack &track) {
    return frame.nb_samples > 0 && frame.sample_rate == track.format.rate
           && frame.ch_layout.nb_channels == track.format.channels && frame.format == track.sampleFormat;
}

} // namespace

Result<std::unique_ptr<FrameSource>> openSource(const SoundTrack &track) {
    const auto opened = [](auto source) -> Result<std::unique_ptr<FrameSource>> {
        if (const auto result = source->open(); !result)
            return result.failure();
        return std::unique_ptr<FrameSource>(std::move(source));
    };
    return track.hasPackets() ? opened(std::make_unique<TableSource>(track))
                              : opened(std::make_unique<StreamSource>(track));
}

Result<void> TableSource::open() {
    auto decoder = openDecoder(mTrack);
    if (!decoder)
        return decoder.failure();
    mDecoder = std::move(decoder).value();
    mProbe.reset(); // It knows how much noise the one before has drawn.
    return {};
}

void TableSource::seek(std::int64_t frame) {
    if (!mTrack.hasPackets())
        return;
    const bool isBehind = frame >= mTrack.packets.frames();
    mWanted = isBehind ? mTrack.packets.count() : mTrack.packets.at(frame);
    // What was decoded ahead was looked at for noise, which has flushed the decoder: nothing lies before its place.
    const bool isOnItsWay = mChecked.empty();
    mChecked.clear();
    const std::size_t first = mHasNoise ? 0 : mWanted - std::min(mWanted, mTrack.packetsBefore);
    if (isOnItsWay && mNext <= mWanted && mNext >= first)
        return;
    begin(first);
}

void TableSource::begin(std::size_t packet) {
    mNext = packet;
    // A flush leaves the shape of the last window behind, which counts where nothing lies before.
    if (packet > 0 || !open())
        avcodec_flush_buffers(mDecoder.get());
    mPast = packet == 0 ? Past::Met : Past::Unmet;
}

void TableSource::setExact(bool isExact) {
    mIsExact = isExact && mTrack.parameters->codec_id == AV_CODEC_ID_AAC;
    mHasNoise = mHasNoise && mIsExact;
}

bool TableSource::needsAllBefore() {
    if (mTrack.packetsBefore == SoundTrack::kAllBefore)
        return true;
    if (mTrack.parameters->codec_id != AV_CODEC_ID_AAC)
        return false;
    if (!mProbe)
        mProbe = std::make_unique<NoiseProbe>(mTrack);
    mNext = mTrack.packets.count();
    return mProbe->hasDrawn(*mDecoder);
}

Result<std::span<const std::uint8_t>> TableSource::bytes(const PacketTable::Packet &packet) {
    const auto size = static_cast<std::size_t>(packet.size);
    const bool isThere = packet.position >= mWindowBegin
                         && packet.position - mWindowBegin + packet.size <= static_cast<std::int64_t>(mWindowBytes);
    if (!isThere) {
        mWindow.resize(std::max(kWindowBytes, size));
        mWindowBytes = 0;
        const auto got = mTrack.file->read(packet.position, mWindow);
        if (!got)
            return got.failure();
        mWindowBegin = packet.position;
        mWindowBytes = got.value();
    }
    const auto offset = static_cast<std::size_t>(packet.position - mWindowBegin);
    return std::span<const std::uint8_t>(mWindow).subspan(offset, std::min(size, mWindowBytes - offset));
}

int TableSource::decode(std::span<const std::uint8_t> bytes) {
    // The decoder makes a copy, with the room behind it that it asks for.
    mPacket->data = const_cast<std::uint8_t *>(bytes.data());
    mPacket->size = static_cast<int>(bytes.size());
    av_frame_unref(mFrame.get());
    const bool isDecoded = avcodec_send_packet(mDecoder.get(), mPacket.get()) >= 0
                           && avcodec_receive_frame(mDecoder.get(), mFrame.get()) >= 0 && isOfKind(*mFrame, mTrack);
    return isDecoded ? mFrame->nb_samples : 0;
}

const AVFrame *TableSource::silence(int frames) {
    av_frame_unref(mSilence.get());
    mSilence->nb_samples = frames;
    mSilence->format = mTrack.sampleFormat;
    mSilence->sample_rate = mTrack.format.rate;
    av_channel_layout_default(&mSilence->ch_layout, mTrack.format.channels);
    if (av_frame_get_buffer(mSilence.get(), 0) < 0)
        return nullptr;
    av_samples_set_silence(mSilence->extended_data, 0, frames, mTrack.format.channels, mTrack.sampleFormat);
    return mSilence.get();
}

Result<const AVFrame *> TableSource::next() {
    return !mChecked.empty() || (mIsExact && mPast == Past::Unmet) ? nextChecked() : decodeNext();
}

// Some are decoded ahead; if there was noise among them, all is decoded from the beginning on.
Result<const AVFrame *> TableSource::nextChecked() {
    if (mChecked.size() > 1) { // The first one is what was given last.
        mChecked.pop_front();
        mFirst = mChecked.front().first;
        return mChecked.front().frame.get();
    }
    mChecked.clear();
    const std::size_t wanted = std::max(mNext, mWanted);
    while (mChecked.size() < kCheckedAtOnce) {
        const auto decoded = decodeNext();
        if (!decoded)
            return decoded;
        if (!decoded.value())
            break;
        mChecked.push_back({FrameHandle(av_frame_clone(decoded.value())), mFirst});
        if (!mChecked.back().frame)
            return nullptr; // There is no memory left.
    }
    if (mChecked.empty())
        return nullptr;
    const std::size_t next = mNext;
    mHasNoise = needsAllBefore();
    if (mHasNoise) {
        mChecked.clear();
        begin(0);
        mWanted = wanted;
        return decodeNext();
    }
    mWanted = next;
    mNext = next - std::min(next, mTrack.packetsBefore); // The probe has flushed the decoder.
    mFirst = mChecked.front().first;
    return mChecked.front().frame.get();
}

Result<const AVFrame *> TableSource::decodeNext() {
    while (mNext < mTrack.packets.count()) {
        const PacketTable::Packet packet = mTrack.packets.packet(mNext);
        const auto data = bytes(packet);
        if (!data)
            return data.failure();
        mDecodedFrames = decode(data.value());
        if (mNext++ < mWanted)
            continue;
        mFirst = packet.firstFrame;
        if (mDecodedFrames >= packet.frames) {
            mFrame->nb_samples = packet.frames;
            return mFrame.get();
        }
        const AVFrame *silent = silence(packet.frames);
        if (silent && mDecodedFrames > 0)
            av_samples_copy(mSilence->extended_data, mFrame->extended_data, 0, 0, mDecodedFrames,
                            mTrack.format.channels, mTrack.sampleFormat);
        return silent;
    }
    return nullptr;
}

Result<void> StreamSource::open() {
    auto demuxer = Demuxer::open(mTrack.file, mTrack.edits);
    if (!demuxer)
        return demuxer.failure();
    auto decoder = openDecoder(mTrack);
    if (!decoder)
        return decoder.failure();
    mDemuxer = std::move(demuxer).value();
    mDecoder = std::move(decoder).value();
    mDecoded = 0;
    if (const AVStream *stream = mDemuxer->sound()) {
        mStream = stream->index;
        mDecoder->pkt_timebase = stream->time_base;
        if (mTrack.edits == Edits::Ignored)
            mDecoder->flags2 |= AV_CODEC_FLAG2_SKIP_MANUAL; // Whoever reads the frames trims them.
        mDemuxer->select(*stream);
    }
    return {};
}

void StreamSource::seek(std::int64_t frame) {
    if (frame < mDecoded)
        mDemuxer.reset();
}

Result<const AVFrame *> StreamSource::next() {
    if (!mDemuxer)
        if (const auto opened = open(); !opened)
            return opened.failure();
    while (true) {
        av_frame_unref(mFrame.get());
        const int error = avcodec_receive_frame(mDecoder.get(), mFrame.get());
        if (error == 0) {
            if (!isOfKind(*mFrame, mTrack))
                continue;
            mFirst = mDecoded;
            mDecoded += mFrame->nb_samples;
            return mFrame.get();
        }
        if (error == AVERROR_EOF)
            return nullptr;
        const auto got = mDemuxer->next(*mPacket);
        if (!got)
            return got.failure();
        if (!got.value())
            (void)avcodec_send_packet(mDecoder.get(), nullptr); // The rest comes out of the decoder now.
        else if (mPacket->stream_index == mStream)
            (void)avcodec_send_packet(mDecoder.get(), mPacket.get()); // A damaged packet is passed over.
    }
}

} // namespace cantorel::media
