#pragma once

#include <QByteArray>
#include <QtEndian>

namespace cantorel::testing {

// A WAV file of 16-bit stereo silence.
inline QByteArray wave(double seconds, int rate = 8000) {
    const auto number = [](auto value) {
        QByteArray bytes(sizeof(value), '\0');
        qToLittleEndian(value, bytes.data());
        return bytes;
    };
    const auto bytes = static_cast<quint32>(seconds * rate) * 4;
    return "RIFF" + number(bytes + 36) + "WAVEfmt " + number(quint32{16}) + number(quint16{1}) + number(quint16{2})
           + number(quint32(rate)) + number(quint32(rate * 4)) + number(quint16{4}) + number(quint16{16}) + "data"
           + number(bytes) + QByteArray(bytes, '\0');
}

} // namespace cantorel::testing
