#pragma once

#include <QString>

#include <functional>
#include <vector>

namespace cantorel::desktop {

// A message on the person's desktop, and who is told what becomes of it. None of the functions needs to be there.
struct Notification {
    struct Action {
        QString id, label;
    };
    // The action of a click on the message itself.
    static QString click() { return QStringLiteral("default"); }

    QString title;
    QString text;                // plain
    std::vector<Action> actions; // a button for each but the click
    // Stays until it is closed, whatever is pressed. Shown only where its actions can be pressed.
    bool isLasting = false;

    std::function<void()> shown = {};
    // Nobody shows it: the desktop has no such messages, or none that last.
    std::function<void()> refused = {};
    std::function<void(const QString &action)> pressed = {};
    // It was put away, or its time is over.
    std::function<void()> ended = {};
};

// Messages on the person's desktop. Nothing is asked of the desktop before the first one, and nobody waits for an
// answer. Main thread.
class Notifications {
public:
    virtual ~Notifications() = default;

    // In the place of the message that was shown under that tag, which hears nothing any more.
    virtual void show(const QString &tag, const Notification &notification) = 0;
    // Takes it away, if it is there still; it hears nothing of it.
    virtual void close(const QString &tag) = 0;
};

} // namespace cantorel::desktop
