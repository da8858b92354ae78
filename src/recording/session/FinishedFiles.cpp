#include "recording/session/FinishedFiles.h"

#include "log/Log.h"
#include "platform/media/MediaFailures.h"
#include "platform/media/asset/OpenAsset.h"
#include "recording/library/RecordedList.h"
#include "recording/session/RecordingJournal.h"
#include "recording/session/RecordingNames.h"
#include "settings/AppSettings.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <limits>
#include <utility>

namespace cantorel {

using foundation::Failure;

namespace {

constexpr foundation::SentenceKey kNoSound("NoSound", "Device");

} // namespace

FinishedFiles::FinishedFiles(RecordingSessionView &view, RecordedList &list, RecordingJournal &journal,
                             std::function<void()> settled)
    : mView(view), mList(list), mJournal(journal), mSettled(std::move(settled)), mConversions(list) {}

EndedFile FinishedFiles::take(FileUnderWay &file, const FinishedRecording &recording,
                              const std::optional<Failure> &failure, bool isGone) {
    EndedFile ended;
    ended.isElsewhere = !file.path.isEmpty() && recording.file != file.path;
    if (ended.isElsewhere)
        moved(file, recording.file);
    const bool isRemoved = (isGone && !ended.isElsewhere) || !QFileInfo::exists(recording.file);
    if (failure && (!isGone || ended.isElsewhere)) {
        ended.became = EndedFile::Became::Interrupted;
        ended.playableSeconds = keep(file, recording.file);
        ended.trouble = {failure->sentence, recording.file};
        return ended;
    }
    AppSettings::setOutputFileName({});
    if (isRemoved || recording.seconds <= 0)
        return drop(file, recording, failure, isRemoved);
    if (!filter(file, recording) && file.item)
        complete(*file.item, recording);
    constexpr int kLast = std::numeric_limits<int>::max();
    AppSettings::setrecordNameBaseOn(std::min(AppSettings::recordNameBaseOn(), kLast - 1) + 1);
    return ended;
}

void FinishedFiles::complete(RecordedAudioInfo &item, const FinishedRecording &recording) {
    const QString size = ToolFile::fileSizeFormatterToString(recording.bytes);
    item.isRecording = false;
    item.setStatus({});
    item.Seconds = recording.seconds;
    item.setDuration(ToolString::stringFromDuration(recording.seconds));
    item.setSize(size);
    mList.save(item);
    mJournal.settle(recording.file);
    convert(item, recording);
    Log(QStringLiteral("did stop record succ :\n{\n    Path = %1\n    Duration = %2 s\n    FileSize = %3\n}")
            .arg(recording.file, QString::number(recording.seconds, 'f', 2), size));
}

bool FinishedFiles::filter(const FileUnderWay &file, const FinishedRecording &recording) {
    const int shortest = AppSettings::autoFilterSeconds();
    if (!AppSettings::isAutoFilterAudioFile() || shortest < 1 || shortest <= recording.seconds)
        return false;
    if (!QFile::remove(recording.file)) {
        mList.addInvalidFile(recording.file);
        return false;
    }
    mJournal.end(recording.file);
    if (file.item) {
        if (file.item->shutdownEnable)
            file.item->ShutdownMonitorDelegate()->shutdownRequestedBy(*file.item);
        mList.remove(*file.item);
    }
    mView.recordingFiltered(recording.file, recording.seconds);
    return true;
}

void FinishedFiles::convert(RecordedAudioInfo &item, const FinishedRecording &recording) {
    mView.recordingConverting(recording.file);
    mConversions.convertRecordedfileFormat(item, [this, recording](const foundation::Result<QString> &result) {
        FinishedRecording finished = recording;
        if (result) {
            finished.file = result.value();
            finished.bytes = QFileInfo(finished.file).size();
            mView.recordingFinished(finished);
        } else {
            mView.recordingFailed(
                {result.failure().sentence, QFile::exists(recording.file) ? recording.file : QString()});
        }
        mSettled();
    });
}

EndedFile FinishedFiles::drop(const FileUnderWay &file, const FinishedRecording &recording,
                              const std::optional<Failure> &failure, bool isRemoved) {
    if (file.item)
        mList.remove(*file.item);
    mJournal.end(recording.file);
    EndedFile ended;
    ended.became = EndedFile::Became::Lost;
    if (failure) {
        ended.trouble.sentence = failure->sentence;
    } else if (isRemoved) {
        ended.trouble.sentence = media::failures::fileRemoved(recording.file).sentence;
    } else {
        QFile::remove(recording.file);
        ended.became = EndedFile::Became::Empty;
        ended.trouble.sentence = kNoSound(file.device);
    }
    return ended;
}

double FinishedFiles::keep(const FileUnderWay &file, const QString &path) {
    // What was captured is more than what is in the file.
    const auto written = media::openAsset(QUrl::fromLocalFile(path));
    const double seconds = written ? written.value()->duration().seconds() : 0;
    if (file.item) {
        file.item->isRecording = false;
        file.item->setStatus({});
        file.item->setDuration(ToolString::stringFromDuration(seconds));
        mList.save(*file.item);
    }
    mJournal.settle(path);
    return seconds;
}

void FinishedFiles::moved(FileUnderWay &file, const QString &path) {
    mJournal.end(file.path);
    (void)mJournal.begin(path); // ended like that of any file
    if (file.item)
        file.item->setFileName(path);
    mView.recordingEndsEarly(kFolderRemoved(file.path, QFileInfo(path).path()));
    file.path = path;
}

} // namespace cantorel
