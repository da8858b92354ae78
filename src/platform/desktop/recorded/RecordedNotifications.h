#pragma once

#include "platform/desktop/Notifications.h"
#include "platform/desktop/recorded/RecordedServices.h"

#include <map>

namespace cantorel::desktop {

// A desktop in software that shows messages: notes "notify TAG: TITLE | TEXT | LABEL ..." and "close TAG", and is the
// person who presses them.
class RecordedNotifications : public Notifications {
public:
    explicit RecordedNotifications(std::shared_ptr<CallRecord> record) : mRecord(std::move(record)) {}

    // Where it is false, every message is refused.
    bool hasServer = true;
    bool isShown(const QString &tag) const { return mShown.contains(tag); }
    // Acts as the person on a shown message. A pressed message disappears unless it is lasting.
    void press(const QString &tag, const QString &action);
    void putAway(const QString &tag);

    void show(const QString &tag, const Notification &notification) override;
    void close(const QString &tag) override;

private:
    const std::shared_ptr<CallRecord> mRecord;
    std::map<QString, Notification> mShown;
};

} // namespace cantorel::desktop
