#pragma once

#include "platform/desktop/Appearance.h"
#include "platform/desktop/FileChooser.h"
#include "platform/desktop/FileManagerReveal.h"
#include "platform/desktop/LauncherEntry.h"
#include "platform/desktop/MediaControls.h"
#include "platform/desktop/Notifications.h"
#include "platform/desktop/PowerActivity.h"
#include "platform/desktop/RemoteControl.h"
#include "platform/desktop/ScriptHost.h"
#include "platform/desktop/SleepDelay.h"
#include "platform/desktop/SoundPlayer.h"
#include "platform/desktop/SystemVersion.h"

#include <memory>

namespace cantorel::desktop {

// What the desktop does for the program. Made by the composition root; a service that is null is not there.
struct Services {
    std::unique_ptr<ScriptHost> scripts;
    std::shared_ptr<PowerActivity> power; // shared with the thread that keeps the machine awake
    std::unique_ptr<FileManagerReveal> files;
    std::unique_ptr<SoundPlayer> sounds;
    std::unique_ptr<MediaControls> media;
    std::unique_ptr<Notifications> notifications;
    std::unique_ptr<RemoteControl> remote;
    std::unique_ptr<SleepDelay> sleep;
    std::unique_ptr<Appearance> appearance;
    std::unique_ptr<FileChooser> chooser;
    std::unique_ptr<LauncherEntry> launcher;
    SystemVersion version = SystemVersion::current();
};

// Lends the services to the holders of class operations while it lives. One at a time.
class InstalledServices {
public:
    explicit InstalledServices(Services services);
    ~InstalledServices();
    InstalledServices(const InstalledServices &) = delete;
    InstalledServices &operator=(const InstalledServices &) = delete;

    // Those of the living installation; without one, a set in which every service is null.
    static Services &current();

private:
    Services mServices;
};

} // namespace cantorel::desktop
