#include "platform/media/movie/VideoCodecs.h"

#include "platform/foundation/LoadedModule.h"
#include "platform/media/movie/MovieFailures.h"

#include <algorithm>
#include <cstdint>

namespace cantorel::media {

namespace {

// The largest picture of the highest level, 6.2.
constexpr std::int64_t kMostBlocks = 139264;
constexpr int kMostBlocksInALine = 1055;
constexpr int kBlock = 16; // pixels; a side is not shorter

} // namespace

bool isMovieSize(PictureSize size) {
    const int across = (size.width + kBlock - 1) / kBlock, down = (size.height + kBlock - 1) / kBlock;
    return std::min(size.width, size.height) >= kBlock && std::max(across, down) <= kMostBlocksInALine
           && std::int64_t{across} * down <= kMostBlocks && size == evenSize(size);
}

foundation::Result<const VideoCodecs *> loadVideoCodecs() {
    static const auto entry =
        foundation::loadFunction<VideoCodecsEntryPoint>("cantorel-ffmpeg-video.so", kVideoCodecsEntryPoint);
    if (!entry)
        return failures::pictureCodecs(entry.failure().detail);
    return entry.value()();
}

} // namespace cantorel::media
