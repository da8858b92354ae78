#include "convert/queue/ZQAudioConvertEntity.h"

#include "convert/AudioConverter.h"
#include "convert/queue/ConvertWorkers.h"
#include "settings/AppSettings.h"
#include "util/ToolFile.h"
#include "util/tools/Tools.h"

#include <QFile>
#include <QPointer>

#include <sys/stat.h>

namespace cantorel {

ZQAudioConvertEntity::FileStamp ZQAudioConvertEntity::FileStamp::of(const QString &path) {
    struct stat found {};
    if (::lstat(QFile::encodeName(path).constData(), &found) != 0)
        return {};
    return {found.st_dev, found.st_ino, found.st_size, found.st_mtim.tv_sec * 1'000'000'000 + found.st_mtim.tv_nsec};
}

ZQAudioConvertEntity::ZQAudioConvertEntity(const QUrl &fileURL, const QString &converter,
                                           ConvertEntityDelegate &delegate, ConvertWorkers &readers)
    : mFileURL(fileURL),
      mConverter(converter),
      mDelegate(delegate),
      mFileName(ToolFile::fileNameAtPath(filePath())),
      mFileType(ToolFile::fileExtensionAtPath(filePath()).toUpper()) {
    asyncParseAudioInfo(readers);
}

ZQAudioConvertEntity::~ZQAudioConvertEntity() {
    mReading.request_stop();
    mConverting.request_stop();
}

int ZQAudioConvertEntity::seconds() const { return Tools::getSecondsFromString(mDuration); }

void ZQAudioConvertEntity::asyncParseAudioInfo(ConvertWorkers &readers) {
    readers.start([&readers, file = filePath(), converter = Converter{mConverter, {}, mReading.get_token()},
                   row = QPointer(this)] {
        if (converter.stop.stop_requested())
            return;
        const auto read = AudioConverter::readMediaInformation(file, converter);
        readers.tell([row, read, size = Tools::getFileSizeStringFromFileName(file)] {
            if (!row)
                return;
            row->mIsReading = false;
            row->mFileSize = size;
            if (read)
                row->mDuration = read.value().duration;
            else if (row->mStatus == ConvertStatus::None)
                row->mFailure = read.failure().sentence;
            row->mDelegate.EntityDelegateReadMedaInfoDone(*row, read.ok());
        });
    });
}

void ZQAudioConvertEntity::startConvert() {
    mProgress = 0;
    mStatus = ConvertStatus::Waiting;
    mOutputPath.clear();
    mFailure = {};
    mConverting = {};
    mDelegate.EntityDelegateStartConvert(*this);
}

void ZQAudioConvertEntity::convertWithPreset(const ConvertPreset &preset, const QString &toOutputFolder,
                                             ConvertWorkers &convertTask, bool isToBeJoined) {
    mStatus = ConvertStatus::Converting;
    convertTask.start([&convertTask, file = FileToConvert{filePath(), toOutputFolder, preset, seconds()}, isToBeJoined,
                       converter = Converter{mConverter, {}, mConverting.get_token()}, row = QPointer(this)] {
        auto made = AudioConverter::convertFile(file, converter, [&](double percent) {
            convertTask.tell([row, percent] {
                if (!row || row->mStatus != ConvertStatus::Converting || percent <= row->mProgress)
                    return;
                row->mProgress = percent;
                row->mDelegate.EntityDelegateUpdateConvertForProgress(*row, percent);
            });
        });
        if (made && file.preset.isRingtone() && !isToBeJoined) {
            // Where it can't be renamed it keeps the name that it has.
            const QString renamed = AppSettings::changeFileToExtension(file.preset.format, made.value());
            made = renamed.isEmpty() ? made.value() : renamed;
        }
        convertTask.tell([row, made, stamp = made ? FileStamp::of(made.value()) : FileStamp()] {
            if (!row)
                return;
            if (made) {
                row->mOutputPath = made.value();
                row->mOutputStamp = stamp;
            }
            row->finish(made ? ConvertStatus::Completed : ConvertStatus::Failed,
                        made ? foundation::Sentence() : made.failure().sentence);
        });
    });
}

void ZQAudioConvertEntity::cancel() {
    if (mStatus == ConvertStatus::Converting)
        mConverting.request_stop(); // Its end is told by its worker.
    else if (mStatus == ConvertStatus::Waiting)
        finish(ConvertStatus::Failed, kConvertStopped());
}

void ZQAudioConvertEntity::finish(ConvertStatus status, const foundation::Sentence &failure) {
    mStatus = status;
    mFailure = failure;
    if (status == ConvertStatus::Completed)
        mProgress = 100;
    mDelegate.EntityDelegateUpdateConvertForSuccess(*this, status == ConvertStatus::Completed);
}

} // namespace cantorel
