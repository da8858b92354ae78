#include "platform/foundation/Handle.h"
#include "tags/identify/Fingerprint.h"

#include <chromaprint.h>

#include <algorithm>
#include <limits>

namespace cantorel {

namespace {

using Context = foundation::Handle<ChromaprintContext, chromaprint_free>;
using Text = foundation::Handle<void, chromaprint_dealloc>;

QByteArray fingerprint(std::span<const std::int16_t> mono, int rate) {
    const Context context(chromaprint_new(CHROMAPRINT_ALGORITHM_DEFAULT));
    if (!context || chromaprint_start(context.get(), rate, 1) != 1)
        return {};
    const int count = static_cast<int>(std::min<std::size_t>(mono.size(), std::numeric_limits<int>::max()));
    char *text = nullptr;
    if (chromaprint_feed(context.get(), mono.data(), count) != 1 || chromaprint_finish(context.get()) != 1
        || chromaprint_get_fingerprint(context.get(), &text) != 1)
        return {};
    const Text owned(text);
    return text;
}

} // namespace

} // namespace cantorel

extern "C" __attribute__((visibility("default"))) QByteArray cantorel_fingerprint(std::span<const std::int16_t> mono,
                                                                                  int rate) {
    return cantorel::fingerprint(mono, rate);
}
