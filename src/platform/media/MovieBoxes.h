#pragma once

#include "platform/media/BoxBuffer.h"
#include "platform/media/Codecs.h"
#include "platform/media/MovieFormat.h"
#include "platform/media/SampleTable.h"

#include <cstdint>
#include <functional>
#include <span>

// The layout of a recording. While it grows:
//   ftyp | free (16 bytes, with a mark) | moov without samples | moof mdat | moof mdat | ...
// Finished, the bytes of "free" have become the header of an mdat that reaches up to the full moov at the end:
//   ftyp | mdat (everything from here on) | moov
// A movie has two tracks, or one of pictures; a fragment then holds the pictures of its time, and behind them the
// sound.
namespace cantorel::media {

inline constexpr std::uint64_t kPlaceholderPosition = 28; // behind ftyp
inline constexpr std::uint64_t kPlaceholderSize = 16;

// Everything up to the first fragment.
BoxBuffer movieStart(const MovieFormat &format);

// moof and the header of mdat; the bytes of the pictures and of the packets follow, either may be none. firstPicture:
// in units of kPictureTimescale.
BoxBuffer fragmentStart(std::uint32_t sequence, std::uint64_t firstFrame, const PacketRun &packets,
                        std::uint64_t firstPicture = 0, const PictureRun &pictures = {});

// The header that replaces the placeholder; `moovPosition` is where the full moov begins.
BoxBuffer swallowingHeader(std::uint64_t moovPosition);

// Hands the full moov to `write` in pieces of at most 64 KiB, or what the pictures' tables take, until one answers
// false; answers whether all were taken. validFrames: what is to be heard, priming not counted. userData: whole boxes
// that stand in the moov beside the tracks.
bool writeMovie(const MovieFormat &format, const MovieTable &table, std::int64_t validFrames,
                const std::function<bool(std::span<const std::uint8_t>)> &write,
                std::span<const std::uint8_t> userData = {});

// Bare samples, little endian and interleaved.
struct PcmFormat {
    int rate = 0;
    int channels = 0;
    bool isFloat = false; // of 32 bits; else integers of 16

    int bytesPerSample() const { return isFloat ? 4 : 2; }
    int bytesPerFrame() const { return channels * bytesPerSample(); }
};

// An M4A that is written in one go: this, the sound, the moov. swallowingHeader() is put in place of the mdat's header
// once it is known where the moov begins.
BoxBuffer plainMovieStart();
// The moov of bare samples that lie at that position.
BoxBuffer pcmMovie(const PcmFormat &format, std::uint64_t position, std::uint64_t frames);

} // namespace cantorel::media
