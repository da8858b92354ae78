#include "platform/media/asset/OpenAsset.h"

#include "platform/foundation/LoadedModule.h"
#include "platform/media/asset/AssetFailures.h"

namespace cantorel::media {

namespace {

constexpr const char *kModule = "cantorel-ffmpeg-reader.so";

} // namespace

foundation::Result<AssetPointer> openAsset(const QUrl &url) {
    static const auto entry = foundation::loadEntryPoint(kModule, kAssetEntryPoint);
    if (!url.isLocalFile())
        return failures::notSound(url.toDisplayString(), QStringLiteral("no file of this machine"));
    if (!entry)
        return failures::codecsMissing(entry.failure().detail);
    return reinterpret_cast<AssetEntryPoint>(entry.value())(url.toLocalFile());
}

} // namespace cantorel::media
