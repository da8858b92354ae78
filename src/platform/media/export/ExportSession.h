#pragma once

#include "platform/foundation/HiddenFile.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/Sentence.h"
#include "platform/media/asset/Asset.h"

#include <QList>
#include <QString>

#include <atomic>
#include <cstdint>
#include <optional>
#include <stop_token>

namespace cantorel::media {

inline constexpr foundation::SentenceKey kExportStopped("ExportStopped");

// What the sound of an exported M4A is.
enum class ExportCoding {
    Aac,   // AAC-LC of 256 kbit/s
    Pcm16, // bare samples for somebody who converts them
    PcmFloat,
};

// A file that has no name yet; it is gone unless it takes one.
struct ExportedFile {
    foundation::HiddenFile file;
    std::int64_t frames = 0;
    std::int64_t limited = 0; // samples; see FrameReader
};

// Renders a stretch of an asset, as stereo at the asset's rate, into an M4A. Decoded, it has exactly the frames of the
// stretch.
class ExportSession {
public:
    // All of the asset without a range. metadata: see itemList(); only for AAC.
    ExportSession(AssetPointer asset, std::optional<MediaTimeRange> range, ExportCoding coding,
                  QList<MetadataItem> metadata = {});

    // Writes beside the place where the file is to go. What is answered is on the disk, and as long as the stretch by
    // what is read back. Blocks; once only.
    foundation::Result<ExportedFile> render(const QString &folder, const std::stop_token &stop);
    // From 0 to 1; any thread.
    double progress() const { return mProgress.load(std::memory_order_relaxed); }

private:
    const AssetPointer mAsset;
    const std::optional<MediaTimeRange> mRange;
    const ExportCoding mCoding;
    const QList<MetadataItem> mMetadata;
    std::atomic<double> mProgress = 0;
};

} // namespace cantorel::media
