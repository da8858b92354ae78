#pragma once

#include "platform/media/asset/FrameReader.h"
#include "platform/media/asset/SourceFile.h"
#include "platform/media/ffmpeg/reader/Demuxer.h"
#include "platform/media/ffmpeg/reader/PacketTable.h"

#include <cstdint>
#include <limits>
#include <memory>

namespace cantorel::media {

// All that is known of the first track of sound of a file. Never changes once it is made; any thread.
struct SoundTrack {
    // As a number of packets: decoding begins at the first one, wherever sound is wanted from.
    static constexpr std::size_t kAllBefore = std::numeric_limits<std::size_t>::max();

    std::shared_ptr<const SourceFile> file;
    ParametersHandle parameters;
    SoundFormat format; // as it is decoded; 0 channels without sound
    AVSampleFormat sampleFormat = AV_SAMPLE_FMT_NONE;
    std::int64_t bytes = 0; // of its packets
    bool isPlayable = false;
    bool isProtected = false;

    PacketTable packets;                    // none where only libavformat can tell packets apart
    Edits edits = Edits::Applied;           // in that case
    std::size_t packetsBefore = kAllBefore; // decoded and thrown away, so that the next one comes out right
    std::int64_t start = 0;                 // frames that the coder has put in front
    std::int64_t frames = 0;                // behind them; what is heard

    bool hasPackets() const { return packets.count() > 0; }
    // 16-bit samples of this machine, one after the other in the file.
    bool isPlain() const { return packets.areBlocks() && parameters->codec_id == AV_CODEC_ID_PCM_S16LE; }
};

foundation::Result<CodecContextHandle> openDecoder(const SoundTrack &track);

// Reads as much of the file as is needed to know its length to the frame.
foundation::Result<SoundTrack> readTrack(std::shared_ptr<const SourceFile> file, std::unique_ptr<Demuxer> demuxer);

} // namespace cantorel::media
