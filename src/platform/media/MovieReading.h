#pragma once

#include "platform/media/MovieFormat.h"
#include "platform/media/SampleTable.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

// What MovieBoxes.h lays out, read back. Nothing is believed: other bytes give nothing.
namespace cantorel::media {

// What movieStart() wrote, read back from the start of a file; nothing for any other bytes.
struct UnfinishedStart {
    MovieFormat format;
    std::uint64_t size = 0; // bytes up to the first fragment
};
std::optional<UnfinishedStart> readMovieStart(std::span<const std::uint8_t> fileStart);

// What fragmentStart() wrote, read back; nothing for any other bytes.
struct FragmentRuns {
    std::vector<PictureRun::Entry> pictures;
    std::uint64_t firstPicture = 0;
    std::vector<std::uint32_t> packetSizes;
    std::uint64_t firstFrame = 0;

    std::uint64_t pictureBytes() const;
    std::uint64_t packetBytes() const;
};
std::optional<FragmentRuns> readFragment(std::span<const std::uint8_t> moof);

// The length of a movie that is finished, in seconds, by the header of its full moov; nothing for any other file.
// `read` answers bytes of it, fewer behind its end.
std::optional<double>
finishedMovieSeconds(const std::function<std::vector<std::uint8_t>(std::uint64_t position, std::uint64_t count)> &read);

} // namespace cantorel::media
