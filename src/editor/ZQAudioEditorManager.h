#pragma once

#include "editor/EditHistory.h"
#include "editor/KeptEdit.h"
#include "editor/ZQAudioEditExportController.h"
#include "editor/ZQAudioInsertController.h"
#include "editor/ZQAudioReader.h"
#include "editor/models/CutList.h"
#include "editor/models/EditorDelegates.h"
#include "editor/models/SilenceFinder.h"
#include "editor/models/WaveGeometry.h"
#include "editor/operations/ZQAudioEditor.h"
#include "editor/playback/ZQAudioPlayer.h"
#include "platform/foundation/SerialWorker.h"

#include <QObject>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace cantorel {

// The editor without its window: what is open, the selections, the head, what is played, inserted and exported. The
// source is never touched. Views ask it and hear its signals. Main thread.
class ZQAudioEditorManager : public QObject,
                             public AudioCutRequestDelegate,
                             public AudioPlayingPointDelegate,
                             public AudioCutInfoDelegate,
                             public AudioReadingDelegate,
                             public AudioPlayerDelegate,
                             public AudioExportDelegate {
    Q_OBJECT

public:
    // kept: where what is open is kept; null: nowhere.
    explicit ZQAudioEditorManager(foundation::Clock &clock, std::shared_ptr<KeptEdit> kept = {});
    ~ZQAudioEditorManager() override;

    // Empty: nothing was opened. Completed: what was read or exported is told for a moment.
    enum class State { Empty, Analysing, Completed, Ready, Unreadable, Exporting };
    State state() const { return mState; }
    bool isReady() const { return mState == State::Ready; }
    QString progressText() const;
    double progress() const;                                         // 0 to 1, or below 0 where it is not known
    const foundation::Sentence &trouble() const { return mTrouble; } // why it is unreadable

    // Opens a file at once, whatever is being read; not while something is exported.
    void editAudioWithURL(const QUrl &url);
    void editaudioWithCompositionAsset(media::AssetPointer asset, const QString &assetName);
    void DrageDelegate_SendTheDrageFileList(const QStringList &paths); // spelling is fixed
    // What an earlier program has left is opened as it was; told() says why it cannot be.
    void continueLeft();
    const QString &audioFileName() const { return mName; }
    QString audioFileDuration() const;
    // 0 until it is known.
    double AudioDataRequestDelegate_getCurrentAudioDuration() const { return mAsset ? mReader.duration() : 0; }
    // The page is left, and shown again: nothing plays, nothing is read meanwhile.
    void leave();
    void comeBack();

    const WaveGeometry &geometry() const { return mGeometry; }
    // What is looked at of the sound. The head stays where it is when it is seen, else the middle does; or that point
    // of the wave.
    void zoom(double factor, std::optional<double> aboutX = {});
    void scrollTo(double seconds); // which is where the view begins then
    bool canZoom(double factor) const;

    const CutList &cuts() const { return mCuts; }
    static constexpr WaveColour existedRectColor() { return ZQAudioTools::existedRectColor(); }
    static constexpr WaveColour focusOnRectColor() { return ZQAudioTools::focusOnRectColor(); }
    const ZQAudioCutEntity *getFocusOnCutEntity() const { return mCuts.getFocusOnCutEntity(); }

    void addNewCutEntity();
    void deleteEntity() { deleteFocusOnEntity_(); }
    void clearAllSelectedCutEntitys();
    void focusNeighbour(int step);
    // The focused selection begins or ends at the head.
    void moveEdgeToHead(CutList::Edge edge);
    bool canAdd() const;
    bool canDelete() const;
    bool canClear() const { return isReady() && !mCuts.isEmpty(); }
    bool canType() const;
    bool canFind() const { return isReady() && mGeometry.audioDuration() > 0; }

    // What lies between silences, shown in place of the selections. It becomes one step once it is accepted, or
    // something else is done with it; until then undoing or dropping it puts back what was there. Nothing that is found
    // leaves what was there.
    void showBetweenSilences(double decibels, double leastSeconds);
    void acceptFound();
    void dropFound();
    const SilenceFinder::Found *found() const { return mSearch ? &mSearch->found : nullptr; }

    // What a person did to the sound and the selections, step by step.
    bool canUndo() const { return isReady() && (mSearch || mHistory.canUndo()); }
    bool canRedo() const { return isReady() && mHistory.canRedo(); }
    void undo();
    void redo();

    ZQAudioPlayer &player() { return mPlayer; }
    void playOrPause();
    void playCuts();
    void playCut(QPointF point); // the selection there, once
    void stopPlayback();
    double playTime() const { return mPlayTime; }
    QPointF currentPlayingPoint() const { return mGeometry.getPointWithTime(mPlayTime); }
    void AudioPlayControlDelegate_ResetPlayCurrentTime(double seconds);
    void step(double seconds) { AudioPlayControlDelegate_ResetPlayCurrentTime(mPlayTime + seconds); }

    // Inserting. A file is chosen between what asks for it and insertFile().
    bool canInsert() const { return isReady(); }
    void actionForEditToolInsertMute();
    void insertFile(InsertType type, const QString &path);
    ZQAudioInsertController &inserting() { return mInsert; }

    // Exporting. What is exported is what there is when exportAudio() is called.
    bool canExport() const { return canInsert(); }
    void showExportInfo();
    ZQAudioEditExportController &exporting() { return mExportInfoCtrl; }
    // Why it cannot be; empty when its place is asked for.
    foundation::Sentence exportAudio();
    QString proposedName() const;
    // Path: as it was chosen, with an extension or without.
    void savePanelShouldClose(const QString &path);

    CutHit AudioCutRequestDelegate_MouseDown(QPointF point, ZQAudioCutEntity *&selectedCutEntity) override;
    CutHit AudioCutRequestDelegate_MouseMove(QPointF point) override;
    ZQAudioTools::Entities AudioCutRequestDelegate_GetExistCutEntitysRect() const override { return mCuts.pointers(); }
    void dragEdge(ZQAudioCutEntity &entity, CutHit edge, double x) override;
    void dragDidEnd() override;
    void waveSizeDidChange(QSizeF size) override;
    void AudioPlayingPointDelegate_updateThePlayingPoint(QPointF point) override;
    const ZQAudioCutEntity *AudioPlayingPointDelegate_GetFocusOnCutEntity() const override {
        return getFocusOnCutEntity();
    }
    void AudioCutInfoDelegate_UpdateSelectedCutEntityStartTime(double startTime, double endTime,
                                                               const char *timeControlID) override;

Q_SIGNALS:
    void stateChanged(); // state, names, what can be done
    void waveChanged();
    void cutsChanged(); // come, gone, moved, another has the focus
    void headMoved();
    void insertInfoWanted(); // how and where to insert
    void exportInfoWanted();
    void fileNameWanted(); // for what has none yet
    void folderWanted();   // where every part has its name
    void told(const foundation::Sentence &trouble);
    void inserted(InsertType type, const QString &fileName); // can be undone
    // The files of an export that are there.
    void openTheCompletedAudios(const QStringList &paths);

private:
    struct Search {
        SilenceFinder finder;
        QList<CutList::Range> before; // the selections
        SilenceFinder::Found found;
    };
    EditStep now() const;
    void remember(const void *what = nullptr);
    void go(const EditStep &step);
    void showRanges(const QList<CutList::Range> &ranges);
    void keepSoon();
    void keep();
    bool isUnsaved() const;

    void open(const QUrl &url);
    void refuse(const QUrl &url); // which holds no sound
    void initStartEditSettings_();
    void initSettings();
    void startAudioReading();
    void drawTheAudioWave();
    void resetAudioCutInfo_();
    void deleteFocusOnEntity_();
    void cutsDidChange();
    void setState(State state);
    void after(std::chrono::milliseconds delay, std::function<void()> action);
    void moveHead(double seconds);
    void showHead();
    void viewDidChange();
    void playNextCutEntity();
    void insert(const ZQAudioInsertController::Inserted &inserted);
    void nameParts();
    void exportAudioWithFilePath_(const QString &path);
    void showPreview();

    void AudioReadingDelegate_EndReading() override;
    void AudioReadingDelegate_ReadingFailed(const foundation::Sentence &why) override;
    void AudioPlayerDelegate_UpdateCurrentPlayingTime(double seconds) override;
    void AudioExportDelegate_ShouldBeginExport() override;
    void AudioExportDelegate_ShouldEndExportWithResult(bool isSuccess, const QStringList &outputPaths) override;

    foundation::Clock &mClock;
    ZQAudioReader mReader;
    WaveGeometry mGeometry;
    CutList mCuts{mGeometry};
    ZQAudioPlayer mPlayer;
    std::unique_ptr<ZQAudioEditor> mAudioEditor;
    ZQAudioEditExportController mExportInfoCtrl;
    ZQAudioInsertController mInsert;
    State mState = State::Empty;
    foundation::Sentence mTrouble;
    media::AssetPointer mAsset; // that is open; null while a file is being opened
    QUrl mSourceURL;            // the file that it began with
    QString mName;
    double mPlayTime = 0;
    std::optional<double> mPlayUntil; // the end of the one selection that is played
    std::optional<EditStep> mWanted;  // what to show once it is read
    EditHistory mHistory;
    const std::shared_ptr<KeptEdit> mKept;
    std::optional<EditStep> mExported; // what was, the last time
    std::optional<Search> mSearch;     // of silences; what it has found is shown
    // What is exported once its place is known.
    ZQAudioExportFormat mExportFormat;
    std::vector<CutRange> mExportRanges;
    std::unique_ptr<foundation::Timer> mDelayed, mPreview, mKeeping;
    quint64 mGeneration = 0;          // of what is open
    foundation::SerialWorker mWorker; // opens files to be inserted
};

} // namespace cantorel
