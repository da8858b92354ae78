#pragma once

#include <cstdint>
#include <string_view>

// What the boxes of a recording are told by, where they are written and where they are read back.
namespace cantorel::media {

inline constexpr std::string_view kMark = "cntrlrec";
inline constexpr std::string_view kSoundBrand = "M4A ";
inline constexpr std::string_view kMovieBrand = "mp42";
inline constexpr std::uint32_t kLongBox = 1; // as the 32-bit size: a 64-bit size follows
inline constexpr std::uint32_t kPictureTrackId = 2;
inline constexpr std::uint32_t kSyncSample = 0x02000000;
inline constexpr std::uint32_t kSoundRun = 0x000201;   // data offset, a size for each packet
inline constexpr std::uint32_t kPictureRun = 0x000701; // data offset, length, size and flags for each picture

} // namespace cantorel::media
