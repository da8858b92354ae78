#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/Sentence.h"

#include <QString>

#include <cstdint>
#include <optional>

// How much room a disk has, and what is said when there is none.
namespace cantorel::media {

inline constexpr foundation::SentenceKey kDiskFull("DiskFull", "Folder");

// A recording ends by itself while there is still so much room, so that its file can be closed and converted with care.
inline constexpr std::uint64_t kDiskReserve = std::uint64_t{32} << 20; // bytes

// Bytes that this user may still write where the path lies; the file need not be there, nor its folder. Nothing when
// the system does not say. Any thread.
std::optional<std::uint64_t> freeBytes(const QString &path);

// Why a file could not be made in the folder, or take its name there; error: an errno.
foundation::Failure folderFailed(const QString &folder, int error);

// What a recording of a device of that rate takes a second, index included.
double recordingBytesPerSecond(double sampleRate);

} // namespace cantorel::media
