#include "capture/ZQAVAudioPlayer.h"

#include <QFileInfo>

namespace cantorel {

std::unique_ptr<ZQAVAudioPlayer> ZQAVAudioPlayer::initWithFilePath(const QString &path, foundation::Failure *failure) {
    foundation::Failure why{kFileGone(path), QString()};
    if (!path.isEmpty() && QFileInfo(path).isFile()) {
        auto player = media::Player::open(path);
        if (player)
            return std::unique_ptr<ZQAVAudioPlayer>(new ZQAVAudioPlayer(std::move(player).value()));
        why = player.failure();
    }
    if (failure)
        *failure = why;
    return nullptr;
}

ZQAVAudioPlayer::ZQAVAudioPlayer(std::unique_ptr<media::Player> player) : mAudioPlayer(std::move(player)) {
    mAudioPlayer->finished = [this](bool completely) {
        delegate->AVAudioPlayerDidFinishPlayingSuccessfully(*this, completely);
    };
}

bool ZQAVAudioPlayer::play() { return mAudioPlayer->play(); }

void ZQAVAudioPlayer::pause() { mAudioPlayer->pause(); }

void ZQAVAudioPlayer::stop() { mAudioPlayer->stop(); }

double ZQAVAudioPlayer::currentPlayTime() const { return mAudioPlayer->currentTime(); }

double ZQAVAudioPlayer::totalTime() const { return mAudioPlayer->duration(); }

bool ZQAVAudioPlayer::playAtTime(double seconds) {
    mAudioPlayer->seek(seconds);
    return mAudioPlayer->play();
}

} // namespace cantorel
