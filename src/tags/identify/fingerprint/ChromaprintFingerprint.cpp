#include "platform/foundation/Handle.h"
#include "tags/identify/Fingerprint.h"

#include <chromaprint.h>

#include <algorithm>
#include <limits>

namespace cantorel {

namespace {

using Context = foundation::Handle<ChromaprintContext, chromaprint_free>;
using Memory = foundation::Handle<void, chromaprint_dealloc>;

Fingerprint fingerprint(std::span<const std::int16_t> mono, int rate) {
    const Context context(chromaprint_new(CHROMAPRINT_ALGORITHM_DEFAULT));
    if (!context || chromaprint_start(context.get(), rate, 1) != 1)
        return {};
    const int count = static_cast<int>(std::min<std::size_t>(mono.size(), std::numeric_limits<int>::max()));
    Fingerprint made;
    if (chromaprint_feed(context.get(), mono.data(), count) != 1 || chromaprint_finish(context.get()) != 1)
        return {};
    std::uint32_t *items = nullptr;
    int length = 0;
    if (chromaprint_get_raw_fingerprint(context.get(), &items, &length) == 1) {
        const Memory owned(items);
        made.items.assign(items, items + length);
    }
    char *text = nullptr;
    if (chromaprint_get_fingerprint(context.get(), &text) == 1) {
        const Memory owned(text);
        made.text = text;
    }
    return made;
}

} // namespace

} // namespace cantorel

extern "C" __attribute__((visibility("default"))) cantorel::Fingerprint
cantorel_fingerprint(std::span<const std::int16_t> mono, int rate) {
    return cantorel::fingerprint(mono, rate);
}
