#include "editor/ZQAudioEditorManager.h"

#include "editor/levels/GroupMeans.h"
#include "editor/models/TimeField.h"
#include "lang/Lang.h"

#include <utility>

namespace cantorel {

namespace {

using namespace std::chrono_literals;

constexpr foundation::SentenceKey kNoSoundFile("ConvertNoSound", "FileName");

constexpr auto kBeforeKeeping = 500ms;
constexpr auto kAfterReading = 500ms, kPreviewInterval = 100ms;

// Without the dots that the text may end with.
QString withDots(QString text) {
    while (text.endsWith(QLatin1Char('.')) || text.endsWith(QChar(0x2026)))
        text.chop(1);
    return text + QStringLiteral("...");
}

} // namespace

ZQAudioEditorManager::ZQAudioEditorManager(foundation::Clock &clock, std::shared_ptr<KeptEdit> kept)
    : mClock(clock), mPlayer(clock), mKept(std::move(kept)) {
    mReader.readingDelegate = this;
    mPlayer.delegate = this;
    connect(&mPlayer, &ZQAudioPlayer::stateChanged, this, &ZQAudioEditorManager::stateChanged);
    for (const auto changed :
         {&ZQAudioEditorManager::stateChanged, &ZQAudioEditorManager::cutsChanged, &ZQAudioEditorManager::headMoved})
        connect(this, changed, this, &ZQAudioEditorManager::keepSoon);
}

ZQAudioEditorManager::~ZQAudioEditorManager() {
    ++mGeneration;
    mWorker.finish();
    if (isUnsaved())
        keep();
    else if (mKept && mAsset)
        mKept->forget();
}

void ZQAudioEditorManager::setState(State state) {
    mState = state;
    Q_EMIT stateChanged();
}

// What was to happen later for something else does not.
void ZQAudioEditorManager::after(std::chrono::milliseconds delay, std::function<void()> action) {
    mDelayed = mClock.after(delay, std::move(action));
}

QString ZQAudioEditorManager::progressText() const {
    switch (mState) {
    case State::Analysing:
        return withDots(Lang::commAnalyzing());
    case State::Exporting:
        return withDots(Lang::commExporting());
    case State::Completed:
        return Lang::commCompleted() + QLatin1Char('!');
    default:
        return {};
    }
}

double ZQAudioEditorManager::progress() const {
    return mState == State::Analysing ? mReader.progress() : mState == State::Exporting ? mAudioEditor->progress() : -1;
}

QString ZQAudioEditorManager::audioFileDuration() const {
    return TimeField::timeStringFormat(AudioDataRequestDelegate_getCurrentAudioDuration(), QStringLiteral("hh-mm-ss"));
}

// Opening.

void ZQAudioEditorManager::editAudioWithURL(const QUrl &url) {
    if (mState == State::Exporting)
        return;
    if (!url.isLocalFile()) { // before anything is lost
        refuse(url);
        return;
    }
    if (mState != State::Empty)
        remember();
    mWanted.reset();
    open(url);
}

void ZQAudioEditorManager::refuse(const QUrl &url) { Q_EMIT told(kNoSoundFile(url.fileName())); }

void ZQAudioEditorManager::open(const QUrl &url) {
    initStartEditSettings_();
    mReader.setAudioURL(url);
    mAsset = nullptr; // until the reading has opened it
    mSourceURL = url;
    mName = url.fileName();
    mAudioEditor = std::make_unique<ZQAudioEditor>(url);
    startAudioReading();
}

void ZQAudioEditorManager::editaudioWithCompositionAsset(media::AssetPointer asset, const QString &assetName) {
    initStartEditSettings_();
    mReader.setAudioAsset(asset);
    mAsset = asset;
    mName = assetName;
    mAudioEditor = std::make_unique<ZQAudioEditor>(std::move(asset));
    startAudioReading();
}

void ZQAudioEditorManager::DrageDelegate_SendTheDrageFileList(const QStringList &paths) {
    if (!paths.isEmpty())
        editAudioWithURL(QUrl::fromLocalFile(paths.constFirst()));
}

void ZQAudioEditorManager::initStartEditSettings_() {
    ++mGeneration;
    mDelayed.reset();
    mReader.cancel();
    initSettings();
}

void ZQAudioEditorManager::initSettings() {
    mSearch.reset();
    mCuts.clear();
    mPlayer.clear();
    mPlayer.setPlayButtonEnable(false);
    mPlayer.setCutsPlayButtonEnable(false);
    mPlayUntil.reset();
    mGeometry.addAudioDuration(0);
    mGeometry.addAudioWaveData({});
    mGeometry.setView(0, 1);
    moveHead(0);
    Q_EMIT waveChanged();
    Q_EMIT cutsChanged();
}

void ZQAudioEditorManager::startAudioReading() {
    mAudioEditor->exportDelegate = this;
    setState(State::Analysing);
    mReader.beginReading();
    mPreview = mClock.every(kPreviewInterval, [this] { showPreview(); });
}

// The wave is drawn as it comes, each part in its place.
void ZQAudioEditorManager::showPreview() {
    mGeometry.addAudioWaveData(mReader.preview(), mReader.progress());
    Q_EMIT waveChanged();
    Q_EMIT stateChanged();
}

void ZQAudioEditorManager::AudioReadingDelegate_EndReading() {
    if (const auto &failure = mReader.failure())
        return AudioReadingDelegate_ReadingFailed(failure->sentence);
    mPreview.reset();
    mAsset = mReader.audioAsset();
    mGeometry.addAudioWaveData(mReader.audioWaveData());
    Q_EMIT waveChanged();
    setState(State::Completed);
    after(kAfterReading, [this] { drawTheAudioWave(); });
}

void ZQAudioEditorManager::AudioReadingDelegate_ReadingFailed(const foundation::Sentence &why) {
    mPreview.reset();
    mWanted.reset();
    mTrouble = why;
    setState(State::Unreadable);
}

void ZQAudioEditorManager::drawTheAudioWave() {
    mGeometry.addAudioDuration(static_cast<std::int32_t>(mReader.duration()));
    mGeometry.setLevelsPerSecond(static_cast<double>(mAsset->format().rate) / kGroupFrames);
    mGeometry.addAudioWaveData(mReader.audioWaveData());
    mPlayer.prepareForPlayWithAsset(mAsset, [this] {
        mPlayer.setPlayButtonEnable(true);
        mPlayer.setCutsPlayButtonEnable(!mCuts.isEmpty());
        if (mPlayTime > 0)
            mPlayer.setCurrentPlayTime(mPlayTime);
    });
    resetAudioCutInfo_();
    if (const auto wanted = std::exchange(mWanted, {})) {
        mGeometry.setView(wanted->viewStart, wanted->zoom);
        mCuts.setRanges(wanted->cuts);
        moveHead(wanted->head);
    }
    setState(State::Ready);
    Q_EMIT waveChanged();
    cutsDidChange();
}

void ZQAudioEditorManager::resetAudioCutInfo_() {
    mCuts.clear();
    mPlayer.setCutsPlayButtonEnable(false);
}

void ZQAudioEditorManager::leave() {
    mPlayer.pause();
    mPreview.reset();
    if (mState == State::Analysing)
        mReader.cancel();
}

void ZQAudioEditorManager::comeBack() {
    if (mState == State::Analysing && !mReader.isReading())
        startAudioReading();
}

// Keeping.

// Not at each point of a movement, and not while it plays.
void ZQAudioEditorManager::keepSoon() {
    if (mKept && isReady() && !mPlayer.isPlaying() && !mKeeping)
        mKeeping = mClock.after(kBeforeKeeping, [this] {
            mKeeping.reset();
            if (isReady())
                keep();
        });
}

void ZQAudioEditorManager::keep() { mKept->keep(now()); }

// Something is lost if it is not kept: there are selections, or something was inserted, and both were not exported.
bool ZQAudioEditorManager::isUnsaved() const {
    if (!mKept || !mAsset || (mCuts.isEmpty() && !mAsset->url().isEmpty()))
        return false;
    return !mExported || mExported->asset != mAsset || mExported->cuts != now().cuts;
}

void ZQAudioEditorManager::continueLeft() {
    if (!mKept || mState == State::Exporting)
        return;
    mWorker.start([this, left = mKept->left(), generation = mGeneration]() mutable {
        auto step = KeptEdit::opened(std::exchange(left, {}));
        QMetaObject::invokeMethod(this, [this, generation, step = std::move(step)] {
            if (generation != mGeneration)
                return;
            if (!step) {
                Q_EMIT told(step.failure().sentence);
                return;
            }
            mKept->didContinue();
            go(step.value());
        });
    });
}

} // namespace cantorel
