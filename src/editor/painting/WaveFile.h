#pragma once

#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QSize>
#include <QString>

#include <cstdint>

namespace cantorel {

// Writes the wave of a series of levels as a PNG file of that size, as the editor shows it without selections; a file
// of that name is replaced once the new one is whole. In a shared object of its own: who paints nothing does not pay
// for the library of pictures. Any thread.
foundation::Result<void> writeWave(const QByteArray &levels, std::int32_t seconds, QSize size, const QString &path);

// The one function that the shared object exports, by this name and type. False where the file could not be written.
inline constexpr const char *kWaveFileEntryPoint = "cantorel_write_wave";
using WaveFileEntryPoint = bool (*)(const QByteArray &levels, std::int32_t seconds, QSize size, const QString &path);

} // namespace cantorel
