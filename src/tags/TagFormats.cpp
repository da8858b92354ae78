#include "tags/TagFormats.h"

#include "log/CommLog.h"
#include "platform/foundation/LoadedModule.h"

namespace cantorel {

foundation::Result<const TagFormats *> loadTagFormats() {
    static const auto entry = foundation::loadFunction<TagFormatsEntryPoint>("cantorel-tags.so", kTagFormatsEntryPoint);
    if (!entry)
        return entry.failure();
    return entry.value()();
}

const TagFormats *tagFormats() {
    const auto formats = loadTagFormats();
    if (formats)
        return formats.value();
    CommLog::E(formats.failure().detail);
    return nullptr;
}

} // namespace cantorel
