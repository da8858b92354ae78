#pragma once

#include "platform/media/asset/Asset.h"
#include "platform/media/asset/SourceFile.h"

#include <QUrl>

#include <memory>

namespace cantorel::media {

// Opens a file of this machine by the reader's own module, loaded when it is first needed; the samples of a plain WAVE
// file are read without it. The file stays open as long as the asset lives, and is the same file whatever happens to
// its name; one that was changed meanwhile can't be read any more. A file without sound is an asset too, with 0
// channels. Any thread.
foundation::Result<AssetPointer> openAsset(const QUrl &url);

// What a file says of itself, which is quicker to learn than how long it is. Any thread.
foundation::Result<QList<MetadataItem>> readMetadata(const QUrl &url);

// The functions that the module exports.
inline constexpr const char *kAssetEntryPoint = "cantorel_open_asset";
using AssetEntryPoint = foundation::Result<AssetPointer> (*)(std::shared_ptr<const SourceFile> file);
inline constexpr const char *kMetadataEntryPoint = "cantorel_read_metadata";
using MetadataEntryPoint = foundation::Result<QList<MetadataItem>> (*)(std::shared_ptr<const SourceFile> file);

} // namespace cantorel::media
