#pragma once

#include "platform/desktop/FileManagerReveal.h"
#include "platform/desktop/Notifications.h"

#include <QObject>
#include <QString>

#include <functional>

namespace cantorel {

// Shows desktop messages about recordings while the window is hidden: the latest finished file, the latest trouble, and
// a sign that recording goes on. Owned by the window; main thread.
class RecordingNotices : public QObject {
public:
    // Where the messages lead. All are set.
    struct Actions {
        std::function<void()> showWindow, stopRecording;
        // Used where the desktop shows no messages.
        std::function<void(const QString &title, const QString &text)> tellOtherwise;
    };
    // Null where the desktop shows no messages, or has no file manager; else they outlive the notices.
    RecordingNotices(Actions actions, desktop::Notifications *notifications, desktop::FileManagerReveal *files)
        : mActions(std::move(actions)), mNotifications(notifications), mFiles(files) {}
    ~RecordingNotices() override;

    // Replaces the message about the last file.
    void ready(const QString &file);
    void tell(const QString &title, const QString &text);

    // Shows a lasting message that a recording runs, with a button that stops it. isThere: called with true once the
    // message is visible, and with false when it has disappeared without endSign().
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
