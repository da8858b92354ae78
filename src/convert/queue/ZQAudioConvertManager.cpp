#include "convert/queue/ZQAudioConvertManager.h"

#include "convert/AudioConverter.h"
#include "log/Log.h"
#include "platform/foundation/HiddenFile.h"
#include "settings/AppSettings.h"

#include <QFile>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <set>
#include <utility>

namespace cantorel {

namespace {

constexpr foundation::SentenceKey kJoinTooFew("JoinTooFew");

} // namespace

ZQAudioConvertManager::ZQAudioConvertManager(foundation::Clock &clock)
    : mClock(clock),
      mConverter(AppSettings::TessolarConverterPath()),
      mReaders(QThread::idealThreadCount()),
      mConverters(1) {}

ZQAudioConvertManager::~ZQAudioConvertManager() { mMergeStop.request_stop(); } // The rows see to their own.

void ZQAudioConvertManager::parseAudioInfoWithURLs(const QList<QUrl> &urls) {
    ConvertEntityDelegate &self = *this;
    for (const QUrl &url : urls) {
        mAudioEntitys.push_back(std::make_unique<ZQAudioConvertEntity>(url, mConverter, self, mReaders));
        delegate->ConvertManagerDelegate_NumberOfEntitysDidChange();
    }
}

void ZQAudioConvertManager::insertAudioInfoWithURL(const QUrl &url, int /*toIndex*/) { parseAudioInfoWithURLs({url}); }

ZQAudioConvertEntity *ZQAudioConvertManager::getAudioEntityWithRowIndex(int index) const {
    return index >= 0 && index < numberOfAudioEntitys() ? mAudioEntitys[static_cast<std::size_t>(index)].get()
                                                        : nullptr;
}

std::optional<int> ZQAudioConvertManager::indexOf(const ZQAudioConvertEntity &entity) const {
    const auto found =
        std::find_if(mAudioEntitys.begin(), mAudioEntitys.end(), [&](const auto &row) { return row.get() == &entity; });
    if (found == mAudioEntitys.end())
        return {};
    return static_cast<int>(found - mAudioEntitys.begin());
}

bool ZQAudioConvertManager::mayMove(int index, int toIndex) const {
    return !isConverting() && index >= 0 && index < numberOfAudioEntitys() && toIndex >= 0
           && toIndex <= numberOfAudioEntitys();
}

bool ZQAudioConvertManager::moveEntityAtIndex(int index, int toIndex) {
    if (!mayMove(index, toIndex))
        return false;
    const auto row = mAudioEntitys.begin() + index, target = mAudioEntitys.begin() + toIndex;
    if (index < toIndex)
        std::rotate(row, row + 1, target);
    else
        std::rotate(target, row, row + 1);
    return true;
}

bool ZQAudioConvertManager::exchange(int index, int toIndex) {
    if (!mayMove(index, toIndex) || toIndex == numberOfAudioEntitys())
        return false;
    std::swap(mAudioEntitys[static_cast<std::size_t>(index)], mAudioEntitys[static_cast<std::size_t>(toIndex)]);
    return true;
}

bool ZQAudioConvertManager::moveUpEntityAtIndex(int index, int toIndex) {
    const int last = numberOfAudioEntitys() - 1;
    return toIndex == last ? moveEntityAtIndex(index, last + 1) : exchange(index, toIndex);
}

bool ZQAudioConvertManager::moveDownEntityAtIndex(int index, int toIndex) {
    return toIndex == 0 ? moveEntityAtIndex(index, 0) : exchange(index, toIndex);
}

bool ZQAudioConvertManager::removeSelectedAudioIndexSet(const QList<int> &indexes) {
    if (isConverting())
        return false;
    for (const int index : std::set<int, std::greater<>>(indexes.begin(), indexes.end()))
        if (getAudioEntityWithRowIndex(index))
            mAudioEntitys.erase(mAudioEntitys.begin() + index);
    delegate->ConvertManagerDelegate_NumberOfEntitysDidChange();
    return true;
}

void ZQAudioConvertManager::outputAudioFormatDidChange(const QString &format, const QString &quality) {
    mPreset = {format.toLower(), AudioConverter::qualityOf(quality)};
    Log(QStringLiteral("Presset Did Change:--->format:%1 quality:%2").arg(format, quality)); // Spelling is fixed.
}

int ZQAudioConvertManager::getConvertSuccessNum() const {
    return static_cast<int>(std::count_if(mAudioEntitys.begin(), mAudioEntitys.end(), [](const auto &row) {
        return row->convertStatus() == ConvertStatus::Completed;
    }));
}

void ZQAudioConvertManager::startConvertWithMergeStatus(bool merge) {
    if (isConverting())
        return;
    std::vector<ZQAudioConvertEntity *> rows;
    for (const auto &row : mAudioEntitys)
        rows.push_back(row.get());
    begin(merge && rows.size() >= 2, rows);
}

bool ZQAudioConvertManager::retryEntityAtIndex(int index) {
    ZQAudioConvertEntity *row = getAudioEntityWithRowIndex(index);
    if (!row || isStopping() || isMerging() || row->convertStatus() == ConvertStatus::Waiting
        || row->convertStatus() == ConvertStatus::Converting)
        return false;
    if (!isConverting()) {
        begin(false, {row});
        return true;
    }
    if (const auto before = std::find(mRun.begin(), mRun.end(), row); before != mRun.end()) {
        mNext -= before - mRun.begin() < static_cast<std::ptrdiff_t>(mNext) ? 1 : 0;
        mRun.erase(before);
    }
    mRun.emplace_back(row);
    row->startConvert();
    return true;
}

void ZQAudioConvertManager::cancelEntityAtIndex(int index) {
    if (ZQAudioConvertEntity *row = getAudioEntityWithRowIndex(index); row && isConverting())
        row->cancel();
}

void ZQAudioConvertManager::stopConvert() {
    if (!isConverting() || isStopping())
        return;
    switch (std::exchange(mState, State::Stopping)) {
    case State::Converting:
        mRun[mNext]->cancel();
        break;
    case State::Merging:
        mMergeStop.request_stop();
        break;
    default: // Nothing is under way.
        mState = State::Stopped;
        goOnSoon();
    }
}

void ZQAudioConvertManager::begin(bool merge, const std::vector<ZQAudioConvertEntity *> &rows) {
    mState = State::BetweenRows;
    mRun.assign(rows.begin(), rows.end());
    mNext = 0;
    mRunPreset = mPreset;
    mFolder = AppSettings::convertOutputPath();
    mMerges = merge;
    mMergeStop = {};
    mBegun = mClock.now();
    mMergedPath.clear();
    mMergeFailure = {};
    for (ZQAudioConvertEntity *row : rows)
        row->startConvert();
    // What a program of ours that was killed has left there.
    mConverters.start([folder = mFolder] { foundation::HiddenFile::sweep(folder); });
    goOnSoon();
}

void ZQAudioConvertManager::goOnSoon() {
    mConverters.tell([this] { goOn(); });
}

void ZQAudioConvertManager::goOn() {
    if (mState == State::Stopped) {
        for (const auto &row : mRun)
            if (row)
                row->cancel(); // those that wait
        return end();
    }
    if (mState != State::BetweenRows)
        return;
    for (; mNext < mRun.size(); ++mNext) {
        const auto &row = mRun[mNext];
        if (!row || row->convertStatus() != ConvertStatus::Waiting)
            continue;
        if (row->isReading()) // EntityDelegateReadMedaInfoDone leads on.
            return;
        mState = State::Converting;
        row->convertWithPreset(mRunPreset, mFolder, mConverters, mMerges);
        return delegate->ConvertManagerDelegate_QueueDidGoOn();
    }
    if (!mMerges || !merge())
        return end();
    delegate->ConvertManagerDelegate_QueueDidGoOn();
}

// False when there is nothing to join.
bool ZQAudioConvertManager::merge() {
    std::vector<QPointer<ZQAudioConvertEntity>> parts;
    QStringList paths;
    for (const auto &row : mAudioEntitys) {
        if (row->convertStatus() != ConvertStatus::Completed)
            continue; // Rows that came after the start have not been converted.
        parts.emplace_back(row.get());
        paths << row->outputPath();
    }
    if (parts.size() < 2) {
        mMergeFailure = kJoinTooFew();
        return false;
    }
    mState = State::Merging;
    mConverters.start([this, parts, paths, preset = mRunPreset, folder = mFolder,
                       converter = Converter{mConverter, {}, mMergeStop.get_token()}] {
        auto joined = AudioConverter::startMerge(paths, preset,
                                                 AudioConverter::mergedPath(paths.front(), folder, preset), converter);
        if (joined && preset.isRingtone()) {
            // Where it can't be renamed it keeps the name that it has.
            const QString renamed = AppSettings::changeFileToExtension(preset.format, joined.value());
            joined = renamed.isEmpty() ? joined.value() : renamed;
        }
        mConverters.tell([this, parts, joined] {
            merged(parts, joined ? joined.value() : QString(),
                   joined ? foundation::Sentence() : joined.failure().sentence);
        });
    });
    return true;
}

void ZQAudioConvertManager::merged(const std::vector<QPointer<ZQAudioConvertEntity>> &parts, const QString &path,
                                   const foundation::Sentence &failure) {
    mMergedPath = path;
    mMergeFailure = failure;
    if (!path.isEmpty())
        for (const auto &row : parts) {
            if (!row)
                continue;
            if (row->hasItsOutput()) // What has taken its name meanwhile stays.
                QFile::remove(row->outputPath());
            row->forgetOutput();
        }
    end();
}

void ZQAudioConvertManager::end() {
    const bool isStopped = isStopping();
    mState = State::Idle;
    if (isStopped)
        delegate->ConvertManagerDelegate_ConvertDidCancel();
    else
        delegate->ConvertManagerDelegate_ConvertDidDone();
}

ZQAudioConvertManager::Progress ZQAudioConvertManager::progress() const {
    Progress progress;
    double all = 0, done = 0;
    for (const auto &row : mRun) {
        if (!row)
            continue;
        const auto status = row->convertStatus();
        const bool hasEnded = status == ConvertStatus::Completed || status == ConvertStatus::Failed;
        const double length = std::max(row->seconds(), 1); // so that one of unknown length counts as well
        ++progress.rows;
        progress.ended += hasEnded ? 1 : 0;
        all += length;
        done += hasEnded ? length : length * row->convertProgress() / 100;
    }
    if (all > 0)
        progress.percent = 100 * done / all;
    using Seconds = std::chrono::duration<double>;
    const double passed = std::chrono::duration_cast<Seconds>(mClock.now() - mBegun).count();
    if (isConverting() && done > 0 && passed >= 1)
        progress.secondsLeft = static_cast<int>(passed * (all - done) / done);
    return progress;
}

ZQAudioConvertManager::Summary ZQAudioConvertManager::summary() const {
    Summary summary;
    summary.folder = mFolder;
    summary.mergedPath = mMergedPath;
    summary.mergeFailure = mMergeFailure;
    for (const auto &row : mAudioEntitys) {
        summary.completed += row->convertStatus() == ConvertStatus::Completed ? 1 : 0;
        summary.failed += row->convertStatus() == ConvertStatus::Failed ? 1 : 0;
        if (!row->outputPath().isEmpty())
            summary.files << row->outputPath();
    }
    if (!mMergedPath.isEmpty())
        summary.files << mMergedPath;
    return summary;
}

void ZQAudioConvertManager::EntityDelegateReadMedaInfoDone(ZQAudioConvertEntity &entity, bool forSuccess) {
    if (const auto index = indexOf(entity))
        delegate->ConvertManagerDelegate_NeedUpdateEntiyInfoWithIndex(*index, forSuccess);
    goOn();
}

void ZQAudioConvertManager::EntityDelegateStartConvert(ZQAudioConvertEntity &entity) {
    if (const auto index = indexOf(entity))
        delegate->ConvertManagerDelegate_StartConvertEntiyInfoWithIndex(*index);
}

void ZQAudioConvertManager::EntityDelegateUpdateConvertForProgress(ZQAudioConvertEntity &entity, double progress) {
    if (const auto index = indexOf(entity))
        delegate->ConvertManagerDelegate_UpdateConvertEntiyInfoWithIndexForProgress(*index, progress);
}

void ZQAudioConvertManager::EntityDelegateUpdateConvertForSuccess(ZQAudioConvertEntity &entity, bool success) {
    if (mNext < mRun.size() && mRun[mNext] == &entity) {
        if (mState == State::Converting)
            mState = State::BetweenRows;
        else if (mState == State::Stopping)
            mState = State::Stopped;
        goOnSoon();
    }
    if (const auto index = indexOf(entity))
        delegate->ConvertManagerDelegate_UpdateConvertEntiyInfoWithIndexForSuccess(*index, success);
}

} // namespace cantorel
