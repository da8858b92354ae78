#include "recording/library/LibraryMedia.h"

#include "log/Log.h"
#include "recording/library/LibraryPlayer.h"
#include "recording/library/RecordedAudioInfo.h"
#include "recording/library/RecordingsModel.h"

#include <QFileInfo>

#include <utility>

namespace cantorel {

using desktop::MediaState;

namespace {

bool isPlayable(const RecordedAudioInfo &item) {
    return !item.isRecording && !item.isProcessing && QFileInfo::exists(item.getFileName());
}

// The file of the closest row in that direction that can be played; empty when there is none.
QString closest(const RecordingsModel &model, int row, int step) {
    for (row += step; row >= 0 && row < model.rowCount(); row += step)
        if (const RecordedAudioInfo *item = model.item(row); item && isPlayable(*item))
            return item->getFileName();
    return {};
}

} // namespace

LibraryMedia::LibraryMedia(LibraryPlayer &player, const RecordingsModel &model, desktop::MediaControls *controls)
    : mPlayer(player), mModel(model), mControls(controls) {
    const auto lookAgain = [this] {
        if (mIsOffered && !std::exchange(mMustLook, true)) // not at once: the model is still changing
            QMetaObject::invokeMethod(
                this, [this] { show(); }, Qt::QueuedConnection);
    };
    connect(&player, &LibraryPlayer::changed, this, [this] { playerDidChange(); });
    connect(&player, &LibraryPlayer::jumped, this, [this] { positionDidJump(); });
    connect(&model, &RecordingsModel::modelReset, this, lookAgain);
    connect(&model, &RecordingsModel::layoutChanged, this, lookAgain);
    connect(&model, &RecordingsModel::dataChanged, this, lookAgain);
    connect(&model, &RecordingsModel::rowsInserted, this, lookAgain);
    connect(&model, &RecordingsModel::rowsRemoved, this, lookAgain);
}

LibraryMedia::~LibraryMedia() {
    if (mIsOffered)
        mControls->withdraw();
}

void LibraryMedia::playerDidChange() {
    if (!mPlayer.file().isEmpty())
        mLast = mPlayer.file();
    if (!mIsOffered && mPlayer.isPlaying())
        offer();
    show();
}

void LibraryMedia::offer() {
    if (mControls == nullptr)
        return;
    mIsOffered = true; // Asked once.
    if (const auto offered = mControls->offer(*this); !offered)
        Log(offered.failure().detail);
}

void LibraryMedia::positionDidJump() {
    if (mIsOffered)
        mControls->positionDidJump();
}

void LibraryMedia::setRecording(bool isRecording) {
    if (std::exchange(mIsRecording, isRecording) != isRecording)
        show();
}

void LibraryMedia::look() {
    if (mLookedFor == mPlayer.file() && !mMustLook)
        return;
    mLookedFor = mPlayer.file();
    mMustLook = false;
    mNext.clear();
    mPrevious.clear();
    mArtist.clear();
    mAlbum.clear();
    mTitle = QFileInfo(mLookedFor).completeBaseName();
    const QByteArray lookedFor = mLookedFor.toUtf8();
    for (int row = 0; !mLookedFor.isEmpty() && row < mModel.rowCount(); ++row) {
        const RecordedAudioInfo *item = mModel.item(row);
        if (!item->hasFile(lookedFor))
            continue;
        mArtist = item->artist();
        mAlbum = item->album();
        mNext = closest(mModel, row, 1);
        mPrevious = closest(mModel, row, -1);
        return;
    }
}

void LibraryMedia::show() {
    if (!mIsOffered)
        return;
    look();
    MediaState state;
    if (const QString file = mPlayer.file(); !file.isEmpty()) {
        state.playback = mPlayer.isPlaying() ? MediaState::Playback::Playing : MediaState::Playback::Paused;
        state.track = QUrl::fromLocalFile(file);
        state.title = mTitle;
        state.artist = mArtist;
        state.album = mAlbum;
        state.seconds = mPlayer.length();
    }
    state.canPlay = !mIsRecording && !mLast.isEmpty();
    state.canGoNext = !mIsRecording && !mNext.isEmpty();
    state.canGoPrevious = !mIsRecording && !mPrevious.isEmpty();
    mControls->show(state);
}

// Asking. What fails is as it was: the window shows it.

void LibraryMedia::play() {
    if (!mIsRecording && !mPlayer.isPlaying() && !mLast.isEmpty())
        (void)mPlayer.play(mLast);
}

void LibraryMedia::pause() { mPlayer.pause(); }

void LibraryMedia::playOrPause() {
    if (mPlayer.isPlaying())
        pause();
    else
        play();
}

void LibraryMedia::stop() { mPlayer.stop(); }

void LibraryMedia::go(const QString &file) {
    if (mIsRecording || file.isEmpty())
        return;
    const bool wasPlaying = mPlayer.isPlaying();
    if (mPlayer.play(QString(file)) && !wasPlaying) // What is paused stays so.
        mPlayer.pause();
}

void LibraryMedia::seek(double seconds) {
    if (mPlayer.file().isEmpty())
        return;
    const bool wasPlaying = mPlayer.isPlaying();
    mPlayer.seek(seconds);
    if (!wasPlaying)
        mPlayer.pause();
}

double LibraryMedia::position() const { return mPlayer.position(); }

void LibraryMedia::showWindow() { Q_EMIT toWindow(); }

void LibraryMedia::quit() { Q_EMIT toEnd(); }

} // namespace cantorel
