#pragma once

#include "platform/foundation/Clock.h"
#include "platform/foundation/WeakDelegate.h"
#include "platform/media/Player.h"
#include "platform/media/asset/Asset.h"

#include <QObject>

#include <functional>
#include <memory>

namespace cantorel {

class AudioPlayerDelegate {
public:
    virtual ~AudioPlayerDelegate() = default;

    // Ten times a second while it plays, and at once after a play, a pause and a seek.
    virtual void AudioPlayerDelegate_UpdateCurrentPlayingTime(double /*seconds*/) {}
};

// Plays what the editor has open, whole or selection by selection: which of the two is what its buttons show, and the
// delegate decides where it goes on. Main thread.
class ZQAudioPlayer : public QObject {
    Q_OBJECT

public:
    explicit ZQAudioPlayer(foundation::Clock &clock) : mClock(clock) {}

    foundation::WeakDelegate<AudioPlayerDelegate> delegate;

    // Lets go of what was prepared before. The handler is called later, from the event loop, once it can be played;
    // never for what can't be, nor when something else was prepared or all was cleared meanwhile.
    void prepareForPlayWithAsset(media::AssetPointer asset, std::function<void()> completeHandler);
    void clear();

    bool isPrepared() const { return mPlayer != nullptr; }
    double duration() const;    // seconds
    double currentTime() const; // seconds, in single precision; 0 without a player
    // The same exactly, in the asset's frames. What is sought counts as reached until the sound goes on from there.
    media::MediaTime currentMediaTime() const;
    bool isPlaying() const { return mPlayer && mPlayer->isPlaying(); }

    void play();
    void pause();
    void stop(); // and goes back to the beginning
    void setCurrentPlayTime(double seconds);

    // Each changes what its button shows, turns the other one off, and answers what it shows now.
    bool Play_() { return toggle(Shown::Playing); }
    bool CutsPlay_() { return toggle(Shown::PlayingCuts); }

    void setPlayButtonState(bool isOn) { show(Shown::Playing, isOn); }
    bool getPlayButtonState() const { return mShown == Shown::Playing; }
    void setCutsPlayButtonState(bool isOn) { show(Shown::PlayingCuts, isOn); }
    bool getCutsPlayButtonState() const { return mShown == Shown::PlayingCuts; }
    void setPlayButtonEnable(bool isEnabled);
    bool isPlayButtonEnabled() const { return mIsPlayEnabled; }
    void setCutsPlayButtonEnable(bool isEnabled);
    bool isCutsPlayButtonEnabled() const { return mIsCutsPlayEnabled; }

Q_SIGNALS:
    // What a button shows, or whether it can be pressed.
    void stateChanged();

private:
    enum class Shown { Stopped, Playing, PlayingCuts };

    void open(const media::AssetPointer &asset);
    bool toggle(Shown what);
    void show(Shown what, bool isOn);
    void _updateCurrentPlayTime();
    void ended(bool completely);

    foundation::Clock &mClock;
    std::unique_ptr<media::Player> mPlayer;
    std::unique_ptr<foundation::Timer> mObserver; // from a play to what ends it
    media::MediaTime mSought;                     // by the last seek
    quint64 mGeneration = 0;                      // of what is prepared
    Shown mShown = Shown::Stopped;
    bool mIsPlayEnabled = false;
    bool mIsCutsPlayEnabled = false;
};

} // namespace cantorel
