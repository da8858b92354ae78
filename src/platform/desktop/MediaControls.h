#pragma once

#include "platform/foundation/Result.h"

#include <QString>
#include <QUrl>

namespace cantorel::desktop {

// What is played, and what may be asked of the player.
struct MediaState {
    enum class Playback { Stopped, Paused, Playing };

    Playback playback = Playback::Stopped;
    QUrl track; // empty: none
    QString title, artist, album;
    double seconds = 0; // of the track
    bool canPlay = false, canGoNext = false, canGoPrevious = false;
    bool operator==(const MediaState &) const = default;
};

// What media keys and the desktop's panels ask of a player. Main thread.
class MediaCommands {
public:
    virtual ~MediaCommands() = default;

    virtual void play() = 0;
    virtual void pause() = 0;
    virtual void playOrPause() = 0;
    virtual void stop() = 0;
    virtual void next() = 0;
    virtual void previous() = 0;
    // Goes on from there; seconds from the beginning, at least 0.
    virtual void seek(double seconds) = 0;
    virtual double position() const = 0; // seconds
    virtual void showWindow() = 0;
    virtual void quit() = 0;
};

// Makes the program a player that the desktop knows. Main thread.
class MediaControls {
public:
    virtual ~MediaControls() = default;

    // The desktop may send commands until withdraw(), which the commands outlive. Fails without a session bus.
    virtual foundation::Result<void> offer(MediaCommands &commands) = 0;
    virtual void withdraw() = 0;

    // Passes on only what has changed.
    virtual void show(const MediaState &state) = 0;
    // Tells the desktop of a jump: the position changed by more than the time that passed.
    virtual void positionDidJump() = 0;
};

} // namespace cantorel::desktop
