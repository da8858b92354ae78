#pragma once

#include "platform/foundation/Handle.h"

#include <pipewire/extensions/metadata.h>
#include <pipewire/pipewire.h>

namespace cantorel::hal {

// Every release function of the PipeWire library is named here and nowhere else.
using ThreadLoopHandle = foundation::Handle<pw_thread_loop, pw_thread_loop_destroy>;
using ContextHandle = foundation::Handle<pw_context, pw_context_destroy>;
using ProxyHandle = foundation::Handle<pw_proxy, pw_proxy_destroy>;
using StreamHandle = foundation::Handle<pw_stream, pw_stream_destroy>;

struct DisconnectCore {
    void operator()(pw_core *core) const noexcept { pw_core_disconnect(core); }
};
using CoreHandle = std::unique_ptr<pw_core, DisconnectCore>;

// A timer or another source of events of a loop; ends before it, under its lock.
struct DestroyLoopSource {
    pw_loop *loop = nullptr;
    void operator()(spa_source *source) const noexcept { pw_loop_destroy_source(loop, source); }
};
using LoopSourceHandle = std::unique_ptr<spa_source, DestroyLoopSource>;

// A registered listener; removed with its holder, which therefore ends before the object that it listens to.
struct Hook {
    Hook() = default;
    ~Hook() { remove(); }
    Hook(const Hook &) = delete;
    Hook &operator=(const Hook &) = delete;
    void remove() {
        if (hook.link.next)
            spa_hook_remove(&hook);
        hook = {};
    }
    spa_hook hook = {};
};

// Holds the loop's lock, which every call of the library off the loop's thread needs. May be nested.
class LoopLock {
public:
    explicit LoopLock(pw_thread_loop *loop) : mLoop(loop) { pw_thread_loop_lock(mLoop); }
    ~LoopLock() { pw_thread_loop_unlock(mLoop); }
    LoopLock(const LoopLock &) = delete;
    LoopLock &operator=(const LoopLock &) = delete;

private:
    pw_thread_loop *mLoop;
};

} // namespace cantorel::hal
