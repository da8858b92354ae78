#include "editor/levels/StoredLevels.h"

#include "editor/levels/GroupMeans.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace cantorel {

namespace {

constexpr qint64 kSampleBytes = 64 * 1024;
constexpr qint64 kMostBytes = qint64(512) * 1024 * 1024; // of all that are kept
constexpr char kMark[8] = {'l', 'e', 'v', 'e', 'l', 's', '1', '\n'};

// In front of the values of a kept series.
struct Header {
    char mark[8];
    char key[32];
    std::int64_t frames;
    std::int32_t rate, channels;
};

Header headerOf(const QByteArray &key, const media::Asset &asset) {
    Header header = {};
    std::copy(std::begin(kMark), std::end(kMark), header.mark);
    std::copy_n(key.begin(), std::min<qsizetype>(key.size(), sizeof header.key), header.key);
    header.frames = asset.duration().value;
    header.rate = asset.format().rate;
    header.channels = asset.format().channels;
    return header;
}

} // namespace

QByteArray StoredLevels::keyOf(const media::Asset &asset) {
    QFile file(asset.url().toLocalFile());
    struct stat facts {};
    if (!asset.url().isLocalFile() || !file.open(QIODevice::ReadOnly) || ::fstat(file.handle(), &facts) != 0)
        return {};
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const std::int64_t number : {std::int64_t(facts.st_size), std::int64_t(facts.st_mtim.tv_sec),
                                      std::int64_t(facts.st_mtim.tv_nsec), static_cast<std::int64_t>(facts.st_ino)})
        hash.addData(QByteArrayView(reinterpret_cast<const char *>(&number), sizeof number));
    const qint64 last = std::max<qint64>(facts.st_size - kSampleBytes, 0);
    for (const qint64 place : {qint64(0), last / 2, last}) {
        file.seek(place);
        hash.addData(file.read(kSampleBytes));
    }
    return hash.result();
}

QString StoredLevels::pathOf(const QByteArray &key) const {
    return mFolder + QLatin1Char('/') + QString::fromLatin1(key.toHex()) + QStringLiteral(".levels");
}

std::shared_ptr<LevelSeries> StoredLevels::find(const QByteArray &key, const media::Asset &asset) const {
    if (key.isEmpty())
        return nullptr;
    auto series = LevelSeries::open(pathOf(key));
    const Header header = headerOf(key, asset);
    if (!series || series->values().size() != static_cast<std::size_t>(header.frames) / kGroupFrames
        || std::memcmp(series->header().data(), &header, sizeof header) != 0)
        return nullptr;
    // What is asked for stays the longest.
    (void)::utimensat(AT_FDCWD, QFile::encodeName(pathOf(key)).constData(), nullptr, 0); // It only goes earlier.
    return series;
}

void StoredLevels::keep(const QByteArray &key, const media::Asset &asset, LevelSeries &series) const {
    if (key.isEmpty() || series.header().empty())
        return;
    const Header header = headerOf(key, asset);
    std::memcpy(series.header().data(), &header, sizeof header);
    QFile::remove(pathOf(key)); // What is there was looked for before, so it is damaged, or the same.
    if (series.keep(pathOf(key)))
        makeRoom();
}

void StoredLevels::makeRoom() const {
    foundation::HiddenFile::sweep(mFolder);
    // The latest first.
    const QFileInfoList kept = QDir(mFolder).entryInfoList({QStringLiteral("*.levels")}, QDir::Files, QDir::Time);
    qint64 bytes = 0;
    for (const QFileInfo &file : kept) {
        bytes += file.size();
        if (bytes > kMostBytes)
            QFile::remove(file.filePath());
    }
}

} // namespace cantorel
