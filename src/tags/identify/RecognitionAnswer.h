#pragma once

#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QString>

#include <vector>

namespace cantorel {

// A song that a fingerprint may be of.
struct RecognitionCandidate {
    double score = 0;  // 0 to 1
    QString recording; // by which the music data base knows it
    QString release;   // by which covers are known; empty for none
    QString title, artist, album, year;

    bool operator==(const RecognitionCandidate &) const = default;
};

// Reads what the look-up service answers: songs with a title, best first, one of each name. A failure says what the
// service complains of, or that it makes no sense.
foundation::Result<std::vector<RecognitionCandidate>> recognitionCandidates(const QByteArray &json);

// The name of the genre that most people gave a recording of the music data base; empty for none.
QString mostNamedGenre(const QByteArray &json);

} // namespace cantorel
