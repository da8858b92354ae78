#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/WeakDelegate.h"

#include <QString>

#include <functional>

namespace cantorel {

// Hears of the application's start and end.
class ApplicationDelegate {
public:
    virtual ~ApplicationDelegate() = default;

    virtual void applicationDidFinishLaunching() {}
    virtual bool applicationShouldTerminate() { return true; }
};

// The application object: the way to the end of the program and to its next start. Made by the composition root; tests
// replace what reaches the machine. Main thread.
class Application {
public:
    virtual ~Application() = default;

    foundation::WeakDelegate<ApplicationDelegate> delegate;

    // Called once, when the end is certain, while the event loop still runs for a moment. May be empty.
    std::function<void()> willEnd;

    // Asks the delegate and ends the event loop. What is asked once it may end is not asked again.
    void terminate();

    // Starts the program again after so many seconds and asks this one to end. Where no shell starts, nothing ends.
    foundation::Result<void> relaunchAfterDelay(float seconds);

    // The shell command for that; the path is quoted, whatever it contains.
    static QString relaunchCommand(float delay, const QString &path);

protected:
    // What is started again.
    virtual QString bundlePath() const;
    // A shell that outlives the program and finds the product's helpers.
    virtual foundation::Result<void> startShell(const QString &command);
    // Ends the event loop.
    virtual void quit();

private:
    bool mIsTerminating = false;
};

} // namespace cantorel
