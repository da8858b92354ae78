#include "editor/MVMediaEntity.h"

#include "platform/foundation/SearchPaths.h"
#include "platform/media/asset/OpenAsset.h"

#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>

#include <algorithm>
#include <array>

namespace cantorel {

namespace {

constexpr const char *kUriList = "text/uri-list";
constexpr const char *kFolder = "inode/directory";

// What the platform calls a kind of file, as far as it matters here; empty where none can be told.
QString typeIdentifier(const QUrl &url) {
    const QString path = url.toLocalFile();
    if (!url.isLocalFile() || !QFileInfo::exists(path))
        return {};
    const QString suffix = QFileInfo(path).suffix();
    for (const char *known : {"mp3", "aac", "m4a"})
        if (suffix.compare(QLatin1String(known), Qt::CaseInsensitive) == 0)
            return QStringLiteral("public.%1").arg(suffix);
    return QMimeDatabase().mimeTypeForFile(path).name();
}

} // namespace

QStringList MVMediaEntity::writableTypesForPasteboard() const { return {QLatin1String(kUriList)}; }

QByteArray MVMediaEntity::pasteboardPropertyListForType(const QString &type) const {
    return type == QLatin1String(kUriList) ? fileURL.toEncoded() : QByteArray();
}

QStringList MVMediaEntity::readableTypesForPasteboard() { return {QLatin1String(kFolder), QLatin1String(kUriList)}; }

std::unique_ptr<MVMusicEntity> MVMusicEntity::entityForURL(const QUrl &url) {
    if (!isAudioWithURL(url) && !isVideoWithURL(url))
        return nullptr;
    return std::make_unique<MVMusicEntity>(url);
}

std::unique_ptr<MVMusicEntity> MVMusicEntity::initWithPasteboardPropertyList(const QByteArray &propertyList,
                                                                             const QString &ofType) {
    const QUrl url = QUrl::fromEncoded(propertyList.trimmed());
    if (!readableTypesForPasteboard().contains(ofType) || typeIdentifier(url).isEmpty())
        return nullptr;
    return std::make_unique<MVMusicEntity>(url);
}

bool MVMusicEntity::isAudioWithURL(const QUrl &url) {
    static constexpr std::array kAudio = {"mp3", "aac", "m4a"};
    const QString type = typeIdentifier(url).toLower();
    return std::any_of(kAudio.begin(), kAudio.end(),
                       [&type](const char *kind) { return type.contains(QLatin1String(kind)); });
}

bool MVMusicEntity::isVideoWithURL(const QUrl & /*url*/) { return false; }

QString MVMusicEntity::commonText(const QString &key) const {
    const auto metadata = media::readMetadata(fileURL);
    if (!metadata)
        return {};
    for (const media::MetadataItem &item : metadata.value())
        if (item.commonKey == key)
            return item.text;
    return {};
}

QByteArray MVMusicEntity::image() const {
    const std::scoped_lock lock(mMutex);
    if (mImage)
        return *mImage;
    const auto metadata = media::readMetadata(fileURL);
    if (metadata)
        for (const media::MetadataItem &item : metadata.value())
            if (!mImage && item.commonKey == QLatin1String("artwork")
                && (item.keySpace == QLatin1String("id3") || item.keySpace == QLatin1String("itunes"))
                && !item.text.isEmpty())
                mImage = item.data;
    if (!mImage) {
        // Spelling is fixed.
        QFile unknown(foundation::resourcePath(QStringLiteral("icons/musicUnkown.svg")));
        mImage = unknown.open(QIODevice::ReadOnly) ? unknown.readAll() : QByteArray();
    }
    return *mImage;
}

double MVMusicEntity::duration() const {
    const std::scoped_lock lock(mMutex);
    const auto asset = media::openAsset(fileURL);
    if (!asset)
        return 0;
    const media::MediaTime time = asset.value()->duration();
    return asset.value()->isPlayable() ? time.seconds() : static_cast<double>(time.wholeSeconds());
}

} // namespace cantorel
