#pragma once

#include "platform/media/asset/SourceFile.h"
#include "platform/media/ffmpeg/reader/PacketTable.h"

#include <cstdint>

namespace cantorel::media {

// Finds the frames of a FLAC file from that byte on by their numbered headers, which is many times faster than parsing
// them. False where they don't follow each other without a gap, so that a slower reader has to look. The last one may
// be cut off.
foundation::Result<bool> findFlacFrames(const SourceFile &file, std::int64_t begin, PacketTable &packets);

} // namespace cantorel::media
