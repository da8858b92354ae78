#include "platform/media/movie/pipewire/PipeWireCameras.h"

#include "platform/pipewire/PipeWireHandles.h"

#include <cstring>

namespace cantorel::media {

namespace {

constexpr int kPatience = 1; // seconds

// What one question to the server brings; its events come on the loop's thread, under its lock.
struct Inquiry {
    std::vector<PipeWireCamera> found;
    int asked = 0;
    bool isAnswered = false;
    pw_thread_loop *loop = nullptr;

    void add(std::uint32_t id, const char *type, const spa_dict *properties) {
        const auto value = [properties](const char *key) {
            const char *text = properties ? spa_dict_lookup(properties, key) : nullptr;
            return QString::fromUtf8(text ? text : "");
        };
        if (std::strcmp(type, PW_TYPE_INTERFACE_Node) != 0
            || value(PW_KEY_MEDIA_CLASS) != QStringLiteral("Video/Source"))
            return;
        const QString name = value(PW_KEY_NODE_NAME), description = value(PW_KEY_NODE_DESCRIPTION);
        const QString path = value(PW_KEY_OBJECT_PATH), device = QStringLiteral("v4l2:");
        found.push_back({id,
                         path.startsWith(device) ? path.mid(device.size()) : QString(),
                         {QStringLiteral("pipewire:") + name, description.isEmpty() ? name : description}});
    }
    void finish() {
        isAnswered = true;
        pw_thread_loop_signal(loop, false);
    }
};

} // namespace

std::vector<PipeWireCamera> pipeWireCameras() {
    static const pw_core_events coreEvents = [] {
        pw_core_events table = {};
        table.version = PW_VERSION_CORE_EVENTS;
        table.done = [](void *data, std::uint32_t, int sequence) {
            auto *inquiry = static_cast<Inquiry *>(data);
            if (sequence == inquiry->asked)
                inquiry->finish();
        };
        table.error = [](void *data, std::uint32_t, int, int, const char *) { static_cast<Inquiry *>(data)->finish(); };
        return table;
    }();
    static const pw_registry_events registryEvents = [] {
        pw_registry_events table = {};
        table.version = PW_VERSION_REGISTRY_EVENTS;
        table.global = [](void *data, std::uint32_t id, std::uint32_t, const char *type, std::uint32_t,
                          const spa_dict *properties) { static_cast<Inquiry *>(data)->add(id, type, properties); };
        return table;
    }();
    pw_init(nullptr, nullptr);
    Inquiry inquiry;
    const hal::ThreadLoopHandle loop(pw_thread_loop_new("cameras", nullptr));
    inquiry.loop = loop.get();
    hal::ContextHandle context(pw_context_new(pw_thread_loop_get_loop(loop.get()), nullptr, 0));
    if (!context)
        return {};
    pw_thread_loop_start(loop.get());
    {
        const hal::LoopLock lock(loop.get());
        const hal::CoreHandle core(pw_context_connect(context.get(), nullptr, 0));
        if (core) {
            hal::Hook coreHook, registryHook;
            pw_core_add_listener(core.get(), &coreHook.hook, &coreEvents, &inquiry);
            pw_registry *registry = pw_core_get_registry(core.get(), PW_VERSION_REGISTRY, 0);
            const hal::ProxyHandle proxy(reinterpret_cast<pw_proxy *>(registry));
            pw_registry_add_listener(registry, &registryHook.hook, &registryEvents, &inquiry);
            inquiry.asked = pw_core_sync(core.get(), PW_ID_CORE, 0);
            while (!inquiry.isAnswered && pw_thread_loop_timed_wait(loop.get(), kPatience) == 0) {
            }
            registryHook.remove(); // before the proxy goes
        }
    }
    pw_thread_loop_stop(loop.get());
    return std::move(inquiry.found);
}

} // namespace cantorel::media
