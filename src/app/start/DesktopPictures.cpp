#include "app/start/DesktopPictures.h"

#include "lang/Lang.h"
#include "platform/media/movie/MovieFailures.h"
#include "platform/media/movie/ScreenModule.h"
#include "platform/media/movie/camera/CameraSources.h"
#include "platform/media/movie/portal/PortalScreenSource.h"
#include "settings/AppSettings.h"
#include "settings/SettingsTable.h"

namespace cantorel {

namespace {

// Under Wayland an X server would show the windows of X programs alone.
bool isWayland() { return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"); }

// There the desktop asks what it shares, unless that is what it was the last time.
constexpr std::uint32_t kAsked = 1, kAsBefore = 2;

QString shareToken() {
    return AppSettings::getFromUserDefaults_String(QString::fromLatin1(setting::kScreenShareToken), {});
}

std::vector<media::Display> sharedDisplays() {
    std::vector<media::Display> found{{kAsked, Lang::windowAskWhatToShare(), {}, 1}};
    if (!shareToken().isEmpty())
        found.insert(found.begin(), {kAsBefore, Lang::windowSharedAsBefore(), {}, 1});
    return found;
}

std::unique_ptr<media::PictureSource> sharedScreen(const media::DisplayRequest &request) {
    media::PortalScreenSource::Options options;
    options.showsCursor = request.showsCursor;
    if (request.display != kAsked)
        options.restoreToken = shareToken;
    options.keepRestoreToken = [](const QString &token) {
        AppSettings::saveToUserDefaultsForKeyObjectValue(QString::fromLatin1(setting::kScreenShareToken), token);
    };
    return std::make_unique<media::PortalScreenSource>([] { return QDBusConnection::sessionBus(); },
                                                       std::move(options));
}

class DesktopPictures : public media::PictureSources {
public:
    foundation::Result<std::vector<media::Display>> displays() override {
        if (isWayland())
            return sharedDisplays();
        auto *const screens = found();
        return screens ? screens->displays() : media::failures::noDisplay(mMissing);
    }
    foundation::Result<std::unique_ptr<media::PictureSource>>
    openDisplay(const media::DisplayRequest &request) override {
        if (isWayland() && request.region)
            return foundation::Failure{QStringLiteral("A part of the screen can't be recorded under Wayland, where you "
                                                      "choose what is shared; leave the region out."),
                                       QStringLiteral("a region under Wayland")};
        if (isWayland())
            return sharedScreen(request);
        auto *const screens = found();
        if (!screens)
            return media::failures::noDisplay(mMissing);
        return screens->openDisplay(request);
    }

    std::vector<media::Camera> cameras() override { return mCameras.cameras(); }
    foundation::Result<std::unique_ptr<media::PictureSource>> openCamera(const QString &uniqueID,
                                                                         media::CameraQuality quality) override {
        return mCameras.openCamera(uniqueID, quality);
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

    media::CameraSources mCameras;
    std::unique_ptr<media::PictureSources> mScreens;
    QString mMissing; // why there are none
};

} // namespace

std::unique_ptr<media::PictureSources> desktopPictures() { return std::make_unique<DesktopPictures>(); }

} // namespace cantorel
