#include "platform/media/movie/ScreenModule.h"

#include "platform/foundation/LoadedModule.h"
#include "platform/media/movie/MovieFailures.h"

namespace cantorel::media {

foundation::Result<std::unique_ptr<PictureSources>> loadX11Screens() {
    const auto entry = foundation::loadFunction<X11ScreensEntryPoint>("cantorel-x11-screen.so", kX11ScreensEntryPoint);
    if (!entry)
        return failures::noDisplay(entry.failure().detail);
    return std::unique_ptr<PictureSources>(entry.value()());
}

} // namespace cantorel::media
