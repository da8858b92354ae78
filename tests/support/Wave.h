#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QtEndian>

#include <cstdint>
#include <span>

namespace cantorel::test {

// A 32-bit float WAV file at 48 kHz.
inline QByteArray wave(std::span<const float> samples, int channels = 2) {
    const auto bytes = static_cast<std::uint32_t>(samples.size_bytes());
    const auto width = static_cast<std::uint32_t>(channels);
    QByteArray file;
    const auto put = [&](auto value) {
        value = qToLittleEndian(value);
        file.append(reinterpret_cast<const char *>(&value), sizeof value);
    };
    file += "RIFF";
    put(bytes + 36);
    file += "WAVEfmt ";
    put(std::uint32_t(16));
    put(std::uint16_t(3));
    put(static_cast<std::uint16_t>(width));
    put(std::uint32_t(48000));
    put(std::uint32_t(48000 * 4 * width));
    put(static_cast<std::uint16_t>(4 * width));
    put(std::uint16_t(32));
    file += "data";
    put(bytes);
    return file.append(reinterpret_cast<const char *>(samples.data()), bytes);
}

inline bool writeWav(const QString &path, std::span<const float> samples, int channels = 2) {
    QFile file(path);
    const QByteArray bytes = wave(samples, channels);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

} // namespace cantorel::test
