#pragma once

#include "platform/media/Codecs.h"

#include <cstdint>

namespace cantorel::test {

inline media::AacFormat plainFormat() { return {48000, 2, 256000, 1024, {0x11, 0x90}}; }

// Made-up packets whose bytes tell their number, so that loss and order show without a decoder.
inline media::PacketRun stampedPackets(std::uint32_t first, std::uint32_t count) {
    media::PacketRun run;
    for (std::uint32_t i = first; i < first + count; ++i) {
        const std::uint32_t size = 4 + i % 97;
        run.sizes.push_back(size);
        for (int shift = 24; shift >= 0; shift -= 8)
            run.bytes.push_back(static_cast<std::uint8_t>(i >> shift));
        run.bytes.insert(run.bytes.end(), size - 4, static_cast<std::uint8_t>(i));
    }
    return run;
}

} // namespace cantorel::test
