#pragma once

#include <QString>

namespace cantorel {

// How good a lossy result is; None where the text is that of no quality.
enum class ConvertQuality { None, Extreme, High, Standard };

// What files are converted to: "mp3", "aac", "m4a", "m4r", "wma", "wav", "flac", "alac" or "alac(m4a)".
struct ConvertPreset {
    QString format = QStringLiteral("mp3"); // in lower case
    ConvertQuality quality = ConvertQuality::Extreme;

    bool isAlac() const { return format == QLatin1String("alac") || format == QLatin1String("alac(m4a)"); }
    bool isRingtone() const { return format == QLatin1String("m4r"); }
    // Of what the converter writes: a ringtone is renamed once it is whole.
    QString extension() const { return isAlac() || isRingtone() ? QStringLiteral("m4a") : format; }
};

} // namespace cantorel
