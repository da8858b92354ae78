#pragma once

#include "platform/foundation/Sentence.h"
#include "platform/foundation/WeakDelegate.h"
#include "platform/media/Player.h"

#include <QObject>

#include <memory>

namespace cantorel {

inline constexpr foundation::SentenceKey kFileGone("FileGone", "FileName");

class ZQAVAudioPlayer;

// What a player tells, on the main thread.
class ZQAVAudioPlayerDelegate {
public:
    virtual ~ZQAVAudioPlayerDelegate() = default;

    virtual void AVAudioPlayerDidFinishPlayingSuccessfully(ZQAVAudioPlayer &, bool /*successfully*/) {}
};

// Plays one file. Main thread.
class ZQAVAudioPlayer : public QObject {
public:
    // Null unless the path names a file that can be played; why not stands in the failure.
    static std::unique_ptr<ZQAVAudioPlayer> initWithFilePath(const QString &path,
                                                             foundation::Failure *failure = nullptr);

    foundation::WeakDelegate<ZQAVAudioPlayerDelegate> delegate;

    bool play();
    void pause();
    void stop();
    double currentPlayTime() const; // seconds
    double totalTime() const;       // seconds
    bool playAtTime(double seconds);

private:
    explicit ZQAVAudioPlayer(std::unique_ptr<media::Player> player);

    std::unique_ptr<media::Player> mAudioPlayer;
};

} // namespace cantorel
