#pragma once

#include "platform/desktop/FileManagerReveal.h"

namespace cantorel::desktop {

// Asks the session's file manager; where there is none, opens the folder with xdg-open.
class DBusFileManagerReveal : public FileManagerReveal {
public:
    foundation::Result<void> reveal(const QStringList &paths) override;
    foundation::Result<void> open(const QUrl &url, const QString &withApplication) override;
};

} // namespace cantorel::desktop
