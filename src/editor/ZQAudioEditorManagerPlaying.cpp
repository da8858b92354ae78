#include "editor/ZQAudioEditorManager.h"

#include <algorithm>

namespace cantorel {

// Playing.

void ZQAudioEditorManager::playOrPause() {
    if (!mPlayer.isPlayButtonEnabled())
        return;
    mPlayUntil.reset();
    if (mPlayer.Play_())
        mPlayer.play();
    else
        mPlayer.pause();
}

void ZQAudioEditorManager::playCuts() {
    if (!mPlayer.isCutsPlayButtonEnabled())
        return;
    mPlayUntil.reset();
    if (mPlayer.getCutsPlayButtonState()) {
        mPlayer.CutsPlay_();
        return mPlayer.pause();
    }
    playNextCutEntity();
    mPlayer.CutsPlay_();
    mPlayer.play();
}

void ZQAudioEditorManager::playCut(QPointF point) {
    ZQAudioCutEntity *entity = nullptr;
    if (!mPlayer.isPlayButtonEnabled() || mCuts.hit(point, entity) == CutHit::None)
        return;
    AudioPlayControlDelegate_ResetPlayCurrentTime(entity->startTime());
    mPlayer.setPlayButtonState(true);
    mPlayer.play();
    mPlayUntil = entity->endTime();
}

void ZQAudioEditorManager::stopPlayback() {
    if (mPlayer.isPlaying())
        mPlayer.pause();
}

void ZQAudioEditorManager::AudioPlayControlDelegate_ResetPlayCurrentTime(double seconds) {
    const double wanted = std::clamp(seconds, 0.0, std::max<double>(mPlayer.duration(), mGeometry.audioDuration()));
    mPlayUntil.reset();
    if (mPlayer.isPrepared())
        mPlayer.setCurrentPlayTime(wanted); // which tells the time
    else
        moveHead(wanted);
    showHead();
}

void ZQAudioEditorManager::AudioPlayingPointDelegate_updateThePlayingPoint(QPointF point) {
    if (isReady())
        AudioPlayControlDelegate_ResetPlayCurrentTime(mGeometry.transformTimeWithPoint(point));
}

// The view turns a page with a head that was seen.
void ZQAudioEditorManager::moveHead(double seconds) {
    const bool wasSeen = mGeometry.sees(mPlayTime);
    mPlayTime = seconds;
    if (wasSeen)
        showHead();
    Q_EMIT headMoved();
}

void ZQAudioEditorManager::AudioPlayerDelegate_UpdateCurrentPlayingTime(double) {
    moveHead(mPlayer.currentMediaTime().seconds()); // to the frame, which single precision is not
    if (mPlayer.getCutsPlayButtonState())
        playNextCutEntity();
    else if (mPlayUntil && mPlayTime >= *mPlayUntil) {
        mPlayUntil.reset();
        mPlayer.pause();
    }
    Q_EMIT stateChanged();
}

// Between selections it goes on with the next; behind the end of the sound with the first.
void ZQAudioEditorManager::playNextCutEntity() {
    const auto all = mCuts.pointers();
    if (all.empty())
        return mPlayer.stop();
    const media::MediaTime time = mPlayer.currentMediaTime();
    const ZQAudioCutEntity *current = nullptr, *next = nullptr;
    ZQAudioTools::getCurrentPlayingEntity(current, next, time.seconds(), 0, all, time.timescale);
    const bool isAtEnd = mAsset && !(time < mAsset->duration().in(time.timescale));
    if (isAtEnd)
        next = all.front();
    if (next && (!current || isAtEnd))
        mPlayer.setCurrentPlayTime(next->startTime());
}

} // namespace cantorel
