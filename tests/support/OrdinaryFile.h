#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace cantorel::test {

inline QByteArray contents(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline void store(const QString &path, const QByteArray &bytes) {
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(bytes);
}

inline void touch(const QString &path) { store(path, {}); }

// A program that its owner may run.
inline void storeProgram(const QString &path, const QByteArray &script) {
    store(path, script);
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

inline std::uint64_t bigEndian(const QByteArray &bytes, qsizetype position, int count) {
    std::uint64_t value = 0;
    for (int i = 0; i < count; ++i)
        value = value << 8 | static_cast<std::uint8_t>(bytes.at(position + i));
    return value;
}

// The packets of an ordinary M4A in order, read by its tables alone: an independent and simple reader. Nothing when the
// file is not made of exactly ftyp, mdat and moov.
inline std::optional<std::vector<QByteArray>> packetsOf(const QByteArray &file) {
    std::vector<QByteArray> types;
    qsizetype moov = -1;
    for (qsizetype at = 0; at < file.size();) {
        if (file.size() - at < 8)
            return {};
        auto size = static_cast<qsizetype>(bigEndian(file, at, 4));
        if (size == 1)
            size = static_cast<qsizetype>(bigEndian(file, at + 8, 8));
        types.push_back(file.mid(at + 4, 4));
        if (types.back() == "moov")
            moov = at;
        if (size < 8 || size > file.size() - at)
            return {};
        at += size;
    }
    if (types != std::vector<QByteArray>{"ftyp", "mdat", "moov"})
        return {};
    const qsizetype stsz = file.indexOf("stsz", moov) + 4;
    const qsizetype stsc = file.indexOf("stsc", moov) + 4;
    qsizetype offsets = file.indexOf("co64", stsz);
    const int width = offsets < 0 ? 4 : 8;
    if (offsets < 0)
        offsets = file.indexOf("stco", stsz);
    offsets += 4;
    const auto chunks = bigEndian(file, offsets + 4, 4);
    const auto runs = bigEndian(file, stsc + 4, 4);
    std::vector<QByteArray> packets;
    std::size_t run = 0;
    for (std::size_t chunk = 1; chunk <= chunks; ++chunk) {
        while (run + 1 < runs && bigEndian(file, stsc + 8 + 12 * (run + 1), 4) <= chunk)
            ++run;
        auto at = static_cast<qsizetype>(bigEndian(file, offsets + 8 + width * (chunk - 1), width));
        for (auto left = bigEndian(file, stsc + 8 + 12 * run + 4, 4); left > 0; --left) {
            const auto size = static_cast<qsizetype>(bigEndian(file, stsz + 12 + 4 * packets.size(), 4));
            packets.push_back(file.mid(at, size));
            at += size;
        }
    }
    return packets.size() == bigEndian(file, stsz + 8, 4) ? std::optional(packets) : std::nullopt;
}

} // namespace cantorel::test
