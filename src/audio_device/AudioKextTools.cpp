#include "audio_device/AudioKextTools.h"

#include "audio_device/ZQAudioKextLog.h"
#include "platform/desktop/Services.h"
#include "platform/foundation/SearchPaths.h"
#include "settings/AppSettings.h"

namespace cantorel {

namespace {

bool isMinorGreaterThan(int minor) {
    const desktop::SystemVersion &version = desktop::InstalledServices::current().version;
    ZQAudioKextLog::I(QStringLiteral("minor value :%1").arg(version.minorVersion));
    return version.minorVersion > minor && version.majorVersion > 9;
}

} // namespace

bool AudioKextTools::isMacVersionGreatThan1008() { return isMinorGreaterThan(8); }

bool AudioKextTools::isMacVersionGreatThan1010() { return isMinorGreaterThan(10); }

QString AudioKextTools::kextInstallPath() {
    return isMacVersionGreatThan1008() ? QStringLiteral("/Library/Extensions/")
                                       : QStringLiteral("/System/Library/Extensions/");
}

QString AudioKextTools::audioDriverName() {
    return isMacVersionGreatThan1008() ? QLatin1String(kTessolarAudioDeviceName) + QStringLiteral(".kext")
                                       : QStringLiteral("SystemSound.kext");
}

QString AudioKextTools::audioDeviceSourcePath() { return foundation::resourcePath(QString()); }

QString AudioKextTools::audioDriverKextPath() { return foundation::resourcePath(audioDriverName()); }

QString AudioKextTools::audioDriverInstallScriptPath() {
    return foundation::resourcePath(QStringLiteral("audioDriver_install.scpt"));
}

QString AudioKextTools::audioDriverRemoveScriptPath() {
    return foundation::resourcePath(QStringLiteral("audioDriver_remove.scpt"));
}

QUrl AudioKextTools::soundflowerPkgLoadURL() {
    return QUrl::fromLocalFile(foundation::resourcePath(QStringLiteral("SystemSound.pkg")));
}

} // namespace cantorel
