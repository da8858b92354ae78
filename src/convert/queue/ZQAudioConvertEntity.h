#pragma once

#include "convert/ConvertPreset.h"
#include "platform/foundation/Sentence.h"

#include <QObject>
#include <QString>
#include <QUrl>

#include <stop_token>

namespace cantorel {

class ConvertWorkers;
class ZQAudioConvertEntity;

// The numbers are those of the list's status column.
enum class ConvertStatus { None = 0, Waiting = 1, Converting = 2, Completed = 3, Failed = 4 };

// What a row tells its owner. Main thread.
class ConvertEntityDelegate {
public:
    virtual ~ConvertEntityDelegate() = default;
    virtual void EntityDelegateReadMedaInfoDone(ZQAudioConvertEntity &entity,
                                                bool forSuccess) = 0; // Spelling is fixed.
    virtual void EntityDelegateStartConvert(ZQAudioConvertEntity &entity) = 0;
    virtual void EntityDelegateUpdateConvertForProgress(ZQAudioConvertEntity &entity, double progress) = 0;
    virtual void EntityDelegateUpdateConvertForSuccess(ZQAudioConvertEntity &entity, bool success) = 0;
};

// One file of the conversion queue: reads its media information as soon as it is made, and performs its own conversion.
// Owned by the manager, whose workers it uses; main thread.
class ZQAudioConvertEntity : public QObject {
public:
    // Which file stood at a path, by what a file system tells of it.
    struct FileStamp {
        quint64 device = 0, number = 0;
        qint64 bytes = 0, changed = 0; // changed: nanoseconds

        static FileStamp of(const QString &path);
        bool operator==(const FileStamp &) const = default;
    };

    ZQAudioConvertEntity(const QUrl &fileURL, const QString &converter, ConvertEntityDelegate &delegate,
                         ConvertWorkers &readers);
    // Ends what it has under way.
    ~ZQAudioConvertEntity() override;

    const QUrl &fileURL() const { return mFileURL; }
    QString filePath() const { return mFileURL.toLocalFile(); }
    QString fileName() const { return mFileName; }       // without its extension
    QString fileType() const { return mFileType; }       // as it is shown: "MP3"
    QString fileSize() const { return mFileSize; }       // as it is shown; empty until read
    QString duration() const { return mDuration; }       // "hh:mm:ss"; "0" until read, and where the file tells none
    int seconds() const;                                 // the same as a number
    bool isReading() const { return mIsReading; }        // its media information
    QString outputPath() const { return mOutputPath; }   // empty before, and once its file has been joined
    double convertProgress() const { return mProgress; } // 0 to 100
    ConvertStatus convertStatus() const { return mStatus; }
    // Why it failed, or why its information could not be read; empty otherwise.
    const foundation::Sentence &failure() const { return mFailure; }

    // Waits for its turn.
    void startConvert();
    // Converts on a thread of the workers, and tells how that went. The output is what it was asked to be when it is
    // whole; a ringtone bears its extension then where it is not to be joined.
    void convertWithPreset(const ConvertPreset &preset, const QString &toOutputFolder, ConvertWorkers &convertTask,
                           bool isToBeJoined);
    // Ends its conversion, or its wait.
    void cancel();
    // The result is still the file that the conversion made.
    bool hasItsOutput() const { return !mOutputPath.isEmpty() && FileStamp::of(mOutputPath) == mOutputStamp; }
    void forgetOutput() { mOutputPath.clear(); }

private:
    void asyncParseAudioInfo(ConvertWorkers &readers);
    void finish(ConvertStatus status, const foundation::Sentence &failure);

    const QUrl mFileURL;
    const QString mConverter;
    ConvertEntityDelegate &mDelegate;
    const QString mFileName, mFileType;
    QString mFileSize;
    QString mDuration = QStringLiteral("0");
    bool mIsReading = true;
    QString mOutputPath;
    FileStamp mOutputStamp;
    double mProgress = 0;
    ConvertStatus mStatus = ConvertStatus::None;
    foundation::Sentence mFailure;
    std::stop_source mReading, mConverting;
};

} // namespace cantorel
