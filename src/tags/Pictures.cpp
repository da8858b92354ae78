#include "tags/Pictures.h"

#include "platform/foundation/LoadedModule.h"

namespace cantorel {

foundation::Result<const Pictures *> loadPictures() {
    static const auto pictures = []() -> foundation::Result<const Pictures *> {
        const auto entry = foundation::loadEntryPoint("cantorel-pictures.so", kPicturesEntryPoint);
        if (!entry)
            return entry.failure();
        return reinterpret_cast<PicturesEntryPoint>(entry.value())();
    }();
    return pictures;
}

} // namespace cantorel
