#pragma once

#include "convert/queue/ConvertAdding.h"
#include "convert/queue/ConvertModel.h"
#include "convert/queue/ZQAudioConvertManager.h"
#include "ui/Page.h"

#include <QTimer>

class QLabel;
class QProgressBar;
class QPushButton;

namespace cantorel::ui {

class ConvertOptions;
class ConvertStatusDelegate;
class RecordingsTable;

// The converter page: files that are dropped or chosen, what they are converted to, and how far that is. It shows what
// the queue tells.
class ZQAudioConvertController : public Page, public ConvertManagerDelegate {
    Q_OBJECT

public:
    // The queue outlives the page.
    ZQAudioConvertController(ZQAudioConvertManager &queue, QWidget *parent);
    ~ZQAudioConvertController() override;

    // Files and folders; once they are looked through, they stand in the list.
    void add(const QStringList &paths);
    ZQAudioConvertManager &queue() { return mQueue; }
    void begin() override;
    void stop();
    QString progressText() const;
    // The files that the last run has made, and in one line what has become of it; empty while there is none.
    QStringList results() const;
    QString summaryText() const;

Q_SIGNALS:
    // The run goes on, or has ended.
    void progressed();
    void ended();
    void revealWanted(const QStringList &files);

private:
    QWidget *makeTable();
    QWidget *makeBar();
    void start();
    void remove();
    void move(int step);
    void act(int row);
    void showMenu(const QPoint &position);
    void showState();
    void showProgress();
    void runDidEnd();
    void animate();
    void fit();
    void showIcons() final;
    void showTexts() final;
    QList<int> selected() const;

    void ConvertManagerDelegate_NumberOfEntitysDidChange() override;
    void ConvertManagerDelegate_NeedUpdateEntiyInfoWithIndex(int index, bool isSuccess) override;
    void ConvertManagerDelegate_StartConvertEntiyInfoWithIndex(int index) override;
    void ConvertManagerDelegate_UpdateConvertEntiyInfoWithIndexForProgress(int index, double progress) override;
    void ConvertManagerDelegate_UpdateConvertEntiyInfoWithIndexForSuccess(int index, bool success) override;
    void ConvertManagerDelegate_QueueDidGoOn() override;
    void ConvertManagerDelegate_ConvertDidDone() override;
    void ConvertManagerDelegate_ConvertDidCancel() override;

    void keyPressEvent(QKeyEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

    ZQAudioConvertManager &mQueue;
    ConvertModel mModel;
    ConvertAdding mAdding;
    QToolButton *mAdd, *mUp, *mDown, *mRemove;
    RecordingsTable *mTable;
    ConvertStatusDelegate *mStatuses;
    QLabel *mEmpty;
    ConvertOptions *mOptions;
    QLabel *mCount, *mTime;
    QProgressBar *mBar;
    QPushButton *mReveal, *mStart;
    QTimer mFrames; // of the picture that moves
    QTimer mAdded;  // rows are to be shown
    enum class Run { None, UnderWay, Done, Stopped } mRun = Run::None;
};

} // namespace cantorel::ui
