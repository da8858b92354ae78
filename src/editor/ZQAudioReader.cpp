#include "editor/ZQAudioReader.h"

#include "editor/levels/GroupMeans.h"
#include "editor/levels/LevelReading.h"
#include "editor/levels/StoredLevels.h"
#include "log/CommLog.h"
#include "log/GuardedAction.h"
#include "platform/foundation/SearchPaths.h"
#include "platform/media/asset/AssetFailures.h"
#include "platform/media/asset/OpenAsset.h"

#include <pthread.h>

#include <mutex>
#include <utility>

namespace cantorel {

namespace {

constexpr const char *kProgressKey = "audioReadingProgress";
constexpr const char *kNoDuration = "read audio file duration failed.";

} // namespace

struct ZQAudioReader::Reading {
    const QUrl url;
    const std::optional<foundation::Result<media::AssetPointer>> asset; // where it was opened before
    const QString levelsFolder;

    mutable std::mutex mutex;
    std::shared_ptr<LevelReading> levels; // once it has begun
};

struct ZQAudioReader::Ending {
    enum { EndsReading, Fails, IsCancelled } kind = EndsReading;
    std::optional<foundation::Result<media::AssetPointer>> asset = {};
    std::shared_ptr<LevelSeries> series = {};
    std::optional<foundation::Failure> failure = {};
};

ZQAudioReader::ZQAudioReader() : ZQAudioReader(foundation::stateFolder() + QStringLiteral("/cantorel/levels")) {}

ZQAudioReader::ZQAudioReader(QString levelsFolder) : mLevelsFolder(std::move(levelsFolder)) {}

ZQAudioReader::~ZQAudioReader() { cancel(); }

void ZQAudioReader::setAudioURL(const QUrl &url) {
    if (!url.isLocalFile())
        return;
    cancel();
    mAudioURL = url;
    mAudioEntity = std::make_unique<MVMusicEntity>(url);
    mAudioAsset.reset();
}

void ZQAudioReader::setAudioAsset(const media::AssetPointer &asset) {
    cancel();
    mAudioURL = asset ? asset->url() : QUrl();
    mAudioEntity = mAudioURL.isLocalFile() ? std::make_unique<MVMusicEntity>(mAudioURL) : nullptr;
    mAudioAsset = asset;
}

media::AssetPointer ZQAudioReader::audioAsset() const {
    if (!mAudioAsset && mAudioURL.isLocalFile())
        mAudioAsset = media::openAsset(mAudioURL);
    return mAudioAsset && mAudioAsset->ok() ? mAudioAsset->value() : nullptr;
}

QString ZQAudioReader::title() const { return mAudioEntity ? mAudioEntity->title() : QString(); }

QString ZQAudioReader::artist() const { return mAudioEntity ? mAudioEntity->artist() : QString(); }

QString ZQAudioReader::album() const { return mAudioEntity ? mAudioEntity->album() : QString(); }

QString ZQAudioReader::type() const { return mAudioEntity ? mAudioEntity->type() : QString(); }

QByteArray ZQAudioReader::image() const { return mAudioEntity ? mAudioEntity->image() : QByteArray(); }

int ZQAudioReader::rating() const { return mAudioEntity ? mAudioEntity->rating : 0; }

double ZQAudioReader::duration() const {
    const media::AssetPointer asset = audioAsset();
    return asset ? static_cast<double>(asset->duration().wholeSeconds()) : 0;
}

std::int64_t ZQAudioReader::fileSize() const {
    const media::AssetPointer asset = audioAsset();
    return asset ? asset->soundBytes() : 0;
}

QVariantMap ZQAudioReader::audioReaderOutputSettings() {
    return {{QStringLiteral("AVFormatIDKey"), QStringLiteral("kAudioFormatLinearPCM")},
            {QStringLiteral("AVLinearPCMBitDepthKey"), 16},
            {QStringLiteral("AVLinearPCMIsBigEndianKey"), false},
            {QStringLiteral("AVLinearPCMIsFloatKey"), false},
            {QStringLiteral("AVLinearPCMIsNonInterleaved"), false}};
}

QList<media::SoundFormat> ZQAudioReader::audioFormatInfosFromAudioAsset(const media::Asset &asset) {
    return asset.format().channels > 0 ? QList{asset.format()} : QList<media::SoundFormat>();
}

void ZQAudioReader::readAudioSampleRate(std::int32_t &rate, std::int32_t &channelCount,
                                        const QList<media::SoundFormat> &FromAudioFormats) {
    for (const media::SoundFormat &format : FromAudioFormats) {
        rate = format.rate;
        channelCount = format.channels;
    }
}

foundation::Result<std::unique_ptr<media::SampleReader>>
ZQAudioReader::initReaderWithAudioAsset(const media::AssetPointer &asset) {
    return asset->openSampleReader();
}

void ZQAudioReader::beginReading() {
    cancel();
    mThread = {}; // the one before ends soon
    mAudioWaveData.clear();
    mSeries.reset();
    mFailure.reset();
    mIsReading = true;
    mReading.reset(new Reading{mAudioURL, mAudioAsset, mLevelsFolder, {}, {}});
    mThread = std::jthread([this, reading = mReading](const std::stop_token &stop) {
        pthread_setname_np(pthread_self(), "audio-reader");
        // This outlives its thread; what another reading has overtaken is not told.
        const auto tell = [this, reading](auto &&what) {
            QMetaObject::invokeMethod(
                this,
                [this, reading, what = std::forward<decltype(what)>(what)] {
                    if (reading == mReading && mIsReading)
                        what();
                },
                Qt::QueuedConnection);
        };
        tell([this] { performDelegateMethodOnMain_BeginReading(); });
        Ending ending;
        if (!guarded("audioReadingInNewThread", [&] { ending = readAudioWave(stop, *reading); }))
            ending = {Ending::Fails, {}, {}, media::failures::notSound(reading->url.fileName(), {})};
        if (ending.kind != Ending::IsCancelled)
            tell([this, reading, ending] { end(*reading, ending); });
    });
}

ZQAudioReader::Ending ZQAudioReader::readAudioWave(const std::stop_token &stop, Reading &reading) {
    Ending ending;
    ending.asset = reading.asset;
    if (!ending.asset)
        ending.asset = media::openAsset(reading.url);
    if (!ending.asset->ok())
        ending.failure = ending.asset->failure();
    const media::AssetPointer asset = ending.asset->ok() ? ending.asset->value() : nullptr;
    const QString name = reading.url.fileName();
    if (!asset || !asset->isPlayable() || asset->hasProtectedContent()) {
        if (!ending.failure)
            ending.failure = media::failures::notSound(name, QStringLiteral("no sound that can be decoded"));
        return ending;
    }
    const auto fails = [&ending](const foundation::Failure &why) {
        ending.kind = Ending::Fails;
        ending.failure = why;
        return ending;
    };
    if (asset->duration().value < 0) {
        CommLog::E(QString::fromLatin1(kNoDuration));
        return fails(media::failures::notSound(name, QString::fromLatin1(kNoDuration)));
    }
    std::int32_t rate = 0, channels = 0;
    readAudioSampleRate(rate, channels, audioFormatInfosFromAudioAsset(*asset));
    if (rate <= 0 || channels <= 0)
        return fails(media::failures::notSound(name, QStringLiteral("no channels")));

    const StoredLevels stored(reading.levelsFolder);
    const QByteArray key = StoredLevels::keyOf(*asset);
    ending.series = stored.find(key, *asset);
    if (ending.series)
        return ending;
    const auto levels = std::make_shared<LevelReading>(asset, reading.levelsFolder);
    {
        const std::scoped_lock lock(reading.mutex);
        reading.levels = levels;
    }
    const auto done = levels->run(stop);
    if (stop.stop_requested())
        return {Ending::IsCancelled};
    if (!done)
        return fails(done.failure());
    ending.series = levels->series();
    stored.keep(key, *asset, *ending.series);
    return ending;
}

void ZQAudioReader::end(const Reading & /*reading*/, const Ending &ending) {
    mIsReading = false;
    if (ending.asset)
        mAudioAsset = ending.asset;
    mFailure = ending.failure;
    if (mFailure)
        CommLog::E(mFailure->detail);
    if (ending.kind == Ending::Fails) {
        readingDelegate->AudioReadingDelegate_ReadingFailed(mFailure->sentence);
        return;
    }
    mSeries = ending.series;
    mAudioWaveData = mSeries ? mSeries->bytes(mSeries->values().size()) : QByteArray();
    performDelegateMethodOnMain_EndReading();
}

void ZQAudioReader::cancel() {
    mThread.request_stop();
    mIsReading = false;
}

double ZQAudioReader::progress() const {
    if (!mReading)
        return 0;
    const std::scoped_lock lock(mReading->mutex);
    return mReading->levels ? mReading->levels->progress() : 0;
}

QByteArray ZQAudioReader::preview() const {
    if (!mReading)
        return {};
    const std::scoped_lock lock(mReading->mutex);
    return mReading->levels ? mReading->levels->preview() : QByteArray();
}

void ZQAudioReader::performDelegateMethodOnMain_BeginReading() { readingDelegate->AudioReadingDelegate_BeginReading(); }

void ZQAudioReader::performDelegateMethodOnMain_ReadingProgress(const QVariantMap &dictionary) {
    readingDelegate->AudioReadingDelegate_ReadingProgress(
        dictionary.value(QString::fromLatin1(kProgressKey)).toDouble());
}

void ZQAudioReader::performDelegateMethodOnMain_EndReading() {
    readingDelegate->AudioReadingDelegate_EndReading();
    infoDelegate->AudioInfoDelegate_AudioEntity(mAudioEntity.get());
}

} // namespace cantorel
