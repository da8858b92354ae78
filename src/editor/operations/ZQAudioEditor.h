#pragma once

#include "editor/operations/CutRange.h"
#include "editor/operations/FileStamp.h"
#include "editor/operations/ZQAudioConvert.h"
#include "editor/operations/ZQAudioExportFormat.h"
#include "platform/foundation/Result.h"
#include "platform/media/asset/Asset.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <atomic>
#include <functional>
#include <optional>
#include <stop_token>
#include <thread>
#include <utility>
#include <vector>

namespace cantorel {

// All messages come on the main thread.
class AudioExportDelegate {
public:
    virtual ~AudioExportDelegate() = default;
    virtual void AudioExportDelegate_ShouldBeginExport() {}
    // The paths of the files that came to be. Deliberate: the result is always true; failure() tells what is missing.
    virtual void AudioExportDelegate_ShouldEndExportWithResult(bool /*result*/, const QStringList & /*outputPaths*/) {}
};

// The writer of the editor: makes files of the selections of a sound, joined or each for itself. The sound is never
// touched. Main thread; the work is done on one of its own.
class ZQAudioEditor : public QObject, private AudioConvertDelegate {
public:
    explicit ZQAudioEditor(const QUrl &initWithAudioURL); // opened with the first export
    explicit ZQAudioEditor(media::AssetPointer initWithAudioAsset);
    ~ZQAudioEditor() override; // stops what runs, and waits for it

    AudioExportDelegate *exportDelegate = nullptr; // outlives this

    // In the order in which they are written; none: the whole sound. What is exported is what was given last when the
    // export was begun.
    void addSelectedCutEntitys(std::vector<CutRange> ranges) { mSelectedCutEntitys = std::move(ranges); }

    // Path: of the M4A; the next free name where it is taken. Joined or not by the setting. Nothing while another
    // export runs.
    void exportAudioWithExportFotmat(const ZQAudioExportFormat &format,
                                     const QString &exportAsFile); // Spelling is fixed.
    // What is not done yet never is; the end is told.
    void cancel() { mStop.request_stop(); }

    bool isExporting() const { return mIsExporting; }
    double progress() const; // 0 to 1
    // Why something of the last export did not come to be; empty when nothing is missing.
    const foundation::Sentence &failure() const { return mFailure; }

    // The tags of an M4A: seven items in this order. One whose source is empty says nothing.
    static QList<media::MetadataItem> addNewMetadata(const QList<media::MetadataItem> &metadata,
                                                     const ZQAudioExportFormat &newExportFormat,
                                                     const QString &presetName);

private:
    struct Exported {
        ZQAudioExportFormat exportFormat;
        QStringList exportPaths;
        std::vector<FileStamp> stamps; // of the files at the paths
        std::vector<foundation::Failure> failures;
    };
    struct Order {
        std::vector<CutRange> ranges;
        ZQAudioExportFormat format;
        QString path;
    };

    void exportToMergerWithExportFormat(Order order);
    void exportToPartWithExportFormat(Order order);
    void exportAACTypeAudioFileEnd(const Exported &result);
    void AudioConvertDidDone(ZQAudioConvert &convert, const QStringList &outputPaths) override;
    void end(const QStringList &paths);

    // On the worker.
    foundation::Result<media::AssetPointer> openInput();
    Exported exportParts(const Order &order, const std::vector<std::optional<media::MediaTimeRange>> &ranges,
                         const media::AssetPointer &asset);
    void work(std::function<void()> action);
    void tell(std::function<void()> action);
    void take(const std::vector<foundation::Failure> &failures);

    const QUrl mAudioURL;
    media::AssetPointer mInputAsset;
    std::vector<CutRange> mSelectedCutEntitys;
    bool mIsExporting = false;
    foundation::Sentence mFailure;
    std::atomic<double> mRendered = 0, mConverted = 0; // from 0 to 1
    std::atomic<bool> mConverts = false;
    std::stop_source mStop;
    std::jthread mWorker; // last: it uses the above
};

} // namespace cantorel
