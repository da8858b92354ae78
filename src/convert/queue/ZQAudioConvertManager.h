#pragma once

#include "convert/ConvertPreset.h"
#include "convert/queue/ConvertWorkers.h"
#include "convert/queue/ZQAudioConvertEntity.h"
#include "platform/foundation/Clock.h"
#include "platform/foundation/Sentence.h"
#include "platform/foundation/WeakDelegate.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace cantorel {

// What the queue tells whoever shows it; an index is that of the row at the time of the call. Main thread.
class ConvertManagerDelegate {
public:
    virtual ~ConvertManagerDelegate() = default;
    virtual void ConvertManagerDelegate_NumberOfEntitysDidChange() {} // Spelling is fixed, here and below.
    // The media information of a row has been read, or could not be.
    virtual void ConvertManagerDelegate_NeedUpdateEntiyInfoWithIndex(int /*index*/, bool /*isSuccess*/) {}
    // A row waits for its turn.
    virtual void ConvertManagerDelegate_StartConvertEntiyInfoWithIndex(int /*index*/) {}
    virtual void ConvertManagerDelegate_UpdateConvertEntiyInfoWithIndexForProgress(int /*index*/, double /*progress*/) {
    }
    virtual void ConvertManagerDelegate_UpdateConvertEntiyInfoWithIndexForSuccess(int /*index*/, bool /*success*/) {}
    // The next row is being converted now, or the results are being joined.
    virtual void ConvertManagerDelegate_QueueDidGoOn() {}
    // The queue has ended: by itself, or, in place of that, by a stop. No row changes after it.
    virtual void ConvertManagerDelegate_ConvertDidDone() {}
    virtual void ConvertManagerDelegate_ConvertDidCancel() {}
};

// The conversion queue: files in a list, converted one after another to one format and quality, and joined where that
// is asked for. A result has its name only once it is whole and on the disk, and replaces no other file. All that it
// answers is in memory; nothing here blocks. Main thread.
class ZQAudioConvertManager : public QObject, private ConvertEntityDelegate {
public:
    explicit ZQAudioConvertManager(foundation::Clock &clock);
    // Ends what it has under way.
    ~ZQAudioConvertManager() override;

    foundation::WeakDelegate<ConvertManagerDelegate> delegate;

    // Appends a row for each. While the queue runs they wait for the next start.
    void parseAudioInfoWithURLs(const QList<QUrl> &urls);
    // Deliberate: appends too, wherever the index is.
    void insertAudioInfoWithURL(const QUrl &url, int toIndex);
    int numberOfAudioEntitys() const { return static_cast<int>(mAudioEntitys.size()); }
    ZQAudioConvertEntity *getAudioEntityWithRowIndex(int index) const; // null where there is none

    // The order, which stays while the queue runs: false then, and for rows that are not there.
    bool moveEntityAtIndex(int index, int toIndex); // before that row; the number of rows is the end
    // Deliberate: these exchange the two, but for the last row as the target, which moves the row behind it, and the
    // first one, which moves it to the front.
    bool moveUpEntityAtIndex(int index, int toIndex);
    bool moveDownEntityAtIndex(int index, int toIndex);
    bool removeSelectedAudioIndexSet(const QList<int> &indexes);

    // The quality by its text in the language in force. What runs goes on with what it was started with.
    void outputAudioFormatDidChange(const QString &format, const QString &quality);
    const ConvertPreset &preset() const { return mPreset; }
    // How many rows are completed.
    int getConvertSuccessNum() const;

    // Converts every row, completed ones again, into the folder of the settings. Nothing while it runs.
    void startConvertWithMergeStatus(bool merge);
    // Converts that row again; behind the others where the queue runs. False while it is stopping, and for a row that
    // waits or is being converted.
    bool retryEntityAtIndex(int index);
    // Ends the conversion or the wait of that row alone; the queue goes on.
    void cancelEntityAtIndex(int index);
    // Ends the conversion under way at once; all that wait fail. ConvertDidCancel tells when that is so.
    void stopConvert();
    bool isConverting() const { return mState != State::Idle; }
    bool isMerging() const { return mState == State::Merging; }
    bool isStopping() const { return mState == State::Stopping || mState == State::Stopped; }

    // Of the run under way: how many of its rows have ended, of how many, and how long the others will take; nothing
    // where that is not known yet.
    struct Progress {
        int ended = 0, rows = 0;
        double percent = 0; // of all of them, by their lengths
        std::optional<int> secondsLeft = {};
    };
    Progress progress() const;

    // What the last run has led to.
    struct Summary {
        int completed = 0, failed = 0;
        QString folder;                    // where the results are
        QString mergedPath;                // the joined file; empty without one
        QStringList files;                 // all results, in the order of the list
        foundation::Sentence mergeFailure; // why nothing was joined; empty where nothing was to be
    };
    Summary summary() const;

private:
    // BetweenRows: what comes next waits for the event loop, or for the media information of its row. Stopping: what is
    // under way ends. Stopped: nothing is under way, and that is about to be told.
    enum class State { Idle, BetweenRows, Converting, Merging, Stopping, Stopped };

    void EntityDelegateReadMedaInfoDone(ZQAudioConvertEntity &entity, bool forSuccess) override;
    void EntityDelegateStartConvert(ZQAudioConvertEntity &entity) override;
    void EntityDelegateUpdateConvertForProgress(ZQAudioConvertEntity &entity, double progress) override;
    void EntityDelegateUpdateConvertForSuccess(ZQAudioConvertEntity &entity, bool success) override;

    std::optional<int> indexOf(const ZQAudioConvertEntity &entity) const;
    bool mayMove(int index, int toIndex) const;
    bool exchange(int index, int toIndex);
    void begin(bool merge, const std::vector<ZQAudioConvertEntity *> &rows);
    void goOnSoon();
    void goOn();
    bool merge();
    void merged(const std::vector<QPointer<ZQAudioConvertEntity>> &parts, const QString &path,
                const foundation::Sentence &failure);
    void end();

    foundation::Clock &mClock;
    const QString mConverter;
    ConvertWorkers mReaders, mConverters; // before the rows: they outlive them
    std::vector<std::unique_ptr<ZQAudioConvertEntity>> mAudioEntitys;
    ConvertPreset mPreset;

    // Of the run under way, or the last one.
    State mState = State::Idle;
    std::vector<QPointer<ZQAudioConvertEntity>> mRun;
    std::size_t mNext = 0; // the first of them that has not ended
    ConvertPreset mRunPreset;
    QString mFolder;
    bool mMerges = false;
    std::stop_source mMergeStop;
    foundation::Clock::Duration mBegun{0};
    QString mMergedPath;
    foundation::Sentence mMergeFailure;
};

} // namespace cantorel
