#include "app/start/DesktopServices.h"

#include "platform/desktop/ShellScriptHost.h"
#include "platform/desktop/dbus/DBusFileManagerReveal.h"
#include "platform/desktop/dbus/DBusLauncherEntry.h"
#include "platform/desktop/dbus/DBusMediaControls.h"
#include "platform/desktop/dbus/DBusNotifications.h"
#include "platform/desktop/dbus/DBusPowerActivity.h"
#include "platform/desktop/dbus/DBusRemoteControl.h"
#include "platform/desktop/dbus/DBusSleepDelay.h"
#include "platform/desktop/portal/PortalAppearance.h"
#include "platform/desktop/portal/PortalFileChooser.h"
#include "platform/desktop/portal/PortalHotKeys.h"
#include "platform/desktop/x11/X11HotKeys.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaultFunctions.h"

namespace cantorel {

desktop::Services desktopServices() {
    desktop::Services services;
    services.scripts = std::make_unique<desktop::ShellScriptHost>();
    services.power = std::make_unique<desktop::DBusPowerActivity>();
    services.files = std::make_unique<desktop::DBusFileManagerReveal>();
    services.media = std::make_unique<desktop::DBusMediaControls>(QStringLiteral("cantorel"), AppSettings::appName(),
                                                                  QString::fromLatin1(kBundleIdentifier));
    services.notifications =
        std::make_unique<desktop::DBusNotifications>(AppSettings::appName(), QString::fromLatin1(kBundleIdentifier));
    services.remote = std::make_unique<desktop::DBusRemoteControl>(QString::fromLatin1(kBundleIdentifier),
                                                                   QStringLiteral("/com/tessolar/Cantorel"),
                                                                   QStringLiteral("com.tessolar.Cantorel.Recorder"));
    services.sleep = std::make_unique<desktop::DBusSleepDelay>();
    services.appearance = std::make_unique<desktop::PortalAppearance>([] { return QDBusConnection::sessionBus(); });
    services.launcher = std::make_unique<desktop::DBusLauncherEntry>(QString::fromLatin1(kBundleIdentifier));
    services.chooser = std::make_unique<desktop::PortalFileChooser>([] { return QDBusConnection::sessionBus(); });
    return services;
}

foundation::Result<std::shared_ptr<desktop::HotKeys>> desktopHotKeys() {
    // Under Wayland an X server would offer keys that only reach the program while an X window has the focus.
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return std::shared_ptr<desktop::HotKeys>(std::make_shared<desktop::PortalHotKeys>(
            QDBusConnection::sessionBus(), QString::fromLatin1(kBundleIdentifier),
            // In the order in which they are bound. Desktops keep these names: never change them.
            std::vector<desktop::HotKeyPurpose>{
                {QStringLiteral("start-recording"), QStringLiteral("Start or end the recording")},
                {QStringLiteral("stop-recording"), QStringLiteral("End the recording")},
                {QStringLiteral("pause-recording"), QStringLiteral("Pause or resume the recording")}}));
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        return foundation::Failure{
            QStringLiteral("Hot keys don't work without a display; use \"cantorel-cli toggle\" and its like."),
            QStringLiteral("neither WAYLAND_DISPLAY nor DISPLAY is set")};
    auto opened = desktop::X11HotKeys::open();
    if (!opened)
        return opened.failure();
    return std::shared_ptr<desktop::HotKeys>(std::move(opened.value()));
}

} // namespace cantorel
