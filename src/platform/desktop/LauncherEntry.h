#pragma once

namespace cantorel::desktop {

// The program's entry in the desktop's dock or bar of tasks. Main thread.
class LauncherEntry {
public:
    virtual ~LauncherEntry() = default;

    // How far the work is that goes on, 0 to 1; where no desktop shows it, nothing happens.
    virtual void showProgress(double progress) = 0;
    virtual void hideProgress() = 0;
};

} // namespace cantorel::desktop
