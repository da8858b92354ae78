#include "platform/media/SoundReader.h"
#include "platform/media/ffmpeg/reader/DemuxerHandles.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace cantorel::media {

namespace {

// An empty text when it could be opened.
QString openInput(const char *path, InputHandle &opened) {
    AVFormatContext *input = nullptr;
    // A plain file only: a name is never taken for an address of the network.
    const std::string name = std::string("file:") + path;
    if (const int error = avformat_open_input(&input, name.c_str(), nullptr, nullptr); error < 0)
        return ffmpegError(error);
    opened.reset(input);
    const int error = avformat_find_stream_info(input, nullptr);
    return error < 0 ? ffmpegError(error) : QString();
}

class LibavSoundReader : public SoundReader {
public:
    // An empty text when it could be opened.
    QString open(const char *path, int rate, int channels);

    double durationSeconds() const override {
        return mInput->duration > 0 ? static_cast<double>(mInput->duration) / AV_TIME_BASE : 0;
    }
    std::size_t read(float *interleaved, std::size_t frames) override;
    bool seek(double seconds) override;

private:
    bool makeResampler(AVFrame &frame);
    bool decodeMore();
    void convert(const AVFrame *frame);

    InputHandle mInput;
    CodecContextHandle mDecoder;
    ResamplerHandle mResampler;
    PacketHandle mPacket{av_packet_alloc()};
    FrameHandle mFrame{av_frame_alloc()};
    int mStream = -1;
    int mRate = 0;
    int mChannels = 0;
    bool mAtEnd = false;
    std::vector<float> mReady; // decoded and not yet read
    std::size_t mTaken = 0;    // samples of it
};

QString LibavSoundReader::open(const char *path, int rate, int channels) {
    mRate = rate;
    mChannels = channels;
    if (const QString why = openInput(path, mInput); !why.isEmpty())
        return why;
    AVFormatContext *input = mInput.get();
    const AVCodec *codec = nullptr;
    mStream = av_find_best_stream(input, AVMEDIA_TYPE_AUDIO, -1, -1, &codec, 0);
    if (mStream < 0 || !codec)
        return QStringLiteral("no sound in it");
    mDecoder.reset(avcodec_alloc_context3(codec));
    avcodec_parameters_to_context(mDecoder.get(), input->streams[mStream]->codecpar);
    mDecoder->pkt_timebase = input->streams[mStream]->time_base;
    if (const int error = avcodec_open2(mDecoder.get(), codec, nullptr); error < 0)
        return ffmpegError(error);
    // The first sound tells whether there is any.
    while (mReady.empty() && decodeMore()) {
    }
    return mReady.empty() ? QStringLiteral("no sound could be decoded") : QString();
}

bool LibavSoundReader::makeResampler(AVFrame &frame) {
    AVChannelLayout target = {};
    av_channel_layout_default(&target, mChannels);
    SwrContext *context = nullptr;
    const int error = swr_alloc_set_opts2(&context, &target, AV_SAMPLE_FMT_FLT, mRate, &frame.ch_layout,
                                          static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
    mResampler.reset(context);
    return error >= 0 && swr_init(context) >= 0;
}

void LibavSoundReader::convert(const AVFrame *frame) {
    const int room = swr_get_out_samples(mResampler.get(), frame ? frame->nb_samples : 0);
    const std::size_t before = mReady.size();
    mReady.resize(before + static_cast<std::size_t>(std::max(room, 0)) * static_cast<std::size_t>(mChannels));
    auto *target = reinterpret_cast<std::uint8_t *>(mReady.data() + before);
    const int made = swr_convert(mResampler.get(), &target, std::max(room, 0),
                                 frame ? const_cast<const std::uint8_t **>(frame->extended_data) : nullptr,
                                 frame ? frame->nb_samples : 0);
    mReady.resize(before + static_cast<std::size_t>(std::max(made, 0)) * static_cast<std::size_t>(mChannels));
}

// Decodes one step further. False at the end.
bool LibavSoundReader::decodeMore() {
    if (mAtEnd)
        return false;
    const int error = avcodec_receive_frame(mDecoder.get(), mFrame.get());
    if (error == 0) {
        if (mResampler || makeResampler(*mFrame))
            convert(mFrame.get());
        else
            mAtEnd = true;
        av_frame_unref(mFrame.get());
        return true;
    }
    if (error == AVERROR(EAGAIN)) {
        const int read = av_read_frame(mInput.get(), mPacket.get());
        if (read < 0)
            (void)avcodec_send_packet(mDecoder.get(), nullptr); // The rest comes out of the decoder now.
        else if (mPacket->stream_index == mStream)
            (void)avcodec_send_packet(mDecoder.get(), mPacket.get()); // A damaged packet is passed over.
        av_packet_unref(mPacket.get());
        return true;
    }
    mAtEnd = true;
    if (mResampler)
        convert(nullptr);
    return true;
}

std::size_t LibavSoundReader::read(float *interleaved, std::size_t frames) {
    const auto channels = static_cast<std::size_t>(mChannels);
    while (mReady.size() - mTaken < frames * channels && decodeMore()) {
    }
    const std::size_t samples = std::min(frames * channels, mReady.size() - mTaken);
    if (samples > 0)
        std::memcpy(interleaved, mReady.data() + mTaken, samples * sizeof(float));
    mTaken += samples;
    if (mTaken == mReady.size() || mTaken > 1 << 16) {
        mReady.erase(mReady.begin(), mReady.begin() + static_cast<std::ptrdiff_t>(mTaken));
        mTaken = 0;
    }
    return samples / channels;
}

bool LibavSoundReader::seek(double seconds) {
    if (av_seek_frame(mInput.get(), -1, static_cast<std::int64_t>(seconds * AV_TIME_BASE), AVSEEK_FLAG_BACKWARD) < 0)
        return false;
    avcodec_flush_buffers(mDecoder.get());
    mResampler.reset();
    mReady.clear();
    mTaken = 0;
    mAtEnd = false;
    return true;
}

// The lengths of packets that come one after the other. A container with a coarse clock rounds each of them, or tells
// none, so that the distance to the next one counts where there is no gap.
class PacketLengths {
public:
    void add(const AVPacket &packet) {
        close(packet.pts);
        mBegin = packet.pts;
        mLength = packet.duration;
        mLongest = std::max(mLongest, packet.duration);
    }
    std::int64_t total() {
        close(AV_NOPTS_VALUE);
        return mTotal;
    }
    std::int64_t longest() const { return mLongest; }

private:
    void close(std::int64_t next) {
        const bool isKnown = mBegin != AV_NOPTS_VALUE && next != AV_NOPTS_VALUE && next > mBegin;
        const bool follows = isKnown && (mLength == 0 || next - mBegin <= 2 * mLength);
        mTotal += follows ? next - mBegin : mLength;
        mLength = 0;
    }

    std::int64_t mBegin = AV_NOPTS_VALUE, mLength = 0; // of the last one
    std::int64_t mTotal = 0, mLongest = 0;
};

// A coder of losses begins with a delay and ends on a full packet. Behind them is what rounding costs.
constexpr int kPaddingPackets = 3;
constexpr double kRounding = 0.01; // seconds

// What was cut off, and what the start of a coder needs before the first sound, do not count.
QString readFacts(const char *path, bool asPromised, SoundFacts &facts) {
    InputHandle input;
    if (QString why = openInput(path, input); !why.isEmpty())
        return why;
    const int found = av_find_best_stream(input.get(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (found < 0)
        return QStringLiteral("no sound in it");
    const AVStream &stream = *input->streams[found];
    facts.rate = stream.codecpar->sample_rate;
    facts.channels = stream.codecpar->ch_layout.nb_channels;
    if (asPromised) {
        facts.seconds = static_cast<double>(std::max<std::int64_t>(input->duration, 0)) / AV_TIME_BASE;
        facts.padding = kRounding;
        return {};
    }
    for (unsigned other = 0; other < input->nb_streams; ++other)
        if (static_cast<int>(other) != found)
            input->streams[other]->discard = AVDISCARD_ALL; // a film is long
    const PacketHandle packet{av_packet_alloc()};
    PacketLengths lengths;
    while (av_read_frame(input.get(), packet.get()) >= 0) {
        const bool isPriming = packet->pts != AV_NOPTS_VALUE && packet->pts + packet->duration <= 0;
        if (packet->stream_index == found && !isPriming && !(packet->flags & AV_PKT_FLAG_CORRUPT))
            lengths.add(*packet);
        av_packet_unref(packet.get());
    }
    const AVCodecDescriptor *codec = avcodec_descriptor_get(stream.codecpar->codec_id);
    const bool isExact = codec && !(codec->props & AV_CODEC_PROP_LOSSY);
    const double unit = av_q2d(stream.time_base);
    facts.seconds = static_cast<double>(lengths.total()) * unit;
    facts.padding = kRounding + (isExact ? 0 : kPaddingPackets * static_cast<double>(lengths.longest()) * unit);
    return {};
}

} // namespace

} // namespace cantorel::media

extern "C" __attribute__((visibility("default"))) cantorel::media::SoundReader *
cantorel_open_sound(const char *path, int rate, int channels, QString *why) {
    av_log_set_level(AV_LOG_QUIET);
    auto reader = std::make_unique<cantorel::media::LibavSoundReader>();
    *why = reader->open(path, rate, channels);
    return why->isEmpty() ? reader.release() : nullptr; // The caller's.
}

extern "C" __attribute__((visibility("default"))) bool
cantorel_sound_facts(const char *path, bool asPromised, cantorel::media::SoundFacts *facts, QString *why) {
    av_log_set_level(AV_LOG_QUIET);
    *why = cantorel::media::readFacts(path, asPromised, *facts);
    return why->isEmpty();
}
