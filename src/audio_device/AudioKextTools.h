#pragma once

#include <QString>
#include <QUrl>

namespace cantorel {

// Where the driver of the virtual device and its scripts are, by the version of the platform's services. Stateless.
class AudioKextTools {
public:
    AudioKextTools() = delete;

    // Deliberately both tests want a major version above 9 and compare the minor one alone.
    static bool isMacVersionGreatThan1008();
    static bool isMacVersionGreatThan1010();
    // A name that the install script maps to a folder of the user's own; nothing is written there itself.
    static QString kextInstallPath();
    static QString audioDriverName();
    static QString audioDeviceSourcePath();
    static QString audioDriverKextPath();
    static QString audioDriverInstallScriptPath();
    static QString audioDriverRemoveScriptPath();
    static QUrl soundflowerPkgLoadURL();
};

} // namespace cantorel
