#include "platform/media/SoundFacts.h"
#include "platform/media/ffmpeg/reader/DemuxerHandles.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace cantorel::media {

namespace {

constexpr const char *kSamplesAtOnce = "32768"; // bytes

// An empty text when it could be opened.
QString openInput(const char *path, InputHandle &opened) {
    AVFormatContext *input = nullptr;
    // A plain file only: a name is never taken for an address of the network.
    const std::string name = std::string("file:") + path;
    AVDictionary *options = nullptr;
    av_dict_set(&options, "max_size", kSamplesAtOnce, 0); // of a WAV; other formats leave it there
    int error = avformat_open_input(&input, name.c_str(), nullptr, &options);
    const OptionsHandle others{options};
    if (error < 0)
        return ffmpegError(error);
    opened.reset(input);
    error = avformat_find_stream_info(input, nullptr);
    return error < 0 ? ffmpegError(error) : QString();
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
    if (input->pb && input->pb->error < 0) // The disk refused a part; that is no end.
        return ffmpegError(input->pb->error);
    const AVCodecDescriptor *codec = avcodec_descriptor_get(stream.codecpar->codec_id);
    const bool isExact = codec && !(codec->props & AV_CODEC_PROP_LOSSY);
    const double unit = av_q2d(stream.time_base);
    facts.seconds = static_cast<double>(lengths.total()) * unit;
    facts.padding = kRounding + (isExact ? 0 : kPaddingPackets * static_cast<double>(lengths.longest()) * unit);
    return {};
}

} // namespace

} // namespace cantorel::media

extern "C" __attribute__((visibility("default"))) bool
cantorel_sound_facts(const char *path, bool asPromised, cantorel::media::SoundFacts *facts, QString *why) {
    av_log_set_level(AV_LOG_QUIET);
    *why = cantorel::media::readFacts(path, asPromised, *facts);
    return why->isEmpty();
}
