#pragma once

#include "editor/MVMediaEntity.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/WeakDelegate.h"
#include "platform/media/asset/Asset.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>
#include <QUrl>
#include <QVariantMap>

#include <cstdint>
#include <memory>
#include <optional>
#include <thread>

namespace cantorel {

class LevelReading;
class LevelSeries;

// Hears of a reading, on the main thread.
class AudioReadingDelegate {
public:
    virtual ~AudioReadingDelegate() = default;
    virtual void AudioReadingDelegate_BeginReading() {}
    virtual void AudioReadingDelegate_ReadingProgress(double /*progress*/) {} // never sent by a reading
    // It is over. Where nothing could be read, failure() says why.
    virtual void AudioReadingDelegate_EndReading() {}
    // It is over as well, and EndReading deliberately does not come.
    virtual void AudioReadingDelegate_ReadingFailed(const foundation::Sentence & /*why*/) {}
};

// Hears of the file that was read.
class AudioInfoDelegate {
public:
    virtual ~AudioInfoDelegate() = default;
    virtual void AudioInfoDelegate_AudioEntity(MVMusicEntity * /*entity*/) {} // null for what is no single file
};

// Opens the sound that is to be edited and reduces it, on a thread of its own, to its series of levels. What an earlier
// reading still tells once another was begun is dropped. Main thread.
class ZQAudioReader : public QObject {
public:
    foundation::WeakDelegate<AudioReadingDelegate> readingDelegate;
    foundation::WeakDelegate<AudioInfoDelegate> infoDelegate;

    ZQAudioReader();
    // Keeps long series in that folder.
    explicit ZQAudioReader(QString levelsFolder);
    ~ZQAudioReader() override;

    // What is no file of this machine changes nothing. Reads no samples.
    void setAudioURL(const QUrl &url);
    // Sound that no single file holds: url and tags are empty.
    void setAudioAsset(const media::AssetPointer &asset);
    QUrl audioURL() const { return mAudioURL; }
    // Opened by the reading, or else by the first who asks. Null where it can't be.
    media::AssetPointer audioAsset() const;
    // Signed 16-bit values, little-endian, one for each group of frames. Valid up to the next reading.
    QByteArray audioWaveData() const { return mAudioWaveData; }

    QString title() const;
    QString artist() const;
    QString album() const;
    QString type() const;
    QByteArray image() const;
    int rating() const;
    double duration() const;       // deliberately in whole seconds: what places times on the wave relies on it
    std::int64_t fileSize() const; // bytes of the sound alone

    static QVariantMap audioReaderOutputSettings();
    static QList<media::SoundFormat> audioFormatInfosFromAudioAsset(const media::Asset &asset);
    // The last one wins; what none tells stays as it is.
    static void readAudioSampleRate(std::int32_t &rate, std::int32_t &channelCount,
                                    const QList<media::SoundFormat> &FromAudioFormats);
    static foundation::Result<std::unique_ptr<media::SampleReader>>
    initReaderWithAudioAsset(const media::AssetPointer &asset);

    // One that runs is cancelled.
    void beginReading();
    // Nothing more is told of the one that runs, and it ends soon.
    void cancel();
    bool isReading() const { return mIsReading; }
    // From 0 to 1.
    double progress() const;
    // What is there of the series of a reading that runs; valid up to the next reading.
    QByteArray preview() const;
    // Why the last reading gave no series.
    const std::optional<foundation::Failure> &failure() const { return mFailure; }

    void performDelegateMethodOnMain_BeginReading();
    void performDelegateMethodOnMain_ReadingProgress(const QVariantMap &dictionary);
    void performDelegateMethodOnMain_EndReading();

private:
    struct Reading; // what its thread and the main thread share
    struct Ending;  // how it has ended

    static Ending readAudioWave(const std::stop_token &stop, Reading &reading);
    void end(const Reading &reading, const Ending &ending);

    const QString mLevelsFolder;
    QUrl mAudioURL;
    std::unique_ptr<MVMusicEntity> mAudioEntity;
    // Nothing: not opened yet.
    mutable std::optional<foundation::Result<media::AssetPointer>> mAudioAsset;
    QByteArray mAudioWaveData;
    std::shared_ptr<LevelSeries> mSeries; // which it shows
    std::optional<foundation::Failure> mFailure;
    bool mIsReading = false;
    std::shared_ptr<Reading> mReading;
    std::jthread mThread; // last, so that it ends first
};

} // namespace cantorel
