#include "platform/desktop/SystemVersion.h"

#include <QSysInfo>

namespace cantorel::desktop {

SystemVersion SystemVersion::current() {
    SystemVersion version;
    version.kernel = QStringLiteral("Linux %1 %2").arg(QSysInfo::kernelVersion(), QSysInfo::currentCpuArchitecture());
    return version;
}

} // namespace cantorel::desktop
