#pragma once

#include "platform/desktop/FileManagerReveal.h"
#include "platform/desktop/Notifications.h"

#include <QObject>
#include <QString>

#include <functional>

namespace cantorel {

// Tells the person on the desktop what becomes of recordings while the window is not looked at: the latest file that is
// ready, the latest trouble, and that a recording goes on without its window. Owned by the window; main thread.
class RecordingNotices : public QObject {
public:
    // Where the messages lead. All are set.
    struct Actions {
        std::function<void()> showWindow, stopRecording;
        // Tells it some other way, where the desktop shows no messages.
        std::function<void(const QString &title, const QString &text)> tellOtherwise;
    };
    // Null where the desktop shows no messages, or has no file manager; else they outlive the notices.
    RecordingNotices(Actions actions, desktop::Notifications *notifications, desktop::FileManagerReveal *files)
        : mActions(std::move(actions)), mNotifications(notifications), mFiles(files) {}
    ~RecordingNotices() override;

    // In the place of the file before.
    void ready(const QString &file);
    void tell(const QString &title, const QString &text);

    // A lasting sign that something is recorded, which stops it. isThere: told true once it can be seen, and false when
    // it has gone without endSign().
    void showSign(std::function<void(bool isThere)> isThere);
    void endSign();

private:
    void show(const QString &tag, const desktop::Notification &notification) const;
    void reveal(const QString &file) const;

    const Actions mActions;
    desktop::Notifications *const mNotifications;
    desktop::FileManagerReveal *const mFiles;
};

} // namespace cantorel
