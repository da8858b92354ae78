#include "editor/playback/ZQAudioPlayer.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace cantorel {

namespace {

constexpr std::chrono::milliseconds kObserved{100};

} // namespace

void ZQAudioPlayer::prepareForPlayWithAsset(media::AssetPointer asset, std::function<void()> completeHandler) {
    clear();
    QMetaObject::invokeMethod(
        this,
        [this, asset = std::move(asset), completeHandler = std::move(completeHandler), generation = mGeneration] {
            if (generation != mGeneration || !asset->isPlayable() || asset->hasProtectedContent())
                return;
            open(asset);
            if (mPlayer && completeHandler)
                completeHandler();
        },
        Qt::QueuedConnection);
}

void ZQAudioPlayer::open(const media::AssetPointer &asset) {
    auto player = media::Player::open(asset);
    if (!player)
        return;
    mPlayer = std::move(player).value();
    mPlayer->finished = [this](bool completely) { ended(completely); };
    mSought = {0, asset->duration().timescale};
}

void ZQAudioPlayer::clear() {
    ++mGeneration;
    mObserver.reset();
    mPlayer.reset();
    mSought = {};
    show(mShown, false);
}

double ZQAudioPlayer::duration() const { return mPlayer ? mPlayer->duration() : 0; }

double ZQAudioPlayer::currentTime() const { return static_cast<float>(currentMediaTime().seconds()); }

media::MediaTime ZQAudioPlayer::currentMediaTime() const {
    if (!mPlayer || !mPlayer->hasMoved())
        return mSought;
    return {std::llround(mPlayer->currentTime() * mSought.timescale), mSought.timescale};
}

void ZQAudioPlayer::play() {
    mObserver.reset();
    if (mPlayer && mPlayer->play())
        mObserver = mClock.every(kObserved, [this] { _updateCurrentPlayTime(); });
    _updateCurrentPlayTime();
}

void ZQAudioPlayer::pause() {
    mObserver.reset();
    if (mPlayer)
        mPlayer->pause();
    _updateCurrentPlayTime();
}

void ZQAudioPlayer::stop() {
    mObserver.reset();
    if (mPlayer)
        mPlayer->pause();
    show(mShown, false);
    setCurrentPlayTime(0);
}

void ZQAudioPlayer::setCurrentPlayTime(double seconds) {
    if (!mPlayer)
        return;
    mSought.value = static_cast<std::int64_t>(mSought.timescale * std::clamp(seconds, 0.0, mPlayer->duration()));
    mPlayer->seek(mSought.seconds());
    _updateCurrentPlayTime();
}

void ZQAudioPlayer::_updateCurrentPlayTime() {
    if (!isPlaying() && !mObserver) // Its end is told apart from this.
        show(mShown, false);
    delegate->AudioPlayerDelegate_UpdateCurrentPlayingTime(currentTime());
}

void ZQAudioPlayer::ended(bool completely) {
    if (!completely) // it can go on from there
        return pause();
    if (mShown == Shown::PlayingCuts) // The delegate may seek the next selection, or stop.
        delegate->AudioPlayerDelegate_UpdateCurrentPlayingTime(duration());
    if (mShown == Shown::PlayingCuts && mPlayer && !mPlayer->hasMoved())
        play(); // with the selection that was sought
    else
        stop();
}

bool ZQAudioPlayer::toggle(Shown what) {
    show(what, mShown != what);
    return mShown == what;
}

void ZQAudioPlayer::show(Shown what, bool isOn) {
    const Shown shown = isOn ? what : mShown == what ? Shown::Stopped : mShown;
    if (std::exchange(mShown, shown) != shown)
        Q_EMIT stateChanged();
}

void ZQAudioPlayer::setPlayButtonEnable(bool isEnabled) {
    if (std::exchange(mIsPlayEnabled, isEnabled) != isEnabled)
        Q_EMIT stateChanged();
}

void ZQAudioPlayer::setCutsPlayButtonEnable(bool isEnabled) {
    if (std::exchange(mIsCutsPlayEnabled, isEnabled) != isEnabled)
        Q_EMIT stateChanged();
}

} // namespace cantorel
