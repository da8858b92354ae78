#include "capture/DeviceSoundPlayer.h"

namespace cantorel {

foundation::Result<void> DeviceSoundPlayer::play(const QString &waveFile) {
    std::erase_if(mPlaying, [](const auto &player) { return !player->isPlaying(); });
    auto player = media::Player::open(waveFile);
    if (!player)
        return player.failure();
    if (!player.value()->play())
        return foundation::Failure{QStringLiteral("There is no output to play a sound to."), waveFile};
    mPlaying.push_back(std::move(player).value());
    return {};
}

} // namespace cantorel
