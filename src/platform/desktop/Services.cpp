#include "platform/desktop/Services.h"

namespace cantorel::desktop {

namespace {

Services *installed = nullptr;

} // namespace

InstalledServices::InstalledServices(Services services) : mServices(std::move(services)) {
    Q_ASSERT(installed == nullptr);
    installed = &mServices;
}

InstalledServices::~InstalledServices() { installed = nullptr; }

Services &InstalledServices::current() {
    static Services nothing;
    return installed != nullptr ? *installed : nothing;
}

} // namespace cantorel::desktop
