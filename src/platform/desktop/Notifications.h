#pragma once

#include <QString>

#include <functional>
#include <vector>

namespace cantorel::desktop {

// A message on the person's desktop, with callbacks for what becomes of it. All callbacks are optional.
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
    // The desktop cannot show it: it has no messages, or none that stay.
    std::function<void()> refused = {};
    std::function<void(const QString &action)> pressed = {};
    // It was put away, or its time is over.
    std::function<void()> ended = {};
};

// Messages on the person's desktop. The desktop is not contacted before the first one, and no call waits for its
// answer. Main thread.
class Notifications {
public:
    virtual ~Notifications() = default;

    // Replaces the message shown under that tag; its callbacks are not called any more.
    virtual void show(const QString &tag, const Notification &notification) = 0;
    // Removes it if it is still shown, without calling its callbacks.
    virtual void close(const QString &tag) = 0;
};

} // namespace cantorel::desktop
