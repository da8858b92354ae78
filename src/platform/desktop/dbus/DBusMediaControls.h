#pragma once

#include "platform/desktop/MediaControls.h"

#include <memory>

namespace cantorel::desktop {

class MprisObject;
class MprisPlayer;
class OwnConnection;

// MPRIS on the session bus, under org.mpris.MediaPlayer2 and the player's name. The bus is first touched by offer().
// Main thread.
class DBusMediaControls : public MediaControls {
public:
    // applicationId: the program's launcher.
    DBusMediaControls(QString player, QString identity, QString applicationId);
    ~DBusMediaControls() override;

    foundation::Result<void> offer(MediaCommands &commands) override;
    void withdraw() override;
    void show(const MediaState &state) override;
    void positionDidJump() override;

private:
    const QString mPlayerName, mIdentity, mApplicationId;
    // While commands are offered.
    std::unique_ptr<MprisObject> mObject;
    MprisPlayer *mPlayer = nullptr; // of the object
    std::unique_ptr<OwnConnection> mConnection;
};

} // namespace cantorel::desktop
