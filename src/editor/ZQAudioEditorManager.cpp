#include "editor/ZQAudioEditorManager.h"

#include "editor/levels/GroupMeans.h"
#include "editor/models/TimeField.h"
#include "lang/Lang.h"
#include "platform/media/asset/OpenAsset.h"
#include "settings/AppSettings.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <utility>

namespace cantorel {

namespace {

using namespace std::chrono_literals;

constexpr foundation::SentenceKey kNoSoundFile("ConvertNoSound", "FileName");

constexpr double kLead = 0.05; // of the view, in front of a head that it was turned to

constexpr auto kBeforeKeeping = 500ms;
constexpr auto kAfterReading = 500ms, kBeforeExport = 250ms, kAfterExport = 250ms, kPreviewInterval = 100ms;

// Without the dots that the text may end with.
QString withDots(QString text) {
    while (text.endsWith(QLatin1Char('.')) || text.endsWith(QChar(0x2026)))
        text.chop(1);
    return text + QStringLiteral("...");
}

} // namespace

ZQAudioEditorManager::ZQAudioEditorManager(foundation::Clock &clock, std::shared_ptr<KeptEdit> kept)
    : mClock(clock), mPlayer(clock), mKept(std::move(kept)) {
    mWorker.setMaxThreadCount(1);
    mReader.readingDelegate = this;
    mPlayer.delegate = this;
    connect(&mPlayer, &ZQAudioPlayer::stateChanged, this, &ZQAudioEditorManager::stateChanged);
    for (const auto changed :
         {&ZQAudioEditorManager::stateChanged, &ZQAudioEditorManager::cutsChanged, &ZQAudioEditorManager::headMoved})
        connect(this, changed, this, &ZQAudioEditorManager::keepSoon);
}

ZQAudioEditorManager::~ZQAudioEditorManager() {
    ++mGeneration;
    mWorker.waitForDone();
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
        Q_EMIT told(kNoSoundFile(url.fileName()));
        return;
    }
    if (mState != State::Empty)
        remember();
    mWanted.reset();
    open(url);
}

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
    mLastChange = nullptr;
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
    mLastChange = nullptr;
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
    const auto search = std::exchange(mSearch, {});
    if (!search || search->found.sound.isEmpty())
        return;
    remember();
    mUndo.back().cuts = search->before;
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
    mWorker.start([this, left = mKept->left(), generation = mGeneration] {
        auto step = KeptEdit::opened(left);
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

// what: several changes of it are one step.
void ZQAudioEditorManager::remember(const void *what) {
    acceptFound();
    if (!what || what != mLastChange) {
        mUndo.push_back(now());
        mRedo.clear();
    }
    mLastChange = what;
}

void ZQAudioEditorManager::undo() {
    if (!canUndo())
        return;
    if (mSearch)
        dropFound();
    else
        go(mUndo, mRedo);
}

void ZQAudioEditorManager::redo() {
    if (!canRedo())
        return;
    dropFound();
    go(mRedo, mUndo);
}

void ZQAudioEditorManager::go(std::vector<EditStep> &from, std::vector<EditStep> &to) {
    const EditStep step = std::move(from.back());
    from.pop_back();
    to.push_back(now());
    mLastChange = nullptr;
    go(step);
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

// Inserting.

void ZQAudioEditorManager::actionForEditToolInsertMute() {
    if (!canInsert())
        return;
    mInsert.adjustInsert({InsertType::Silence, mAsset, {}, {}, mName, mPlayTime},
                         [this](const ZQAudioInsertController::Inserted &inserted) {
                             insert(inserted);
                             Q_EMIT this->inserted(InsertType::Silence, {});
                         });
    Q_EMIT insertInfoWanted();
}

void ZQAudioEditorManager::insertFile(InsertType type, const QString &path) {
    if (!canInsert())
        return;
    const QUrl url = QUrl::fromLocalFile(path);
    mWorker.start([this, type, url, generation = mGeneration] {
        auto opened = media::openAsset(url);
        QMetaObject::invokeMethod(this, [this, type, url, generation, opened = std::move(opened)] {
            if (generation != mGeneration || !canInsert())
                return;
            if (!opened) {
                Q_EMIT told(opened.failure().sentence);
                return;
            }
            if (opened.value()->format().channels == 0) {
                Q_EMIT told(kNoSoundFile(url.fileName()));
                return;
            }
            mInsert.adjustInsert({type, mAsset, opened.value(), url, mName, mPlayTime},
                                 [this, type, url](const ZQAudioInsertController::Inserted &inserted) {
                                     insert(inserted);
                                     Q_EMIT this->inserted(type, url.fileName());
                                 });
            if (type == InsertType::Append || type == InsertType::Mix)
                mInsert.actionForInsert();
            else
                Q_EMIT insertInfoWanted();
        });
    });
}

void ZQAudioEditorManager::insert(const ZQAudioInsertController::Inserted &inserted) {
    remember();
    mWanted = EditStep{{}, {}, {}, {}, inserted.start, mGeometry.viewStart(), mGeometry.zoom()};
    editaudioWithCompositionAsset(inserted.composition, inserted.name);
}

// Exporting.

void ZQAudioEditorManager::showExportInfo() {
    if (!canExport())
        return;
    stopPlayback();
    mExportInfoCtrl.initialize();
    mExportInfoCtrl.setExportModePartEnable(mCuts.all().size() >= 2);
    mExportInfoCtrl.forgetParts();
    nameParts();
    mExportInfoCtrl.parseAudioInfo(mSourceURL);
    Q_EMIT exportInfoWanted();
}

void ZQAudioEditorManager::nameParts() {
    QList<double> starts;
    for (const auto &entity : mCuts.all())
        starts << entity->startTime();
    mExportInfoCtrl.setParts(starts, proposedName());
}

// What is exported is what a person sees now, whatever becomes of it while the name is asked for.
foundation::Sentence ZQAudioEditorManager::exportAudio() {
    if (!canExport())
        return {};
    mExportFormat = mExportInfoCtrl.exportFormat();
    if (const foundation::Sentence trouble = mExportFormat.namesTrouble(); !trouble.isEmpty())
        return trouble;
    mExportRanges.clear();
    for (const auto &entity : mCuts.all())
        mExportRanges.push_back({entity->startTime(), entity->endTime()});
    if (mExportFormat.namesAllParts())
        Q_EMIT folderWanted();
    else
        Q_EMIT fileNameWanted();
    return {};
}

QString ZQAudioEditorManager::proposedName() const { return QFileInfo(mName).completeBaseName(); }

void ZQAudioEditorManager::savePanelShouldClose(const QString &path) {
    if (!canExport())
        return;
    const QFileInfo chosen(path);
    AppSettings::setUserExportPath(chosen.path());
    const QString name = chosen.path() + QLatin1Char('/') + mExportFormat.withoutExtension(chosen.fileName());
    after(kBeforeExport, [this, name] { exportAudioWithFilePath_(name); });
}

void ZQAudioEditorManager::exportAudioWithFilePath_(const QString &path) {
    mAudioEditor->addSelectedCutEntitys(mExportRanges);
    mAudioEditor->exportAudioWithExportFotmat(mExportFormat, path + QStringLiteral(".m4a"));
}

void ZQAudioEditorManager::AudioExportDelegate_ShouldBeginExport() { setState(State::Exporting); }

void ZQAudioEditorManager::AudioExportDelegate_ShouldEndExportWithResult(bool, const QStringList &outputPaths) {
    const foundation::Sentence trouble = mAudioEditor->failure();
    QStringList there;
    std::copy_if(outputPaths.begin(), outputPaths.end(), std::back_inserter(there),
                 [](const QString &path) { return QFileInfo::exists(path); });
    if (trouble.isEmpty()) {
        mExported = now();
        setState(State::Completed);
    }
    after(kAfterExport, [this, there, trouble] {
        setState(State::Ready);
        if (!trouble.isEmpty())
            Q_EMIT told(trouble);
        if (!there.isEmpty())
            Q_EMIT openTheCompletedAudios(there);
    });
}

} // namespace cantorel
