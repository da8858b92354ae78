#pragma once

#include "capture/ZQAVAudioPlayer.h"

#include <QTimer>

#include <memory>

namespace cantorel {

// Plays recordings of the library, one at a time. Owned by the window; main thread.
class LibraryPlayer : public QObject, public ZQAVAudioPlayerDelegate {
    Q_OBJECT

public:
    LibraryPlayer();

    // Begins with the file, or goes on with it where it was paused; fails in one sentence.
    foundation::Result<void> play(const QString &file);
    void pause();
    // Lets go of the file.
    void stop();
    // Goes on from there.
    void seek(double seconds);

    // Empty when nothing is played or paused.
    QString file() const { return mFile; }
    bool isPlaying() const { return mIsPlaying; }
    double position() const; // seconds
    double length() const;   // seconds

Q_SIGNALS:
    // Something is played, paused or has ended; and, while it plays, four times a second.
    void changed();
    // It goes on from another position.
    void jumped();

private:
    void AVAudioPlayerDidFinishPlayingSuccessfully(ZQAVAudioPlayer &, bool successfully) override;

    std::unique_ptr<ZQAVAudioPlayer> mPlayer;
    QTimer mTimer;
    QString mFile;
    bool mIsPlaying = false;
};

} // namespace cantorel
