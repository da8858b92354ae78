#include "tags/Pictures.h"

#include "platform/foundation/LoadedModule.h"

namespace cantorel {

foundation::Result<const Pictures *> loadPictures() {
    static const auto entry = foundation::loadFunction<PicturesEntryPoint>("cantorel-pictures.so", kPicturesEntryPoint);
    if (!entry)
        return entry.failure();
    return entry.value()();
}

} // namespace cantorel
