#include "editor/operations/ZQAudioInserter.h"

#include "platform/media/asset/AssetFailures.h"
#include "platform/media/composition/CompositionBuilder.h"
#include "util/ToolFile.h"

#include <algorithm>
#include <utility>

namespace cantorel {

using foundation::Failure;
using foundation::Result;
using media::AssetPointer;
using media::MediaTime;

namespace {

constexpr foundation::SentenceKey kEditPlaceBeyond("EditPlaceBeyond");

constexpr MediaTime kLongestSilence{(99 * 3600 + 59 * 60 + 59) * std::int64_t{1000} + 999, 1000};

Failure noSound(const AssetPointer &asset) {
    const QString path = asset ? asset->url().toLocalFile() : QString();
    return media::failures::notSound(path, QStringLiteral("nothing to insert"));
}

bool hasSound(const AssetPointer &asset) { return asset && asset->format().channels > 0 && asset->isPlayable(); }

} // namespace

Result<AssetPointer> ZQAudioInserter::insertAudioAsset(AssetPointer insertAsset, AssetPointer toMainAudioAsset,
                                                       InsertType withInsertType, media::MediaTimeRange insertTimeRange,
                                                       MediaTime startTime) {
    mainAsset = std::move(toMainAudioAsset);
    insertType = withInsertType;
    this->insertAsset = insertType == InsertType::Silence ? nullptr : std::move(insertAsset);
    insertRange = insertTimeRange;
    this->startTime = startTime;
    const bool comesWhole = insertType == InsertType::Append || insertType == InsertType::Mix;
    if (comesWhole && this->insertAsset)
        insertRange = {{0, this->insertAsset->duration().timescale}, this->insertAsset->duration()};
    if (insertType == InsertType::Append && mainAsset)
        this->startTime = mainAsset->duration();
    return createComposition();
}

Result<AssetPointer> ZQAudioInserter::createComposition() const {
    for (const AssetPointer &asset : {mainAsset, insertType == InsertType::Silence ? mainAsset : insertAsset})
        if (!hasSound(asset))
            return noSound(asset);
    media::CompositionBuilder builder;
    const auto track = builder.addTrack();
    Result<void> done = builder.insertTimeRange({{}, mainAsset->duration()}, mainAsset, {}, track);
    if (!done)
        return done.failure();
    const MediaTime whole = builder.duration();
    switch (insertType) {
    case InsertType::Silence:
        if (insertRange.duration.value <= 0 || kLongestSilence < insertRange.duration)
            return Failure{kSilenceLength(), QStringLiteral("%1 s").arg(insertRange.duration.seconds())};
        done = builder.insertEmptyTimeRange({startTime, insertRange.duration});
        break;
    case InsertType::Append:
    case InsertType::Insert:
        done = builder.insertTimeRange(insertRange, insertAsset, startTime, track);
        break;
    case InsertType::Mix:
        done = builder.insertTimeRange(insertRange, insertAsset, startTime, builder.addTrack());
        break;
    case InsertType::Overwrite: {
        if (whole < startTime)
            return Failure{kEditPlaceBeyond(), QStringLiteral("%1 s").arg(startTime.seconds())};
        // Whole seconds are deliberate: what is shorter than one overwrites nothing.
        const std::int64_t left = (whole.value - media::frameAt(whole.timescale, startTime)) / whole.timescale;
        const std::int64_t seconds = std::max<std::int64_t>(std::min(insertRange.duration.wholeSeconds(), left), 0);
        builder.removeTimeRange({startTime, {seconds * whole.timescale, whole.timescale}});
        done = builder.insertTimeRange(insertRange, insertAsset, startTime, track);
        break;
    }
    }
    return done ? Result<AssetPointer>(builder.build()) : done.failure();
}

QString ZQAudioInserter::resultName(const QString &mainName) const {
    return ToolFile::fileNameAtPath(mainName) + QStringLiteral(" + ")
           + (insertType == InsertType::Silence ? QStringLiteral("empty") : insertURL.fileName());
}

} // namespace cantorel
