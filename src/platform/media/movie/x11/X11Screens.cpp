#include "platform/media/movie/x11/X11Screens.h"

#include "platform/media/movie/MovieFailures.h"
#include "platform/media/movie/ScreenModule.h"
#include "platform/media/movie/x11/X11Source.h"

#include <algorithm>
#include <utility>

namespace cantorel::media {

using foundation::Result;

Result<std::vector<Display>> X11Screens::displays() {
    const auto display = X11Display::open();
    if (!display)
        return display.failure();
    auto found = display.value().displays();
    if (found.empty())
        return failures::noDisplay(QStringLiteral("the X server has gone"));
    return found;
}

Result<std::unique_ptr<PictureSource>> X11Screens::openDisplay(const DisplayRequest &request) {
    auto display = X11Display::open();
    if (!display)
        return display.failure();
    const auto found = display.value().displays();
    const auto shown = std::find_if(found.begin(), found.end(), [&](const Display &one) {
        return request.display == 0 || one.id == request.display;
    });
    if (shown == found.end())
        return failures::displayMissing(QStringLiteral("display %1").arg(request.display));
    if (request.region && !shown->frame.contains(*request.region))
        return failures::regionOutside(QStringLiteral("of %1").arg(shown->name));
    return std::unique_ptr<PictureSource>(std::make_unique<X11Source>(std::move(display).value(), *shown, request));
}

} // namespace cantorel::media

extern "C" __attribute__((visibility("default"))) cantorel::media::PictureSources *cantorel_x11_screens() {
    return new cantorel::media::X11Screens; // the caller's from here on
}
