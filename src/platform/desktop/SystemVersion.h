#pragma once

#include <QString>

namespace cantorel::desktop {

// The level of platform services that is offered here, on the scale that version tests use, and what the kernel calls
// itself. A plain value: tests set another one.
struct SystemVersion {
    int majorVersion = 10;
    int minorVersion = 15;
    int bugFixVersion = 7;
    QString kernel;               // such as "Linux 6.1.0-18-amd64 x86_64"
    double toolkitVersion = 1894; // of the windows, on a scale of its own

    static SystemVersion current();
};

} // namespace cantorel::desktop
