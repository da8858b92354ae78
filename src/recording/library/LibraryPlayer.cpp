#include "recording/library/LibraryPlayer.h"

namespace cantorel {

namespace {

constexpr foundation::SentenceKey kNoOutput("NoOutput");

constexpr std::chrono::milliseconds kTellInterval(250);

} // namespace

LibraryPlayer::LibraryPlayer() {
    mTimer.setInterval(kTellInterval);
    connect(&mTimer, &QTimer::timeout, this, &LibraryPlayer::changed);
}

foundation::Result<void> LibraryPlayer::play(const QString &file) {
    if (!mPlayer || file != mFile) {
        stop();
        foundation::Failure why;
        mPlayer = ZQAVAudioPlayer::initWithFilePath(file, &why);
        if (!mPlayer)
            return why;
        mPlayer->delegate = this;
        mFile = file;
    }
    if (!mPlayer->play()) {
        stop();
        return foundation::Failure{kNoOutput(), {}};
    }
    mIsPlaying = true;
    mTimer.start();
    Q_EMIT changed();
    return {};
}

void LibraryPlayer::pause() {
    if (!mIsPlaying)
        return;
    mPlayer->pause();
    mIsPlaying = false;
    mTimer.stop();
    Q_EMIT changed();
}

void LibraryPlayer::stop() {
    if (!mPlayer)
        return;
    mPlayer->stop();
    mPlayer.reset();
    mTimer.stop();
    mIsPlaying = false;
    mFile.clear();
    Q_EMIT changed();
}

void LibraryPlayer::seek(double seconds) {
    if (!mPlayer)
        return;
    mIsPlaying = mPlayer->playAtTime(seconds); // goes on from there, also where it was paused
    mTimer.start();
    Q_EMIT changed();
    Q_EMIT jumped();
}

double LibraryPlayer::position() const { return mPlayer ? mPlayer->currentPlayTime() : 0; }

double LibraryPlayer::length() const { return mPlayer ? mPlayer->totalTime() : 0; }

void LibraryPlayer::AVAudioPlayerDidFinishPlayingSuccessfully(ZQAVAudioPlayer &, bool) {
    // Not from within the player, which is destroyed.
    QMetaObject::invokeMethod(
        this, [this] { stop(); }, Qt::QueuedConnection);
}

} // namespace cantorel
