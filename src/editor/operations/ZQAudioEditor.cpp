#include "editor/operations/ZQAudioEditor.h"

#include "editor/operations/InOrder.h"
#include "lang/Lang.h"
#include "log/GuardedAction.h"
#include "platform/foundation/HiddenFile.h"
#include "platform/media/DiskSpace.h"
#include "platform/media/asset/OpenAsset.h"
#include "platform/media/composition/CompositionBuilder.h"
#include "platform/media/export/ExportSession.h"
#include "settings/AppSettings.h"

#include <QFileInfo>

#include <optional>
#include <utility>

namespace cantorel {

using foundation::Failure;
using media::AssetPointer;
using media::ExportCoding;
using media::ExportedFile;
using media::ExportSession;
using media::MediaTimeRange;

namespace {

constexpr foundation::SentenceKey kExportEnded("ExportEnded");

constexpr double kRenderingShare = 0.25; // of the time, where a conversion follows

// All but AAC is converted afterwards, to 44.1 kHz; WAV then has 16 bits.
ExportCoding codingOf(const ZQAudioExportFormat &format, int rate) {
    return format.isAac()                                             ? ExportCoding::Aac
           : format.fileType == QLatin1String("wav") && rate == 44100 ? ExportCoding::Pcm16
                                                                      : ExportCoding::PcmFloat;
}

// The selections one after the other. Deliberate: each lies on a track of its own, a millisecond behind the one before.
foundation::Result<AssetPointer> joined(const AssetPointer &asset, const std::vector<CutRange> &ranges) {
    media::CompositionBuilder builder;
    std::int64_t cursor = 0;
    for (const CutRange &range : ranges) {
        const MediaTimeRange piece = timeRange(range);
        if (const auto done = builder.insertTimeRange(piece, asset, {cursor, 1000}, builder.addTrack()); !done)
            return done.failure();
        cursor += piece.duration.value + 1;
    }
    return AssetPointer(builder.build());
}

} // namespace

ZQAudioEditor::ZQAudioEditor(const QUrl &initWithAudioURL) : mAudioURL(initWithAudioURL) {}

ZQAudioEditor::ZQAudioEditor(AssetPointer initWithAudioAsset)
    : mAudioURL(initWithAudioAsset ? initWithAudioAsset->url() : QUrl()), mInputAsset(std::move(initWithAudioAsset)) {}

ZQAudioEditor::~ZQAudioEditor() { cancel(); }

double ZQAudioEditor::progress() const {
    return mConverts ? kRenderingShare * mRendered + (1 - kRenderingShare) * mConverted : mRendered.load();
}

QList<media::MetadataItem> ZQAudioEditor::addNewMetadata(const QList<media::MetadataItem> &,
                                                         const ZQAudioExportFormat &newExportFormat, const QString &) {
    const QString quickTime = QStringLiteral("quicktime"), iTunes = QStringLiteral("itunes");
    const auto text = [&](const char *key, const QString &value) {
        return value.isEmpty() ? media::MetadataItem{quickTime, {}, {}, {}}
                               : media::MetadataItem{quickTime, QString::fromLatin1(key), value, {}};
    };
    const ZQAudioExportFormat &format = newExportFormat;
    const QByteArray cover = format.artwork();
    const QString artwork = QStringLiteral("artwork");
    return {text("artist", format.ID3Artist),
            text("album", format.ID3Album),
            text("creationDate", format.ID3Year),
            text("title", format.ID3Title),
            {quickTime, artwork, {}, cover},
            text("type", format.ID3Genre),
            {iTunes, cover.isEmpty() ? QString() : artwork, {}, cover}};
}

void ZQAudioEditor::exportAudioWithExportFotmat(const ZQAudioExportFormat &format, const QString &exportAsFile) {
    if (mIsExporting)
        return;
    mIsExporting = true;
    mFailure = {};
    mRendered = mConverted = 0;
    mConverts = !format.isAac();
    mStop = {};
    if (exportDelegate)
        exportDelegate->AudioExportDelegate_ShouldBeginExport();
    const Order order{mSelectedCutEntitys, format, AppSettings::freePathInFolder(exportAsFile)};
    if (AppSettings::getIsAudioExportMergerEnable())
        exportToMergerWithExportFormat(order);
    else
        exportToPartWithExportFormat(order);
}

void ZQAudioEditor::exportToMergerWithExportFormat(Order order) {
    order.format.parts.clear();
    work([this, order = std::move(order)] {
        auto asset = openInput();
        if (asset && !order.ranges.empty())
            asset = joined(asset.value(), order.ranges);
        const Exported result = asset ? exportParts(order, {std::nullopt}, asset.value())
                                      : Exported{order.format, {}, {}, {asset.failure()}};
        tell([this, result] { exportAACTypeAudioFileEnd(result); });
    });
}

void ZQAudioEditor::exportToPartWithExportFormat(Order order) {
    work([this, order = std::move(order)] {
        const auto asset = openInput();
        std::vector<std::optional<MediaTimeRange>> ranges;
        for (const CutRange &range : order.ranges)
            ranges.emplace_back(timeRange(range));
        if (ranges.empty())
            ranges.emplace_back();
        const Exported result =
            asset ? exportParts(order, ranges, asset.value()) : Exported{order.format, {}, {}, {asset.failure()}};
        tell([this, result] { exportAACTypeAudioFileEnd(result); });
    });
}

foundation::Result<AssetPointer> ZQAudioEditor::openInput() {
    if (mInputAsset)
        return mInputAsset;
    auto opened = media::openAsset(mAudioURL);
    if (opened)
        mInputAsset = opened.value();
    return opened;
}

// Parts are rendered ahead, but take their names one after the other: the next one is counted up from the one before.
ZQAudioEditor::Exported ZQAudioEditor::exportParts(const Order &order,
                                                   const std::vector<std::optional<MediaTimeRange>> &ranges,
                                                   const AssetPointer &asset) {
    const QString folder = QFileInfo(order.path).absolutePath();
    const ExportCoding coding = codingOf(order.format, asset->format().rate);
    foundation::HiddenFile::sweep(folder); // what a program that was killed has left there
    Exported result{order.format, {}, {}, {}};
    result.exportFormat.parts.clear(); // but for those that come to be
    QString next = order.path;
    inOrder(
        0, static_cast<int>(ranges.size()), kPartsAtOnce,
        [&](int index) {
            double before = 0;
            const ZQAudioExportFormat &format = order.format.ofPart(static_cast<std::size_t>(index));
            const auto metadata =
                format.isAac() ? addNewMetadata(asset->metadata(), format, {}) : QList<media::MetadataItem>();
            return ExportSession{asset, ranges[static_cast<std::size_t>(index)], coding, metadata}.render(
                order.path, mStop.get_token(), [&](double now) {
                    mRendered.fetch_add((now - before) / static_cast<double>(ranges.size()));
                    before = now;
                });
        },
        [&](int index, foundation::Result<ExportedFile> part) {
            const ZQAudioExportFormat &format = order.format.ofPart(static_cast<std::size_t>(index));
            QString own = folder + QLatin1Char('/') + format.fileName + QStringLiteral(".m4a");
            QString &path = format.fileName.isEmpty() ? next : own;
            path = AppSettings::freePathInFolder(path);
            const auto failed = [&](const Failure &why) { result.failures.push_back(why); };
            if (!part)
                return failed(part.failure());
            if (mStop.stop_requested())
                return failed({media::kExportStopped(), QStringLiteral("stopped before %1").arg(path)});
            if (const int error = takeFreeName(part.value().file, path, AppSettings::freePathInFolder))
                return failed(media::folderFailed(folder, error));
            if (part.value().limited > 0)
                Log(QStringLiteral("%1: %2 samples were limited to full scale").arg(path).arg(part.value().limited));
            result.exportPaths << path;
            result.stamps.emplace_back(path);
            result.exportFormat.parts.push_back(format);
        });
    return result;
}

void ZQAudioEditor::exportAACTypeAudioFileEnd(const Exported &result) {
    take(result.failures);
    if (result.exportFormat.isAac() || result.exportPaths.isEmpty())
        return end(result.exportPaths);
    work([this, result] {
        Converter converter{AppSettings::TessolarConverterPath()};
        converter.stop = mStop.get_token();
        converter.standsBack = false;
        ZQAudioConvert convert(converter, result.stamps, [this](double done) { mConverted = done; });
        convert.convertAudioPaths(result.exportPaths, result.exportFormat, {}, 0, *this);
    });
}

void ZQAudioEditor::AudioConvertDidDone(ZQAudioConvert &convert, const QStringList &outputPaths) {
    tell([this, failures = convert.failures(), outputPaths] {
        take(failures);
        end(outputPaths);
    });
}

void ZQAudioEditor::take(const std::vector<Failure> &failures) {
    for (const Failure &failure : failures) {
        Log(QStringLiteral("Export: %1 (%2)").arg(Lang::english(failure.sentence), failure.detail));
        if (mFailure.isEmpty())
            mFailure = failure.sentence;
    }
}

void ZQAudioEditor::end(const QStringList &paths) {
    mIsExporting = false;
    if (exportDelegate)
        exportDelegate->AudioExportDelegate_ShouldEndExportWithResult(true, paths);
}

void ZQAudioEditor::work(std::function<void()> action) {
    mWorker = std::jthread([this, action = std::move(action)] {
        if (!guarded("export", action)) // logged there
            tell([this] {
                take({{kExportEnded(), QStringLiteral("an exception")}});
                end({});
            });
    });
}

void ZQAudioEditor::tell(std::function<void()> action) {
    QMetaObject::invokeMethod(this, std::move(action), Qt::QueuedConnection);
}

} // namespace cantorel
