#include "app/start/SignalWatch.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>

namespace cantorel {

namespace {

sigset_t watchedSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&signals, number);
    return signals;
}

} // namespace

void SignalWatch::holdBack() {
    const sigset_t signals = watchedSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

SignalWatch::SignalWatch(std::function<void()> onSignal) : mOnSignal(std::move(onSignal)) {
    holdBack();
    const sigset_t signals = watchedSignals();
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
