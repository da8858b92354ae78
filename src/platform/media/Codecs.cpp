#include "platform/media/Codecs.h"

#include "platform/media/LoadedModule.h"

namespace cantorel::media {

foundation::Result<const Codecs *> loadCodecs() {
    static const auto codecs = []() -> foundation::Result<const Codecs *> {
        const auto entry = loadEntryPoint("cantorel-ffmpeg.so", kCodecsEntryPoint);
        if (!entry)
            return entry.failure();
        return reinterpret_cast<CodecsEntryPoint>(entry.value())();
    }();
    return codecs;
}

} // namespace cantorel::media
