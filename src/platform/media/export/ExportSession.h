#pragma once

#include "platform/foundation/HiddenFile.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/Sentence.h"
#include "platform/media/asset/Asset.h"

#include <QList>
#include <QString>

#include <cstdint>
#include <functional>
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

// A stretch of an asset that is rendered, as stereo at the asset's rate, into an M4A. Decoded, it has exactly the
// frames of the stretch. A value.
struct ExportSession {
    AssetPointer asset;
    std::optional<MediaTimeRange> range; // all of it without one
    ExportCoding coding = ExportCoding::Aac;
    QList<MetadataItem> metadata; // see itemList(); only for AAC

    // For a file of that path, beside which it is written. What is answered has the frames of the stretch by what is
    // read back; as AAC it is on the disk, bare samples only if they are flushed. Tells how far it is, from 0 to 1.
    // Blocks.
    foundation::Result<ExportedFile> render(const QString &path, const std::stop_token &stop,
                                            const std::function<void(double)> &progress) const;
};

} // namespace cantorel::media
