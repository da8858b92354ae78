#pragma once

#include "platform/foundation/Result.h"

#include <QStringList>
#include <QUrl>

namespace cantorel::desktop {

// Shows files to the person in the desktop's own programs. Main thread.
class FileManagerReveal {
public:
    virtual ~FileManagerReveal() = default;

    // Opens the folder of the files with the files marked where the file manager can.
    virtual foundation::Result<void> reveal(const QStringList &paths) = 0;

    // Opens a file, folder or address with the program that is meant for it, or with the one named.
    virtual foundation::Result<void> open(const QUrl &url, const QString &withApplication = {}) = 0;
};

} // namespace cantorel::desktop
