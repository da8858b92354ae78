#include "platform/media/asset/OpenAsset.h"

#include "platform/foundation/LoadedModule.h"
#include "platform/media/asset/AssetFailures.h"

#include <utility>

namespace cantorel::media {

namespace {

constexpr const char *kModule = "cantorel-ffmpeg-reader.so";

// What one of the module's functions answers of a file of this machine.
template <class Function>
auto askModule(const char *name, const QUrl &url) -> decltype(std::declval<Function>()(QString())) {
    static const auto entry = foundation::loadEntryPoint(kModule, name);
    if (!url.isLocalFile())
        return failures::notSound(url.toDisplayString(), QStringLiteral("no file of this machine"));
    if (!entry)
        return failures::codecsMissing(entry.failure().detail);
    return reinterpret_cast<Function>(entry.value())(url.toLocalFile());
}

} // namespace

foundation::Result<AssetPointer> openAsset(const QUrl &url) {
    return askModule<AssetEntryPoint>(kAssetEntryPoint, url);
}

foundation::Result<QList<MetadataItem>> readMetadata(const QUrl &url) {
    return askModule<MetadataEntryPoint>(kMetadataEntryPoint, url);
}

} // namespace cantorel::media
