#pragma once

#include "platform/desktop/MediaControls.h"

#include <QObject>

namespace cantorel {

class LibraryPlayer;
class RecordingsModel;

// The library's playback as media keys and the desktop's panels see and control it, in the order in which the library
// is shown. The desktop hears of it when something is first played. Owned by the window; main thread.
class LibraryMedia : public QObject, public desktop::MediaCommands {
    Q_OBJECT

public:
    // controls: null where the desktop has none. All outlive it.
    LibraryMedia(LibraryPlayer &player, const RecordingsModel &model, desktop::MediaControls *controls);
    ~LibraryMedia() override;

    // While something is recorded, no key begins to play: it would be heard in the recording.
    void setRecording(bool isRecording);

    void play() override;
    void pause() override;
    void playOrPause() override;
    void stop() override;
    void next() override { go(mNext); }
    void previous() override { go(mPrevious); }
    void seek(double seconds) override;
    double position() const override;
    void showWindow() override;
    void quit() override;

Q_SIGNALS:
    // The desktop asks for the window, or for the end of the program.
    void toWindow();
    void toEnd();

private:
    void playerDidChange();
    void positionDidJump();
    void offer();
    // Looks up the track and its neighbours in the library.
    void look();
    void go(const QString &file);
    void show();

    LibraryPlayer &mPlayer;
    const RecordingsModel &mModel;
    desktop::MediaControls *const mControls;
    bool mIsOffered = false, mIsRecording = false;
    QString mLast;                        // what was played last
    bool mMustLook = true;                // at the library, for what follows:
    QString mLookedFor, mNext, mPrevious; // files
    QString mTitle, mArtist, mAlbum;
};

} // namespace cantorel
