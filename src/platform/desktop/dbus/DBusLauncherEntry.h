#pragma once

#include "platform/desktop/LauncherEntry.h"

#include <QString>

namespace cantorel::desktop {

// Tells whoever shows launchers with the signal that docks and bars of tasks listen to; nobody is asked.
class DBusLauncherEntry : public LauncherEntry {
public:
    // desktopFile: the name of the installed desktop file, without its extension.
    explicit DBusLauncherEntry(const QString &desktopFile);

    void showProgress(double progress) override;
    void hideProgress() override;

private:
    void tell(double progress, bool isVisible);

    const QString mApplication;
    int mShown = -1; // in hundredths; -1 for none
};

} // namespace cantorel::desktop
