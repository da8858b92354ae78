#pragma once

#include "tests/support/MadeMusic.h"
#include "tests/support/MadeSound.h"
#include "tests/support/OrdinaryFile.h"

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QStringList>

#include <cmath>
#include <cstdint>
#include <span>

// Songs on the disk, with tags, and pieces of them as somebody may have recorded them.
namespace cantorel::test {

constexpr int kMusicRate = 22050;
constexpr int kMusicSeconds = 60;

inline bool writeMusic(const QString &path, std::span<const float> mono, const QStringList &options = {}) {
    const QString raw = path + ".f32";
    store(raw, QByteArray(reinterpret_cast<const char *>(mono.data()), static_cast<qsizetype>(mono.size_bytes())));
    const bool made = ffmpeg(QStringList{"-f", "f32le", "-ar", QString::number(kMusicRate), "-ac", "1", "-i", raw}
                             + options + QStringList{path});
    QFile::remove(raw);
    return made;
}

inline QString titleOf(int number) { return QStringLiteral("Song %1").arg(number); }

// "Song N" by "Band N".
inline bool writeSong(const QString &path, int number, int seconds = kMusicSeconds) {
    const MadeMusic music(static_cast<std::uint64_t>(number), seconds, kMusicRate);
    return writeMusic(path, music.samples(),
                      {"-metadata", "title=" + titleOf(number), "-metadata",
                       QStringLiteral("artist=Band %1").arg(number), "-metadata", "album=Made", "-metadata",
                       "genre=Folk", "-metadata", "date=2001"});
}

constexpr int kPieceSeconds = 15;

// A part of it from anywhere, at another level, with noise 20 dB below.
inline std::vector<float> pieceOf(int number, Dice &dice, int songSeconds = kMusicSeconds) {
    const MadeMusic music(static_cast<std::uint64_t>(number), songSeconds, kMusicRate);
    const auto from = music.samples().begin() + dice.below((songSeconds - kPieceSeconds) * kMusicRate + 1);
    std::vector<float> piece(from, from + kPieceSeconds * kMusicRate);
    double power = 0;
    for (const float sample : piece)
        power += double{sample} * sample;
    // Even noise of one unit at most has a third of a unit squared.
    const auto noise = static_cast<float>(std::sqrt(power / static_cast<double>(piece.size()) / 100 * 3));
    const float level = dice.between(0.15f, 0.9f);
    for (float &sample : piece)
        sample = level * (sample + noise * dice.between(-1, 1));
    return piece;
}

} // namespace cantorel::test
