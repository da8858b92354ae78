#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/Sentence.h"
#include "platform/media/asset/Asset.h"

#include <QString>
#include <QUrl>

namespace cantorel {

inline constexpr foundation::SentenceKey kSilenceLength("SilenceLength");

enum class InsertType { Silence = 0, Append = 1, Insert = 2, Mix = 3, Overwrite = 4 };

// Puts silence or another sound into a sound; what comes of it is a composition, and neither is changed. A value.
class ZQAudioInserter {
public:
    media::AssetPointer mainAsset;
    media::AssetPointer insertAsset; // none for silence
    QUrl insertURL;                  // of the insert asset, to be shown
    InsertType insertType = InsertType::Silence;
    media::MediaTimeRange insertRange; // of the insert asset; of silence its length
    media::MediaTime startTime;        // in the main asset

    // Keeps what it is given and makes the composition. What is appended comes whole and behind the end; what is mixed
    // comes whole.
    foundation::Result<media::AssetPointer>
    insertAudioAsset(media::AssetPointer insertAsset, media::AssetPointer toMainAudioAsset, InsertType withInsertType,
                     media::MediaTimeRange insertTimeRange, media::MediaTime startTime);
    foundation::Result<media::AssetPointer> createComposition() const;

    // What the result is called, by the name of the main sound.
    QString resultName(const QString &mainName) const;
};

} // namespace cantorel
