#pragma once

#include "platform/media/movie/PictureSources.h"

#include <memory>
#include <vector>

namespace cantorel::media {

// The displays of the X server that the environment names. Main thread.
class X11Screens : public PictureSources {
public:
    foundation::Result<std::vector<Display>> displays() override;
    foundation::Result<std::unique_ptr<PictureSource>> openDisplay(const DisplayRequest &request) override;
};

} // namespace cantorel::media
