#include "platform/desktop/recorded/RecordedNotifications.h"

namespace cantorel::desktop {

namespace {

template <class... Arguments>
void call(const std::function<void(Arguments...)> &function, const std::type_identity_t<Arguments> &...arguments) {
    if (function)
        function(arguments...);
}

} // namespace

void RecordedNotifications::show(const QString &tag, const Notification &notification) {
    QStringList parts{notification.title, notification.text};
    for (const auto &action : notification.actions)
        parts << action.label;
    (void)mRecord->note(QStringLiteral("notify"), tag + QStringLiteral(": ") + parts.join(QStringLiteral(" | ")));
    if (!hasServer) {
        call(notification.refused);
        return;
    }
    mShown.insert_or_assign(tag, notification);
    call(notification.shown);
}

void RecordedNotifications::close(const QString &tag) {
    if (mShown.erase(tag) > 0)
        (void)mRecord->note(QStringLiteral("close"), tag); // cannot fail
}

void RecordedNotifications::press(const QString &tag, const QString &action) {
    const auto found = mShown.find(tag);
    if (found == mShown.end())
        return;
    const Notification notification = found->second;
    call(notification.pressed, action);
    if (!notification.isLasting)
        putAway(tag);
}

void RecordedNotifications::putAway(const QString &tag) {
    const auto found = mShown.find(tag);
    if (found == mShown.end())
        return;
    const Notification notification = std::move(found->second);
    mShown.erase(found);
    call(notification.ended);
}

} // namespace cantorel::desktop
