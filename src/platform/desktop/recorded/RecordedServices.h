#pragma once

#include "platform/desktop/Services.h"
#include "platform/foundation/Guarded.h"

#include <QMap>
#include <QStringList>

#include <memory>
#include <vector>

namespace cantorel::desktop {

// What was asked of services in software, in order, one text a call: its name, a blank, its argument. Shared by the
// services and whoever looks; any thread.
class CallRecord {
public:
    QStringList calls() const;
    // From now on calls of that name fail with the detail.
    void failOn(const QString &name, const QString &detail);

    // For the services: notes the call and answers its failure, if one is planned.
    foundation::Result<void> note(const QString &name, const QString &argument = {});

private:
    struct State {
        std::vector<QString> calls;
        QMap<QString, QString> failures;
    };
    foundation::Guarded<State> mState;
};

// Services that only record: "compile", "execute", "hold", "release", "hold machine", "release
// machine", "reveal", "open", "play", and what
// RecordedMediaControls and RecordedNotifications note.
Services recordedServices(const std::shared_ptr<CallRecord> &record);

} // namespace cantorel::desktop
