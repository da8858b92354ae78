#include "platform/media/Codecs.h"

#include "platform/foundation/LoadedModule.h"
#include "platform/media/MediaFailures.h"

namespace cantorel::media {

foundation::Result<const Codecs *> loadCodecs() {
    static const auto entry = foundation::loadFunction<CodecsEntryPoint>("cantorel-ffmpeg.so", kCodecsEntryPoint);
    if (!entry)
        return failures::codecsMissing(entry.failure().detail);
    return entry.value()();
}

} // namespace cantorel::media
