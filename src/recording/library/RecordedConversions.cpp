#include "recording/library/RecordedConversions.h"

#include "convert/AudioConverter.h"
#include "lang/Lang.h"
#include "log/GuardedAction.h"
#include "platform/foundation/FileIdentity.h"
#include "recording/library/RecordedList.h"
#include "settings/AppSettings.h"
#include "tags/TagWriting.h"
#include "util/ToolFile.h"

#include <QFile>
#include <QFileInfo>

#include <memory>

namespace cantorel {

using foundation::Failure;
using foundation::FileIdentity;
using foundation::Result;

namespace {

constexpr foundation::SentenceKey kConversionEnded("ConversionEnded");

constexpr int kAttempts = 3;

} // namespace

RecordedConversions::RecordedConversions(RecordedList &list) : mList(list) {}

RecordedConversions::~RecordedConversions() = default; // The worker is asked to stop, and waited for.

void RecordedConversions::run(const std::stop_token &stop) {
    std::unique_lock lock(mMutex);
    while (mWake.wait(lock, stop, [this] { return !mJobs.empty(); }) && !stop.stop_requested()) {
        const auto job = std::move(mJobs.front());
        mJobs.pop_front();
        lock.unlock();
        job(stop);
        lock.lock();
    }
}

void RecordedConversions::convertRecordedfileFormat(RecordedAudioInfo &item, Completion completion) {
    ++mPending;
    item.isProcessing = true;
    item.setStatus(Lang::commProcessing() + QStringLiteral("..."));
    const QString file = item.getFileName();
    if (mList.willConvert)
        mList.willConvert(file);
    const int format = AppSettings::getAudioFormat();
    const QString converter = AppSettings::TessolarConverterPath();
    auto job = [this, file, format, converter, item = RecordedItemPointer(&item),
                completion = std::move(completion)](const std::stop_token &stop) {
        Result<QString> result = Failure{kConversionEnded(), QString()};
        auto recording = std::make_shared<FileIdentity>(file);
        (void)guarded("convert", [&] {
            foundation::WallClock clock;
            for (int attempt = 1;; ++attempt) {
                recording = std::make_shared<FileIdentity>(file);
                result = AudioConverter::convertRecording(format, file, {converter, {}, stop}, clock);
                // With tags that were written meanwhile it is converted once more: the successor has them too.
                if (attempt == kAttempts || stop.stop_requested() || recording->isAt(file)
                    || !hasSoundOf(recording->file(), file))
                    break;
                if (result)
                    QFile::remove(result.value());
            }
        });
        // The destructor waits for this worker, so "this" is valid here; calls still queued by then are dropped.
        QMetaObject::invokeMethod(this, [this, item, file, recording, result, completion] {
            (void)guarded("converted", [&] { finish(item, file, *recording, result, completion); });
        });
    };
    {
        const std::lock_guard lock(mMutex);
        mJobs.push_back(std::move(job));
    }
    mWake.notify_one();
    if (!mWorker.joinable())
        mWorker = std::jthread([this](const std::stop_token &stop) { run(stop); });
}

void RecordedConversions::finish(const RecordedItemPointer &item, const QString &file, const FileIdentity &recording,
                                 const Result<QString> &result, const Completion &completion) {
    --mPending;
    if (item) { // It may have been removed from the list meanwhile.
        item->isProcessing = false;
        if (result) {
            item->setFileName(result.value());
            item->setSize(ToolFile::fileSizeFormatterToString(QFileInfo(result.value()).size()));
            item->setStatus({});
            mList.save(*item);
        } else {
            item->setStatus(QStringLiteral("Error"));
        }
    }
    // The recording goes only now that its successor is whole. It is in the stored list, or found by the next start;
    // what has taken its name meanwhile stays.
    if (result && recording.isAt(file)
        && QFileInfo(file).absoluteFilePath() != QFileInfo(result.value()).absoluteFilePath())
        QFile::remove(file);
    if (mList.didConvert)
        mList.didConvert(file);
    completion(result);
}

} // namespace cantorel
