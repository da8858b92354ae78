#include "app/start/DesktopPictures.h"

#include "platform/media/movie/MovieFailures.h"
#include "platform/media/movie/ScreenModule.h"

namespace cantorel {

namespace {

class DesktopPictures : public media::PictureSources {
public:
    foundation::Result<std::vector<media::Display>> displays() override {
        auto *const screens = found();
        return screens ? screens->displays() : media::failures::noDisplay(mMissing);
    }
    foundation::Result<std::unique_ptr<media::PictureSource>>
    openDisplay(const media::DisplayRequest &request) override {
        auto *const screens = found();
        if (!screens)
            return media::failures::noDisplay(mMissing);
        return screens->openDisplay(request);
    }

private:
    media::PictureSources *found() {
        if (!mScreens && qEnvironmentVariableIsEmpty("DISPLAY")) {
            mMissing = QStringLiteral("DISPLAY is not set");
        } else if (!mScreens) {
            auto loaded = media::loadX11Screens();
            if (loaded)
                mScreens = std::move(loaded).value();
            else
                mMissing = loaded.failure().detail;
        }
        return mScreens.get();
    }

    std::unique_ptr<media::PictureSources> mScreens;
    QString mMissing; // why there are none
};

} // namespace

std::unique_ptr<media::PictureSources> desktopPictures() { return std::make_unique<DesktopPictures>(); }

} // namespace cantorel
