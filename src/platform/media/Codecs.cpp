#include "platform/media/Codecs.h"

#include "platform/foundation/LoadedModule.h"
#include "platform/media/MediaFailures.h"

namespace cantorel::media {

foundation::Result<const Codecs *> loadCodecs() {
    static const auto codecs = []() -> foundation::Result<const Codecs *> {
        const auto entry = foundation::loadEntryPoint("cantorel-ffmpeg.so", kCodecsEntryPoint);
        if (!entry)
            return failures::codecsMissing(entry.failure().detail);
        return reinterpret_cast<CodecsEntryPoint>(entry.value())();
    }();
    return codecs;
}

} // namespace cantorel::media
