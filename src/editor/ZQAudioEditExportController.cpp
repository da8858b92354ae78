#include "editor/ZQAudioEditExportController.h"

#include "settings/AppSettings.h"
#include "tags/AudioIdentify.h"
#include "tags/pictures/DecodedPicture.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <utility>

namespace cantorel {

namespace {

constexpr QString ZQAudioExportFormat::*kTexts[] = {&ZQAudioExportFormat::ID3Title, &ZQAudioExportFormat::ID3Artist,
                                                    &ZQAudioExportFormat::ID3Album, &ZQAudioExportFormat::ID3Year,
                                                    &ZQAudioExportFormat::ID3Genre, &ZQAudioExportFormat::fileName};

// A picture of any kind as PNG; empty for none.
QByteArray getArtworkDataFrom(const QByteArray &picture) {
    const char *kind = pictureKind(picture);
    if (kind && qstrcmp(kind, "png") == 0)
        return picture;
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    const QImage image = decodedPicture(picture);
    return !image.isNull() && image.save(&buffer, "png") ? png : QByteArray();
}

} // namespace

ZQAudioEditExportController::~ZQAudioEditExportController() { removeCache(); }

const QStringList &ZQAudioEditExportController::fileTypes() {
    static const QStringList types{QStringLiteral("mp3"), QStringLiteral("aac"), QStringLiteral("wav"),
                                   QStringLiteral("flac"), QStringLiteral("wma")};
    return types;
}

void ZQAudioEditExportController::initialize() {
    const QString type = AppSettings::getAudioExportFormat();
    mFormat.fileType = fileTypes().contains(type) ? type : fileTypes().constFirst();
    mFormat.isMerger = AppSettings::getIsAudioExportMergerEnable();
    Q_EMIT changed();
}

void ZQAudioEditExportController::setExportModePartEnable(bool isEnabled) {
    mIsPartEnabled = isEnabled;
    if (!isEnabled && !mFormat.isMerger)
        chooseMode(true);
    else
        Q_EMIT changed();
}

void ZQAudioEditExportController::chooseMode(bool isMerger) {
    mFormat.isMerger = isMerger;
    AppSettings::setAudioExportMergerEnable(isMerger);
    Q_EMIT changed();
}

void ZQAudioEditExportController::selectExportFormat(const QString &type) {
    mFormat.fileType = type;
    AppSettings::setExportAudioFormat(type);
    Q_EMIT changed();
}

bool ZQAudioEditExportController::isID3ViewOpen() const {
    return mFormat.fileType == QLatin1String("mp3") || mFormat.fileType == QLatin1String("aac");
}

void ZQAudioEditExportController::parseAudioInfo(const QUrl &source) {
    mAudioURL = source;
    displayID3Info();
}

// Nothing is left of a source before.
void ZQAudioEditExportController::displayID3Info() {
    clearID3Info();
    deleteTheArtwotkImage();
    if (const auto tag = AudioIdentify::getID3TagFromFile(mAudioURL.toLocalFile())) {
        mFormat.ID3Title = tag->id3Title;
        mFormat.ID3Artist = tag->id3Artist;
        mFormat.ID3Album = tag->id3Album;
        mFormat.ID3Year = tag->id3Year;
        mFormat.ID3Genre = tag->id3Genre;
        mFormat.ID3ArtworkData = getArtworkDataFrom(tag->id3Image);
        saveArtwotkImageFromAudioFileToCache();
    }
    Q_EMIT changed();
}

QString ZQAudioEditExportController::text(Field field) const { return mFormat.*kTexts[field]; }

void ZQAudioEditExportController::setText(Field field, const QString &text) {
    mFormat.*kTexts[field] = text;
    Q_EMIT partsChanged();
}

void ZQAudioEditExportController::clearID3Info() {
    for (int field = 0; field < TagCount; ++field)
        (mFormat.*kTexts[field]).clear();
    Q_EMIT changed();
}

void ZQAudioEditExportController::setParts(const QList<double> &starts, const QString &name) {
    const std::vector<Part> before = std::exchange(mParts, {});
    mPartName = name;
    const bool isMoved = before.size() == static_cast<std::size_t>(starts.size()); // none has come or gone
    for (const double start : starts) {
        const auto same = isMoved ? before.begin() + static_cast<std::ptrdiff_t>(mParts.size())
                                  : std::find_if(before.begin(), before.end(),
                                                 [start](const Part &part) { return part.start == start; });
        mParts.push_back(same == before.end() ? Part{} : *same);
        mParts.back().start = start;
    }
    if (!isMoved)
        Q_EMIT partsChanged();
}

QString ZQAudioEditExportController::unnamed(int part) const {
    QString name = mPartName;
    for (int before = 0; before < part; ++before)
        if (!isPartTyped(before, Name))
            name = AppSettings::followingStem(name);
    return name;
}

QString ZQAudioEditExportController::partText(int part, Field field) const {
    const auto &typed = mParts[static_cast<std::size_t>(part)].typed[field];
    return typed ? *typed : field == Name ? unnamed(part) : text(field);
}

void ZQAudioEditExportController::setPartText(int part, Field field, const QString &text) {
    auto &typed = mParts[static_cast<std::size_t>(part)].typed[field];
    const QString wanted = field == Name ? mFormat.withoutExtension(text.trimmed()) : text;
    typed.reset();
    if (wanted != partText(part, field) && !(field == Name && wanted.isEmpty()))
        typed = wanted;
    Q_EMIT partsChanged();
}

ZQAudioExportFormat ZQAudioEditExportController::exportFormat() const {
    ZQAudioExportFormat format = mFormat;
    if (arePartsAsked())
        for (const Part &part : mParts) {
            format.parts.push_back(mFormat);
            for (int field = 0; field < FieldCount; ++field)
                if (const auto &typed = part.typed[static_cast<std::size_t>(field)])
                    format.parts.back().*kTexts[field] = *typed;
        }
    return format;
}

bool ZQAudioEditExportController::addNewArtworkImage(const QString &path) {
    QFile file(path);
    const QByteArray png =
        file.open(QIODevice::ReadOnly) ? getArtworkDataFrom(file.read(kLargestPicture)) : QByteArray();
    if (png.isEmpty())
        return false;
    mFormat.ID3ArtworkData = png;
    mFormat.ID3ArtworkURL = QUrl::fromLocalFile(path);
    Q_EMIT changed();
    return true;
}

void ZQAudioEditExportController::deleteTheArtwotkImage() {
    mFormat.ID3ArtworkData.clear();
    mFormat.ID3ArtworkURL.clear();
    removeCache();
    Q_EMIT changed();
}

// Of each process and each source its own, so that no other export meets it.
void ZQAudioEditExportController::saveArtwotkImageFromAudioFileToCache() {
    if (mFormat.ID3ArtworkData.isEmpty())
        return;
    static int count = 0;
    const QFileInfo place(AppSettings::defaultArtworkImageCachesPath());
    const QString path = QStringLiteral("%1/%2-%3-%4.%5")
                             .arg(place.path(), place.completeBaseName())
                             .arg(QCoreApplication::applicationPid())
                             .arg(++count)
                             .arg(place.suffix());
    QDir().mkpath(place.path());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(mFormat.ID3ArtworkData) < 0 || !file.commit())
        return; // The cover is in the record as well.
    mCache = path;
    mFormat.ID3ArtworkURL = QUrl::fromLocalFile(path);
}

void ZQAudioEditExportController::removeCache() {
    if (!mCache.isEmpty())
        QFile::remove(mCache);
    mCache.clear();
}

} // namespace cantorel
