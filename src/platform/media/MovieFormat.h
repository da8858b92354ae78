#pragma once

#include "platform/media/Codecs.h"

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace cantorel::media {

// What a file has to say about its H.264 track.
struct AvcFormat {
    int width = 0; // pixels
    int height = 0;
    int bitRate = 0;                  // bits a second
    std::vector<std::uint8_t> config; // the AVCDecoderConfigurationRecord

    bool operator==(const AvcFormat &) const = default;
};

// In which the times of pictures count.
inline constexpr int kPictureTimescale = 90000;

// The tracks of a file: sound alone for an M4A, pictures with or without sound for an MP4.
struct MovieFormat {
    MovieFormat() = default;
    MovieFormat(AacFormat sound) : sound(std::move(sound)) {} // deliberately from any sound

    std::optional<AvcFormat> pictures;
    std::optional<AacFormat> sound;
};

// Coded pictures, one behind the other in the order in which they are shown.
struct PictureRun {
    struct Entry {
        std::uint32_t bytes = 0;
        std::uint32_t length = 0; // in units of kPictureTimescale
        bool isKey = false;       // it needs no other picture
    };
    std::vector<std::uint8_t> bytes;
    std::vector<Entry> entries;

    void clear() {
        bytes.clear();
        entries.clear();
    }
};

} // namespace cantorel::media
