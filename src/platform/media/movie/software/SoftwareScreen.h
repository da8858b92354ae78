#pragma once

#include "platform/foundation/Clock.h"
#include "platform/media/movie/PictureSources.h"

#include <cstdint>
#include <vector>

namespace cantorel::media {

// A display in software, which shows pictures of one grey when it is told to. Its sources share it, which outlives
// them. One thread, but for what a sink does.
class SoftwareScreen : public PictureSources {
public:
    // The times of the pictures are those of the clock.
    SoftwareScreen(foundation::Clock &clock, PictureSize size);

    // Hands a picture to the source that runs, and to each that starts from now on.
    void show(std::uint8_t grey);
    // The display has another size from the next picture on.
    void resize(PictureSize size) { mSize = size; }
    // The source that runs has lost its display.
    void end(const foundation::Failure &why);

    foundation::Result<std::vector<Display>> displays() override;
    foundation::Result<std::unique_ptr<PictureSource>> openDisplay(const DisplayRequest &request) override;

private:
    class Source;

    void hand();

    foundation::Clock &mClock;
    PictureSize mSize;
    std::uint8_t mGrey = 0;
    Source *mRunning = nullptr;
    std::vector<std::uint8_t> mPixels;
};

} // namespace cantorel::media
