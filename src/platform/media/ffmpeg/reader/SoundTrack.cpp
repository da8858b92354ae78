#include "platform/media/ffmpeg/reader/SoundTrack.h"

#include "platform/media/asset/AssetFailures.h"
#include "platform/media/ffmpeg/reader/FlacFrames.h"
#include "platform/media/ffmpeg/reader/FrameSource.h"
#include "platform/media/ffmpeg/reader/MovieTrack.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

extern "C" {
#include <libavutil/intreadwrite.h>
#include <libavutil/mathematics.h>
}

namespace cantorel::media {

using foundation::Result;

namespace {

constexpr int kTriedPackets = 64;                // until one gives sound
constexpr std::int64_t kLongestPacket = 1 << 20; // frames
// The bits of a frame of MP3 may lie in so many before it.
constexpr std::size_t kMpegPacketsBefore = 12;

bool isDemuxedBy(const AVFormatContext &context, std::string_view name) { return context.iformat->name == name; }

bool isMovie(const AVFormatContext &context) {
    return std::string_view(context.iformat->name).find("mp4") != std::string_view::npos;
}

bool isPlainSamples(AVCodecID codec) {
    return av_get_exact_bits_per_sample(codec) >= 8 && std::string_view(avcodec_get_name(codec)).substr(0, 4) == "pcm_";
}

std::int64_t framesOfPlain(std::int64_t bytes, const AVStream &stream) {
    const AVCodecParameters &parameters = *stream.codecpar;
    return bytes * 8
           / std::max(av_get_exact_bits_per_sample(parameters.codec_id) * parameters.ch_layout.nb_channels, 1);
}

// Codecs of which each packet gives its own frames, whenever it is decoded.
bool hasOwnFrames(AVCodecID codec) {
    return codec == AV_CODEC_ID_AAC || codec == AV_CODEC_ID_MP3 || codec == AV_CODEC_ID_FLAC
           || codec == AV_CODEC_ID_ALAC || isPlainSamples(codec);
}

// Decodes until it is known what comes out.
class Probe {
public:
    explicit Probe(SoundTrack &track) : mTrack(track) {
        if (auto decoder = openDecoder(track)) {
            mDecoder = std::move(decoder).value();
            mDecoder->flags2 |= AV_CODEC_FLAG2_SKIP_MANUAL; // What is cut off its first packet counts here.
        }
    }
    bool isDone() const { return !mDecoder || mTried >= kTriedPackets || mTrack.isPlayable; }
    int framesOfPacket() const { return mFrames; }
    std::int64_t firstPosition() const { return mFirstPosition; }
    // One channel or two of the plain kind, which has no memory but the packet before.
    bool isSimpleAac() const { return mIsSimple; }
    void take(const AVPacket &packet) {
        if (isDone())
            return;
        if (mTried++ == 0)
            mFirstPosition = packet.pos;
        if (avcodec_send_packet(mDecoder.get(), &packet) < 0 || avcodec_receive_frame(mDecoder.get(), mFrame.get()) < 0
            || mFrame->nb_samples <= 0 || !SoundFormat{mFrame->sample_rate, mFrame->ch_layout.nb_channels}.isSound())
            return;
        mTrack.isPlayable = true;
        mTrack.format = {mFrame->sample_rate, mFrame->ch_layout.nb_channels};
        mTrack.sampleFormat = static_cast<AVSampleFormat>(mFrame->format);
        mFrames = mFrame->nb_samples;
        mIsSimple = mDecoder->profile == FF_PROFILE_AAC_LOW && mFrames == 1024 && mTrack.format.channels <= 2;
    }

private:
    SoundTrack &mTrack;
    CodecContextHandle mDecoder;
    FrameHandle mFrame{av_frame_alloc()};
    int mTried = 0;
    int mFrames = 0;
    std::int64_t mFirstPosition = -1;
    bool mIsSimple = false;
};

// Takes the packets of a whole file down, and what their container says of their times.
class Scan {
public:
    Scan(SoundTrack &track, const AVStream &stream, Probe &probe) : mTrack(track), mStream(stream), mProbe(probe) {}

    Result<void> run(Demuxer &demuxer, bool ownFrames) {
        const PacketHandle packet{av_packet_alloc()};
        demuxer.select(mStream);
        while (true) {
            const auto got = demuxer.next(*packet);
            if (!got)
                return got.failure();
            if (!got.value())
                break;
            if (packet->stream_index != mStream.index)
                continue;
            mProbe.take(*packet);
            mTrack.bytes += packet->size;
            takeTrims(*packet);
            takeTimes(*packet);
            if (ownFrames && mIsWhole)
                takePlace(*packet);
            ++mCount;
        }
        if (!mIsWhole)
            mTrack.packets = {};
        return {};
    }
    std::int64_t skipped() const { return mSkipped; }
    std::int64_t discarded() const { return mDiscarded; }
    // What is heard, as its container tells: what lies before time 0 is not. Gaps count, as far as a gap can be true.
    std::int64_t heard(int rate) const {
        const std::int64_t span = mEnd - std::max<std::int64_t>(begin(), 0);
        const std::int64_t told = span > 0 ? std::min(span, 2 * mLengths + mCount) : mLengths;
        const std::int64_t skipped = begin() < 0 ? 0 : mSkipped;
        return std::max<std::int64_t>(av_rescale_q(told, mStream.time_base, {1, rate}) - skipped, 0);
    }
    // Of all packets.
    std::int64_t length() const { return mEnd - begin(); }
    std::int64_t begin() const { return mBegin == AV_NOPTS_VALUE ? 0 : mBegin; }

private:
    void takeTrims(const AVPacket &packet) {
        std::size_t size = 0;
        const std::uint8_t *data = av_packet_get_side_data(&packet, AV_PKT_DATA_SKIP_SAMPLES, &size);
        if (!data || size < 8)
            return;
        if (mCount == 0)
            mSkipped = std::min<std::int64_t>(AV_RL32(data), kLongestPacket);
        mDiscarded = std::min<std::int64_t>(AV_RL32(data + 4), kLongestPacket);
    }
    void takeTimes(const AVPacket &packet) {
        const std::int64_t most =
            av_rescale_q(kLongestPacket, {1, std::max(mStream.codecpar->sample_rate, 1)}, mStream.time_base);
        mLengths += std::clamp<std::int64_t>(packet.duration, 0, most);
        if (packet.pts == AV_NOPTS_VALUE)
            return;
        if (mBegin == AV_NOPTS_VALUE)
            mBegin = packet.pts;
        mEnd = std::max(mEnd, packet.pts + packet.duration);
    }
    void takePlace(const AVPacket &packet) {
        const AVCodecID codec = mStream.codecpar->codec_id;
        if (codec == AV_CODEC_ID_MP3 && (packet.size < 4 || (AV_RB16(packet.data) & 0xFFE0) != 0xFFE0))
            return; // What is no sound makes none.
        std::int64_t frames = mProbe.framesOfPacket();
        if (codec == AV_CODEC_ID_FLAC)
            frames = av_rescale_q(packet.duration, mStream.time_base, {1, std::max(mTrack.format.rate, 1)});
        else if (isPlainSamples(codec))
            frames = framesOfPlain(packet.size, mStream);
        if (frames == 0)
            return; // Damage that was taken for a packet makes no sound.
        mIsWhole = frames > 0 && frames <= kLongestPacket && packet.pos >= 0 && (!isSample() || liesThere(packet));
        if (mIsWhole)
            mTrack.packets.add(packet.pos, packet.size, static_cast<std::int32_t>(frames));
    }
    bool isSample() const { return mCount < 3 || mCount % 256 == 0; }
    // A container that cuts its packets up or wraps them has none to be taken from the file.
    bool liesThere(const AVPacket &packet) const {
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(packet.size));
        const auto got = mTrack.file->read(packet.pos, bytes);
        return got && got.value() == bytes.size() && std::memcmp(bytes.data(), packet.data, bytes.size()) == 0;
    }

    SoundTrack &mTrack;
    const AVStream &mStream;
    Probe &mProbe;
    std::int64_t mCount = 0;
    std::int64_t mSkipped = 0, mDiscarded = 0; // frames in front and behind
    std::int64_t mBegin = AV_NOPTS_VALUE, mEnd = 0, mLengths = 0;
    bool mIsWhole = true;
};

// The first packets alone.
Result<void> probe(Demuxer &demuxer, const AVStream &stream, Probe &probe) {
    const PacketHandle packet{av_packet_alloc()};
    demuxer.select(stream);
    while (!probe.isDone()) {
        const auto got = demuxer.next(*packet);
        if (!got)
            return got.failure();
        if (!got.value())
            break;
        if (packet->stream_index == stream.index)
            probe.take(*packet);
    }
    return {};
}

// The packets of a movie from its own table, which is there once it is opened.
void takeIndex(SoundTrack &track, AVStream &stream, int framesOfPacket) {
    const int count = avformat_index_get_entries_count(&stream);
    const AVCodecID codec = stream.codecpar->codec_id;
    std::int64_t left = track.file->size();
    for (int i = 0; i < count; ++i) {
        const AVIndexEntry entry = *avformat_index_get_entry(&stream, i);
        left -= entry.size;
        // What is cut off is not there, and no byte is there twice.
        if (entry.size <= 0 || entry.pos < 0 || entry.pos > track.file->size() - entry.size || left < 0)
            break;
        std::int64_t frames = framesOfPacket;
        if (isPlainSamples(codec)) {
            frames = framesOfPlain(entry.size, stream);
        } else if (codec == AV_CODEC_ID_FLAC) {
            const std::int64_t next =
                i + 1 < count ? avformat_index_get_entry(&stream, i + 1)->timestamp : stream.duration;
            frames = av_rescale_q(next - entry.timestamp, stream.time_base, {1, track.format.rate});
        }
        if (frames <= 0 || frames > kLongestPacket)
            break;
        track.packets.add(entry.pos, entry.size, static_cast<std::int32_t>(frames));
        track.bytes += entry.size;
    }
}

void trim(SoundTrack &track, std::int64_t start, std::int64_t end) {
    track.start = std::min(start, std::max<std::int64_t>(end, 0));
    track.frames = std::max<std::int64_t>(end, 0) - track.start;
}

// What is heard of a movie, out of `decoded` frames that begin at `begin` of the media.
void trimMovie(SoundTrack &track, const MovieTrack &movie, const AVStream &stream, std::int64_t begin,
               std::int64_t decoded, std::int64_t mediaEnd) {
    const auto inFrames = [&](std::int64_t units) {
        return av_rescale_q(units, stream.time_base, {1, track.format.rate});
    };
    const std::int64_t start = inFrames(std::max<std::int64_t>(movie.start - begin, 0));
    std::int64_t end = mediaEnd > 0 ? std::min(inFrames(mediaEnd), decoded) : decoded;
    if (movie.length) {
        const std::int64_t told = start + inFrames(*movie.length);
        // The media counts to the frame, its edit in coarser units.
        if (told < end - inFrames(movie.lengthUnit))
            end = told;
    }
    trim(track, start, end);
}

// Where the samples of a plain file begin and end.
Result<void> takeBlocks(SoundTrack &track, Demuxer &demuxer, const AVStream &stream) {
    const int frameBytes =
        av_get_exact_bits_per_sample(stream.codecpar->codec_id) / 8 * stream.codecpar->ch_layout.nb_channels;
    const PacketHandle packet{av_packet_alloc()};
    demuxer.select(stream);
    if (avformat_seek_file(&demuxer.context(), stream.index, 0, 0, 0, 0) < 0)
        return {};
    auto got = demuxer.next(*packet);
    if (!got)
        return got.failure();
    if (!got.value() || packet->pos < 0 || frameBytes <= 0)
        return {};
    const std::int64_t begin = packet->pos;
    std::int64_t end = begin + packet->size;
    // The last packet tells where they really end: other chunks may follow, or a part may be cut off.
    const std::int64_t held = (track.file->size() - begin) / frameBytes;
    std::int64_t near = stream.duration > 0 ? std::min(stream.duration, held) : held;
    near = std::max<std::int64_t>(near - track.format.rate, 0);
    if (av_seek_frame(&demuxer.context(), stream.index, av_rescale_q(near, {1, track.format.rate}, stream.time_base),
                      AVSEEK_FLAG_BACKWARD)
        < 0)
        return {};
    while (true) {
        got = demuxer.next(*packet);
        if (!got)
            return got.failure();
        if (!got.value())
            break;
        end = std::max(end, packet->pos + packet->size);
    }
    track.packets.setBlocks(begin, end - begin, frameBytes);
    track.packetsBefore = 0;
    track.frames = track.packets.frames();
    track.bytes = end - begin;
    return {};
}

// The frames of a FLAC file, by their headers or else by libavformat.
Result<void> takeFlac(SoundTrack &track, Demuxer &demuxer, std::int64_t begin, Scan &scan) {
    const auto found = findFlacFrames(*track.file, begin, track.packets);
    if (!found)
        return found.failure();
    if (found.value()) {
        track.bytes = track.file->size() - begin;
        return {};
    }
    track.packets = {};
    if (avformat_seek_file(&demuxer.context(), -1, INT64_MIN, 0, INT64_MAX, 0) < 0)
        return failures::notSound(track.file->path(), QStringLiteral("no way back"));
    return scan.run(demuxer, true);
}

// The last packet has as many frames as come out of it; one that was cut off gives no sound and no length.
Result<void> settleEnd(SoundTrack &track) {
    const PacketTable::Packet last = track.packets.packet(track.packets.count() - 1);
    TableSource source(track);
    if (const auto opened = source.open(); !opened)
        return opened.failure();
    source.seek(last.firstFrame);
    const auto frame = source.next();
    if (!frame)
        return frame.failure();
    track.packets.removeLast();
    if (source.decodedFrames() > 0)
        track.packets.add(last.position, last.size, source.decodedFrames());
    return {};
}

// What a container says of sound that can't be decoded.
void takePromises(SoundTrack &track, const AVStream &stream) {
    constexpr std::int64_t kLongest = std::int64_t(1) << 48;
    track.format = {stream.codecpar->sample_rate, stream.codecpar->ch_layout.nb_channels};
    track.frames = av_rescale_q(std::clamp<std::int64_t>(stream.duration, 0, kLongest), stream.time_base,
                                {1, std::max(track.format.rate, 1)});
}

std::size_t packetsBefore(AVCodecID codec, const Probe &probe) {
    if (codec == AV_CODEC_ID_MP3)
        return kMpegPacketsBefore;
    if (codec == AV_CODEC_ID_AAC)
        return probe.isSimpleAac() ? 1 : SoundTrack::kAllBefore;
    return 0;
}

} // namespace

Result<CodecContextHandle> openDecoder(const SoundTrack &track) {
    const AVCodec *codec = avcodec_find_decoder(track.parameters->codec_id);
    CodecContextHandle decoder{codec ? avcodec_alloc_context3(codec) : nullptr};
    if (!decoder)
        return failures::notSound(track.file->path(), QStringLiteral("no decoder"));
    avcodec_parameters_to_context(decoder.get(), track.parameters.get());
    if (const int error = avcodec_open2(decoder.get(), codec, nullptr); error < 0)
        return failures::notSound(track.file->path(), ffmpegError(error));
    return decoder;
}

Result<SoundTrack> readTrack(std::shared_ptr<const SourceFile> file, std::unique_ptr<Demuxer> demuxer) {
    SoundTrack track;
    track.file = std::move(file);
    AVStream *stream = demuxer->sound();
    if (!stream)
        return track;
    track.parameters.reset(avcodec_parameters_alloc());
    avcodec_parameters_copy(track.parameters.get(), stream->codecpar);
    const AVCodecID codec = stream->codecpar->codec_id;
    const bool movie = isMovie(demuxer->context());
    const auto told = movie ? readMovieTrack(*track.file, static_cast<std::uint32_t>(stream->id)) : std::nullopt;
    track.isProtected = (told && told->isProtected)
                        || av_dict_get(demuxer->context().metadata, "ASF_Protection_Type", nullptr, 0) != nullptr;
    takePromises(track, *stream);
    if (track.isProtected)
        return track;

    // Several edits, which nobody makes but by hand, are left to libavformat.
    const bool ownFrames = hasOwnFrames(codec) && !(told && told->hasSeveralEdits);
    if (told && !told->hasSeveralEdits) {
        demuxer.reset(); // The table of a long movie takes a lot of memory.
        auto opened = Demuxer::open(track.file, Edits::Ignored);
        if (!opened)
            return opened.failure();
        demuxer = std::move(opened).value();
        stream = demuxer->sound();
        track.edits = Edits::Ignored;
        if (!stream)
            return failures::notSound(track.file->path(), QStringLiteral("its track is gone"));
    }

    Probe tried(track);
    Scan scan(track, *stream, tried);
    const bool hasIndex = told && ownFrames && !told->isFragmented && avformat_index_get_entries_count(stream) > 0;
    const bool isPlainFile = isPlainSamples(codec)
                             && (isDemuxedBy(demuxer->context(), "wav") || isDemuxedBy(demuxer->context(), "aiff")
                                 || isDemuxedBy(demuxer->context(), "w64"));
    const bool isFlacFile = isDemuxedBy(demuxer->context(), "flac");
    if (const auto read =
            hasIndex || isPlainFile || isFlacFile ? probe(*demuxer, *stream, tried) : scan.run(*demuxer, ownFrames);
        !read)
        return read.failure();
    if (isFlacFile && track.isPlayable) {
        const auto found = takeFlac(track, *demuxer, tried.firstPosition(), scan);
        if (!found)
            return found.failure();
    }
    if (!track.isPlayable)
        return track;
    if (isPlainFile) {
        if (const auto taken = takeBlocks(track, *demuxer, *stream); !taken)
            return taken.failure();
        return track;
    }
    if (hasIndex)
        takeIndex(track, *stream, tried.framesOfPacket());
    if (track.hasPackets()) {
        const std::int64_t all = track.packets.frames();
        track.packetsBefore = kMpegPacketsBefore; // enough for a length
        if (const auto settled = settleEnd(track); !settled)
            return settled.failure();
        track.packetsBefore = packetsBefore(codec, tried);
        const std::int64_t decoded = track.packets.frames();
        if (told)
            trimMovie(track, *told, *stream, hasIndex ? avformat_index_get_entry(stream, 0)->timestamp : scan.begin(),
                      decoded, hasIndex ? stream->duration : scan.length());
        else
            trim(track, scan.skipped(), std::min(decoded, all - scan.discarded()));
    } else {
        track.frames = scan.heard(track.format.rate);
        if (told && track.edits == Edits::Ignored)
            trimMovie(track, *told, *stream, scan.begin(), track.frames, 0);
    }
    return track;
}

} // namespace cantorel::media
