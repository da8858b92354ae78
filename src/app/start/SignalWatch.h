#pragma once

#include "platform/foundation/FileDescriptor.h"

#include <QObject>
#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace cantorel {

// Brings SIGINT, SIGTERM and SIGHUP to the event loop instead of interrupting anybody. Made before other threads, which
// inherit that the signals are held back, or after holdBack() was called before them; main thread.
class SignalWatch : public QObject {
public:
    // Has the signals wait for a watch; the first thing that a program does whose application object starts threads.
    static void holdBack();

    explicit SignalWatch(std::function<void()> onSignal);

private:
    void read();

    std::function<void()> mOnSignal;
    foundation::FileDescriptor mDescriptor;
    std::unique_ptr<QSocketNotifier> mNotifier;
};

} // namespace cantorel
