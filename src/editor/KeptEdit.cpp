#include "editor/KeptEdit.h"

#include "log/Log.h"
#include "platform/foundation/FileLock.h"
#include "platform/foundation/SearchPaths.h"
#include "platform/media/asset/OpenAsset.h"
#include "platform/media/composition/Composition.h"
#include "util/ToolFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <sys/stat.h>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace cantorel {

using foundation::Failure;
using foundation::Result;
using media::AssetPointer;
using media::Composition;

namespace {

constexpr foundation::SentenceKey kNotRestored("EditNotRestored", "FileName");

constexpr int kVersion = 1;
constexpr qint64 kMostBytes = 16 * 1024 * 1024; // of a file of ours

QJsonObject objectIn(const QByteArray &bytes) {
    const QJsonObject object = QJsonDocument::fromJson(bytes).object();
    return object.value(QLatin1String("version")).toInt() == kVersion ? object : QJsonObject();
}

Failure damaged(const QString &name) { return {kNotRestored(name), QStringLiteral("what was kept is damaged")}; }

// A number of a file that anybody may have written; nothing where it is out of bounds.
std::optional<std::int64_t> within(const QJsonValue &value, std::int64_t least, std::int64_t most) {
    const std::int64_t number = value.toInteger(least - 1);
    return number >= least && number <= most ? std::optional(number) : std::nullopt;
}

// Put together as it was from sounds that stand before it; null where that cannot be.
AssetPointer composed(const QJsonObject &sound, const std::vector<AssetPointer> &sounds) {
    constexpr int kMostRate = 768'000;
    const auto rate = within(sound[QLatin1String("rate")], 1, kMostRate);
    const auto channels = within(sound[QLatin1String("channels")], 1, 2);
    const auto frames = within(sound[QLatin1String("frames")], 1, media::kMostFrames);
    const QJsonArray numbers = sound[QLatin1String("pieces")].toArray();
    if (!rate || !channels || !frames || sounds.empty() || numbers.isEmpty())
        return nullptr;
    std::vector<Composition::Piece> pieces;
    for (const QJsonValue piece : numbers) {
        const auto source = within(piece[0], 0, static_cast<std::int64_t>(sounds.size()) - 1);
        const auto from = within(piece[1], 0, *frames), start = within(piece[2], 0, *frames);
        const auto length = within(piece[3], 1, *frames);
        const auto track = within(piece[4], 0, numbers.size());
        if (!source || !from || !start || !length || !track || *start + *length > *frames)
            return nullptr;
        const AssetPointer &asset = sounds[static_cast<std::size_t>(*source)];
        if (*from + *length > media::frameAt(static_cast<int>(*rate), asset->duration()))
            return nullptr;
        pieces.push_back({asset, *from, *start, *length, static_cast<std::size_t>(*track)});
    }
    return std::make_shared<const Composition>(media::SoundFormat{static_cast<int>(*rate), static_cast<int>(*channels)},
                                               *frames, std::move(pieces));
}

} // namespace

KeptEdit::KeptEdit() : KeptEdit(foundation::stateFolder() + QStringLiteral("/cantorel/editor.json")) {}

KeptEdit::KeptEdit(QString file) : mFile(std::move(file)) {
    QDir().mkpath(QFileInfo(mFile).path());
    mLock = foundation::lockFile(mFile + QStringLiteral(".lock"));
    if (!mLock.isOpen())
        return;
    QFile kept(mFile);
    if (kept.open(QIODevice::ReadOnly))
        mLeft = kept.read(kMostBytes);
    if (leftName().isEmpty()) // nothing of ours
        mLeft.clear();
}

QString KeptEdit::leftName() const { return objectIn(mLeft).value(QLatin1String("name")).toString(); }

KeptEdit::Stamp KeptEdit::stampOf(const QString &path) {
    struct stat status {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0)
        return {-1, 0};
    return {status.st_size, status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec};
}

Result<EditStep> KeptEdit::opened(const QByteArray &left) {
    const QJsonObject object = objectIn(left);
    EditStep step;
    step.name = object[QLatin1String("name")].toString();
    step.url = QUrl::fromLocalFile(object[QLatin1String("file")].toString());
    step.viewStart = object[QLatin1String("viewStart")].toDouble();
    step.zoom = object[QLatin1String("zoom")].toDouble(1);
    std::vector<AssetPointer> sounds;
    for (const QJsonValue value : object[QLatin1String("sounds")].toArray()) {
        const QJsonObject sound = value.toObject();
        const QString path = sound[QLatin1String("file")].toString();
        if (path.isEmpty()) {
            sounds.push_back(composed(sound, sounds));
            if (!sounds.back())
                return damaged(step.name);
            continue;
        }
        const Stamp now = stampOf(path);
        if (now.bytes != sound[QLatin1String("bytes")].toInteger(-1)
            || now.time != sound[QLatin1String("time")].toInteger())
            return Failure{kNotRestored(QFileInfo(path).fileName()), QStringLiteral("size or time of %1").arg(path)};
        auto asset = media::openAsset(QUrl::fromLocalFile(path));
        if (!asset)
            return Failure{kNotRestored(QFileInfo(path).fileName()), asset.failure().detail};
        sounds.push_back(std::move(asset).value());
    }
    if (sounds.empty())
        return damaged(step.name);
    step.asset = sounds.back();
    const double end = step.asset->duration().seconds();
    step.head = std::clamp(object[QLatin1String("head")].toDouble(), 0.0, end);
    for (const QJsonValue cut : object[QLatin1String("cuts")].toArray()) {
        const CutList::Range range{cut[0].toDouble(-1), cut[1].toDouble(-1), cut[2].toBool()};
        if (range.start < 0 || range.end <= range.start || range.start >= end)
            return damaged(step.name);
        step.cuts << range;
    }
    return step;
}

// Sounds stand before what is put together from them; each stands there once.
QByteArray KeptEdit::encoded(const EditStep &step) {
    QJsonArray sounds;
    std::map<const media::Asset *, qsizetype> places;
    const auto add = [&](const auto &addNext, const AssetPointer &asset) -> qsizetype {
        if (const auto known = places.find(asset.get()); known != places.end())
            return known->second;
        QJsonObject sound;
        if (const auto *composition = dynamic_cast<const Composition *>(asset.get())) {
            QJsonArray pieces;
            for (const Composition::Piece &piece : composition->pieces())
                pieces << QJsonArray{addNext(addNext, piece.source), qint64(piece.sourceStart), qint64(piece.start),
                                     qint64(piece.length), qint64(piece.track)};
            sound = {{QStringLiteral("rate"), composition->format().rate},
                     {QStringLiteral("channels"), composition->format().channels},
                     {QStringLiteral("frames"), qint64(composition->duration().value)},
                     {QStringLiteral("pieces"), pieces}};
        } else {
            const QString path = asset->url().toLocalFile();
            const auto stamp = mStamps.try_emplace(asset, stampOf(path)).first->second;
            sound = {{QStringLiteral("file"), path},
                     {QStringLiteral("bytes"), qint64(stamp.bytes)},
                     {QStringLiteral("time"), qint64(stamp.time)}};
        }
        sounds << sound;
        return places[asset.get()] = sounds.size() - 1;
    };
    add(add, step.asset);
    QJsonArray cuts;
    for (const CutList::Range &cut : step.cuts)
        cuts << QJsonArray{cut.start, cut.end, cut.isFocusOn};
    return QJsonDocument({{QStringLiteral("version"), kVersion},
                          {QStringLiteral("name"), step.name},
                          {QStringLiteral("file"), step.url.toLocalFile()},
                          {QStringLiteral("head"), step.head},
                          {QStringLiteral("viewStart"), step.viewStart},
                          {QStringLiteral("zoom"), step.zoom},
                          {QStringLiteral("cuts"), cuts},
                          {QStringLiteral("sounds"), sounds}})
        .toJson(QJsonDocument::Compact);
}

// What was left has to be more than a sound that was only opened since.
void KeptEdit::keep(const EditStep &step) {
    if (!mLock.isOpen() || (!mLeft.isEmpty() && step.cuts.isEmpty() && !step.asset->url().isEmpty()))
        return;
    if (!std::exchange(mLeft, {}).isEmpty())
        Q_EMIT overtaken();
    mWorker.clear(); // what is older
    mWorker.start([this, step] {
        std::erase_if(mStamps, [](const auto &known) { return known.first.expired(); });
        const QByteArray bytes = encoded(step);
        if (bytes == mWritten)
            return;
        mWritten = ToolFile::writeData(bytes, mFile, false) ? bytes : QByteArray();
        if (mWritten.isEmpty())
            Log(QStringLiteral("What is edited could not be kept in %1").arg(mFile));
    });
}

void KeptEdit::discard() {
    if (!std::exchange(mLeft, {}).isEmpty())
        forget();
}

void KeptEdit::forget() {
    if (!mLock.isOpen() || !mLeft.isEmpty())
        return;
    mWorker.clear();
    mWorker.start([this] {
        (void)QFile::remove(mFile); // or there is none
        mWritten.clear();
    });
}

} // namespace cantorel
