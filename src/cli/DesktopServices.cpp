#include "cli/DesktopServices.h"

#include "platform/desktop/ShellScriptHost.h"
#include "platform/desktop/dbus/DBusFileManagerReveal.h"
#include "platform/desktop/dbus/DBusPowerActivity.h"

namespace cantorel {

desktop::Services desktopServices() {
    desktop::Services services;
    services.scripts = std::make_unique<desktop::ShellScriptHost>();
    services.power = std::make_unique<desktop::DBusPowerActivity>();
    services.files = std::make_unique<desktop::DBusFileManagerReveal>();
    return services;
}

} // namespace cantorel
