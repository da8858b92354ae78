#pragma once

#include <QByteArray>

#include <cstdint>

namespace cantorel {

class SplicedFile;

// What a file that is no M4A holds, by its content.
enum class SoundKind { None, Mpeg, Adts, Wave };

// Where the sound of MPEG lies: between the tags in front of it and those behind.
struct MpegSound {
    SoundKind kind = SoundKind::None;
    std::int64_t begin = 0, end = 0;
};
MpegSound findMpegSound(const SplicedFile &file);

// How long the ID3v2 tag is that begins with these bytes, its head included; 0 for none.
inline constexpr std::int64_t kId3Head = 10;
std::int64_t id3Size(const QByteArray &head);

} // namespace cantorel
