#include "editor/ZQAudioEditorManager.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace cantorel {

namespace {

constexpr double kLead = 0.05; // of the view, in front of a head that it was turned to

} // namespace

// The selections.

void ZQAudioEditorManager::cutsDidChange() {
    nameParts();
    mPlayer.setCutsPlayButtonEnable(isReady() && mPlayer.isPrepared() && !mCuts.isEmpty());
    Q_EMIT cutsChanged();
    Q_EMIT stateChanged();
}

// While it plays, by where it plays; else by what has the focus.
bool ZQAudioEditorManager::canAdd() const {
    if (!isReady() || mGeometry.audioDuration() == 0)
        return false;
    return !mPlayer.isPlaying() || std::none_of(mCuts.all().begin(), mCuts.all().end(), [this](const auto &entity) {
        return mPlayTime >= entity->startTime() && mPlayTime <= entity->endTime();
    });
}

bool ZQAudioEditorManager::canDelete() const { return isReady() && getFocusOnCutEntity(); }

bool ZQAudioEditorManager::canType() const { return isReady() && !mCuts.isEmpty(); }

void ZQAudioEditorManager::addNewCutEntity() {
    if (!canAdd())
        return;
    remember();
    showHead();
    mCuts.add(currentPlayingPoint().x());
    cutsDidChange();
}

void ZQAudioEditorManager::deleteFocusOnEntity_() {
    if (!canDelete())
        return;
    remember();
    mCuts.removeFocusOn();
    if (mCuts.isEmpty() && mPlayer.isPlaying())
        mPlayer.stop();
    cutsDidChange();
}

void ZQAudioEditorManager::clearAllSelectedCutEntitys() {
    if (!canClear())
        return;
    remember();
    resetAudioCutInfo_();
    if (mPlayer.isPlaying())
        mPlayer.stop();
    cutsDidChange();
}

void ZQAudioEditorManager::focusNeighbour(int step) {
    if (mCuts.isEmpty())
        return;
    const auto *focused = getFocusOnCutEntity();
    const auto count = static_cast<int>(mCuts.all().size());
    const int wanted = focused ? static_cast<int>(mCuts.indexOf(focused)) + step : step > 0 ? 0 : count - 1;
    mCuts.focus(mCuts.all()[static_cast<std::size_t>(std::clamp(wanted, 0, count - 1))].get());
    cutsDidChange();
}

void ZQAudioEditorManager::moveEdgeToHead(CutList::Edge edge) {
    if (!getFocusOnCutEntity())
        return;
    const double wanted = std::round(mPlayTime * 1000) / 1000;
    AudioCutInfoDelegate_UpdateSelectedCutEntityStartTime(
        wanted, wanted, edge == CutList::Edge::Start ? kStartTimeControl : kEndTimeControl);
}

void ZQAudioEditorManager::AudioCutInfoDelegate_UpdateSelectedCutEntityStartTime(double startTime, double endTime,
                                                                                 const char *timeControlID) {
    if (!isReady())
        return;
    const bool isStart = std::strcmp(timeControlID, kStartTimeControl) == 0;
    remember(timeControlID);
    mCuts.setTime(isStart ? CutList::Edge::Start : CutList::Edge::End, isStart ? startTime : endTime);
    cutsDidChange(); // which shows the field what was kept
}

CutHit ZQAudioEditorManager::AudioCutRequestDelegate_MouseDown(QPointF point, ZQAudioCutEntity *&selectedCutEntity) {
    selectedCutEntity = nullptr;
    if (!isReady())
        return CutHit::None;
    const CutHit hit = mCuts.hit(point, selectedCutEntity);
    mCuts.focus(selectedCutEntity);
    mHistory.endChange();
    cutsDidChange();
    return hit;
}

CutHit ZQAudioEditorManager::AudioCutRequestDelegate_MouseMove(QPointF point) {
    ZQAudioCutEntity *entity = nullptr;
    return isReady() ? mCuts.hit(point, entity) : CutHit::None;
}

void ZQAudioEditorManager::dragEdge(ZQAudioCutEntity &entity, CutHit edge, double x) {
    remember(&entity);
    mCuts.dragEdge(entity, edge, x);
    Q_EMIT cutsChanged();
}

void ZQAudioEditorManager::dragDidEnd() {
    mHistory.endChange();
    cutsDidChange();
}

void ZQAudioEditorManager::waveSizeDidChange(QSizeF size) {
    if (mGeometry.setSize(size))
        viewDidChange();
}

void ZQAudioEditorManager::viewDidChange() {
    mCuts.rebuild();
    Q_EMIT waveChanged();
    Q_EMIT cutsChanged();
    Q_EMIT headMoved();
}

// What is looked at.

bool ZQAudioEditorManager::canZoom(double factor) const {
    return isReady() && (factor < 1 ? mGeometry.zoom() > 1 : mGeometry.zoom() < mGeometry.mostZoom());
}

void ZQAudioEditorManager::zoom(double factor, std::optional<double> aboutX) {
    if (!canZoom(factor))
        return;
    const double middle = mGeometry.viewStart() + mGeometry.viewSeconds() / 2;
    const double about = aboutX                      ? mGeometry.transformTimeWithPoint({*aboutX, 0})
                         : mGeometry.sees(mPlayTime) ? mPlayTime
                                                     : middle;
    if (mGeometry.zoomAbout(about, factor))
        viewDidChange();
}

void ZQAudioEditorManager::scrollTo(double seconds) {
    if (isReady() && mGeometry.setView(seconds, mGeometry.zoom()))
        viewDidChange();
}

void ZQAudioEditorManager::showHead() {
    if (!mGeometry.sees(mPlayTime))
        scrollTo(mPlayTime - kLead * mGeometry.viewSeconds());
}

// What lies between silences.

void ZQAudioEditorManager::showBetweenSilences(double decibels, double leastSeconds) {
    if (!canFind())
        return;
    if (!mSearch)
        mSearch.emplace(SilenceFinder(mReader.audioWaveData(), mAsset->duration().seconds()), mCuts.ranges());
    mSearch->found = mSearch->finder.find(decibels, leastSeconds);
    showRanges(mSearch->found.sound.isEmpty() ? mSearch->before : mSearch->found.sound);
}

void ZQAudioEditorManager::acceptFound() {
    const bool isFound = mSearch && !mSearch->found.sound.isEmpty();
    if (isFound)
        mHistory.remember(now(), nullptr);
    mSearch.reset();
    if (isFound)
        Q_EMIT stateChanged();
}

void ZQAudioEditorManager::dropFound() {
    if (const auto search = std::exchange(mSearch, {}))
        showRanges(search->before);
}

// Undo.

EditStep ZQAudioEditorManager::now() const {
    return {mAsset,          mSourceURL,
            mName,           mSearch ? mSearch->before : mCuts.ranges(),
            mPlayTime,       mGeometry.viewStart(),
            mGeometry.zoom()};
}

void ZQAudioEditorManager::remember(const void *what) {
    acceptFound();
    mHistory.remember(now(), what);
}

void ZQAudioEditorManager::undo() {
    if (!canUndo())
        return;
    if (mSearch)
        dropFound();
    else
        go(mHistory.undo(now()));
}

void ZQAudioEditorManager::redo() {
    if (!canRedo())
        return;
    dropFound();
    go(mHistory.redo(now()));
}

void ZQAudioEditorManager::go(const EditStep &step) {
    if (isReady() && step.asset == mAsset)
        return showRanges(step.cuts);
    mWanted = step;
    mSourceURL = step.url;
    if (step.asset && step.asset->url().isEmpty())
        editaudioWithCompositionAsset(step.asset, step.name);
    else
        open(step.url);
}

void ZQAudioEditorManager::showRanges(const QList<CutList::Range> &ranges) {
    mCuts.setRanges(ranges);
    if (mCuts.isEmpty() && mPlayer.isPlaying())
        mPlayer.stop();
    cutsDidChange();
}

} // namespace cantorel
