#include "util/tools/ToolSystem.h"

#include "platform/desktop/Services.h"
#include "settings/UserDefaultFunctions.h"
#include "util/tools/KeepAwake.h"

#include <memory>

namespace cantorel {

namespace {

std::unique_ptr<KeepAwake> _wakeTimer;

} // namespace

void ToolSystem::setAllowKeepSystemWakeEnable(bool enable) {
    const auto power = desktop::InstalledServices::current().power;
    if (!enable)
        _wakeTimer.reset();
    else if (!_wakeTimer && power)
        _wakeTimer = std::make_unique<KeepAwake>(power);
}

void ToolSystem::setSystemDefaultTooltipsShowTimeInterval(double seconds) {
    (void)ZQUserDefaultSetValue_NSInteger(static_cast<qint64>(seconds), // a failure is logged by the store
                                          QStringLiteral("NSInitialToolTipDelay"));
}

} // namespace cantorel
