#include "editor/ZQAudioEditExportController.h"

#include "settings/AppSettings.h"
#include "tags/AudioIdentify.h"
#include "tags/pictures/DecodedPicture.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace cantorel {

namespace {

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

QString &ZQAudioEditExportController::textOf(Field field) {
    QString *const texts[] = {&mFormat.ID3Title, &mFormat.ID3Artist, &mFormat.ID3Album, &mFormat.ID3Year,
                              &mFormat.ID3Genre};
    return *texts[field];
}

QString ZQAudioEditExportController::text(Field field) const {
    return const_cast<ZQAudioEditExportController *>(this)->textOf(field);
}

void ZQAudioEditExportController::setText(Field field, const QString &text) { textOf(field) = text; }

void ZQAudioEditExportController::clearID3Info() {
    for (int field = 0; field < FieldCount; ++field)
        textOf(static_cast<Field>(field)).clear();
    Q_EMIT changed();
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
