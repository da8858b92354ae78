#include "app/SignalWatch.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>

namespace cantorel {

SignalWatch::SignalWatch(std::function<void()> onSignal) : mOnSignal(std::move(onSignal)) {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&signals, number);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    mDescriptor = foundation::FileDescriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
    mNotifier = std::make_unique<QSocketNotifier>(mDescriptor.get(), QSocketNotifier::Read);
    connect(mNotifier.get(), &QSocketNotifier::activated, this, [this] { read(); });
}

void SignalWatch::read() {
    signalfd_siginfo info = {};
    while (::read(mDescriptor.get(), &info, sizeof info) == sizeof info)
        mOnSignal();
}

} // namespace cantorel
