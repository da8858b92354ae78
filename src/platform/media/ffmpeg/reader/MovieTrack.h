#pragma once

#include "platform/media/asset/SourceFile.h"

#include <cstdint>
#include <optional>

namespace cantorel::media {

// What an M4A says of one of its tracks, as far as libavformat does not tell it or rounds it.
struct MovieTrack {
    bool isFragmented = false;
    bool isProtected = false;
    bool hasSeveralEdits = false;
    // What is heard, in units of the track's media; the rest is what its coder needs.
    std::int64_t start = 0;
    std::optional<std::int64_t> length; // up to the end of the media without one
    std::int64_t lengthUnit = 0;        // how far the length may be off by rounding
};

// Nothing where the file is no movie or has no such track.
std::optional<MovieTrack> readMovieTrack(const SourceFile &file, std::uint32_t trackId);

} // namespace cantorel::media
