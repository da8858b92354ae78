#pragma once

#include "platform/foundation/SerialWorker.h"

#include <QObject>
#include <QStringList>
#include <QUrl>

#include <functional>
#include <stop_token>

namespace cantorel {

// Finds what can be converted among files and folders, on a worker, one call after the other. Owned by the window; main
// thread.
class ConvertAdding : public QObject {
public:
    ConvertAdding();
    // Ends what is being looked into; nothing of that is told.
    ~ConvertAdding() override;

    // Files as they are; of folders, and those in them, the files whose names say that they can be converted.
    void find(const QStringList &paths, std::function<void(const QList<QUrl> &)> found);

private:
    std::stop_source mStop;
    foundation::SerialWorker mWorker;
};

} // namespace cantorel
