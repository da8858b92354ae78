#include "tags/identify/RecognitionAnswer.h"

#include "tags/id3Tag.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <limits>
#include <tuple>

namespace cantorel {

namespace {

using foundation::Failure;

Failure refused(const QString &why) {
    return {QStringLiteral("The recognition service could not be asked; try again later."), why};
}

QJsonArray arrayOf(const QJsonObject &object, const char *key) { return object.value(QLatin1String(key)).toArray(); }

QString textOf(const QJsonObject &object, const char *key) { return object.value(QLatin1String(key)).toString(); }

// Each artist with what stands behind the name.
QString artistsOf(const QJsonObject &object) {
    QString text;
    const QJsonArray artists = arrayOf(object, "artists");
    for (qsizetype i = 0; i < artists.size(); ++i) {
        const QJsonObject artist = artists[i].toObject();
        text += textOf(artist, "name");
        const QString join = textOf(artist, "joinphrase");
        text += join.isEmpty() && i + 1 < artists.size() ? QStringLiteral(", ") : join;
    }
    return text;
}

int yearOf(const QJsonObject &release) {
    return release.value(QLatin1String("date")).toObject().value(QLatin1String("year")).toInt();
}

// An album by the artist before collections and singles, then the earliest of its releases.
void chooseRelease(const QJsonObject &recording, RecognitionCandidate &candidate) {
    using Rank = std::tuple<bool, bool, int>;
    Rank best{true, true, std::numeric_limits<int>::max()};
    bool isFirst = true;
    for (const QJsonValue &groupValue : arrayOf(recording, "releasegroups")) {
        const QJsonObject group = groupValue.toObject();
        const bool isAlbum = textOf(group, "type") == QLatin1String("Album");
        QJsonArray releases = arrayOf(group, "releases");
        if (releases.isEmpty())
            releases.append(QJsonObject());
        for (const QJsonValue &releaseValue : std::as_const(releases)) {
            const QJsonObject release = releaseValue.toObject();
            const int year = yearOf(release);
            const Rank rank{!arrayOf(group, "secondarytypes").isEmpty(), !isAlbum,
                            year > 0 ? year : std::numeric_limits<int>::max()};
            if (!isFirst && rank >= best)
                continue;
            isFirst = false;
            best = rank;
            const QString title = textOf(release, "title"); // left out where it is that of the group
            candidate.album = title.isEmpty() ? textOf(group, "title") : title;
            candidate.release = textOf(release, "id");
            candidate.year = year > 0 ? QString::number(year) : QString();
            if (candidate.artist.isEmpty())
                candidate.artist = artistsOf(group);
        }
    }
}

} // namespace

foundation::Result<std::vector<RecognitionCandidate>> recognitionCandidates(const QByteArray &json) {
    const QJsonObject answer = QJsonDocument::fromJson(json).object();
    if (textOf(answer, "status") != QLatin1String("ok")) {
        const QString why = textOf(answer.value(QLatin1String("error")).toObject(), "message");
        return refused(why.isEmpty() ? QStringLiteral("the answer makes no sense") : why);
    }
    struct Found {
        RecognitionCandidate candidate;
        int sources;
    };
    std::vector<Found> found;
    for (const QJsonValue &resultValue : arrayOf(answer, "results")) {
        const QJsonObject result = resultValue.toObject();
        for (const QJsonValue &recordingValue : arrayOf(result, "recordings")) {
            const QJsonObject recording = recordingValue.toObject();
            RecognitionCandidate candidate;
            candidate.score = result.value(QLatin1String("score")).toDouble();
            candidate.recording = textOf(recording, "id");
            candidate.title = textOf(recording, "title").trimmed();
            candidate.artist = artistsOf(recording);
            chooseRelease(recording, candidate);
            if (!candidate.title.isEmpty())
                found.push_back({candidate, recording.value(QLatin1String("sources")).toInt()});
        }
    }
    // Of equal scores the one that more people have handed in.
    std::stable_sort(found.begin(), found.end(), [](const Found &one, const Found &other) {
        return std::tuple(one.candidate.score, one.sources) > std::tuple(other.candidate.score, other.sources);
    });
    std::vector<RecognitionCandidate> candidates;
    for (Found &one : found) {
        const bool isKnown = std::any_of(candidates.begin(), candidates.end(), [&](const RecognitionCandidate &known) {
            return known.title.compare(one.candidate.title, Qt::CaseInsensitive) == 0
                   && known.artist.compare(one.candidate.artist, Qt::CaseInsensitive) == 0;
        });
        if (!isKnown)
            candidates.push_back(std::move(one.candidate));
    }
    return candidates;
}

QString mostNamedGenre(const QByteArray &json) {
    const QJsonArray genres = arrayOf(QJsonDocument::fromJson(json).object(), "genres");
    QString name;
    int most = -1;
    for (const QJsonValue &value : genres) {
        const int count = value.toObject().value(QLatin1String("count")).toInt();
        if (count > std::exchange(most, std::max(most, count)))
            name = textOf(value.toObject(), "name");
    }
    // As players write it, where they know it.
    for (const QString &known : id3Tag::getAllGenreList())
        if (known.compare(name, Qt::CaseInsensitive) == 0)
            return known;
    if (!name.isEmpty())
        name[0] = name[0].toUpper();
    return name;
}

} // namespace cantorel
