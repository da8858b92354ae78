#include "app/start/MainWindowFace.h"

#include "lang/Lang.h"
#include "platform/desktop/Services.h"
#include "recording/library/RecordedAudioInfo.h"
#include "settings/AppSettings.h"

#include <cmath>

namespace cantorel {

namespace {

// The first toolkit on which editor and converter work.
constexpr long kToolkitOfTheEditor = 1138;

} // namespace

void MainWindowFace::applicationDidFinishLaunching() {
    auto &center = foundation::NotificationCenter::defaultCenter();
    Lang::useLanguage(AppSettings::appLanguage());
    mLanguage =
        center.subscribe<QString>(kNotificationChangeLanguage, [this](const QString &) { changeLanguageText(); });
    if (std::lround(desktop::InstalledServices::current().version.toolkitVersion) < kToolkitOfTheEditor)
        hideEditorAndConverter();
    mStatus = center.subscribe<RecordedStatusChange>(
        kNotificationRecordedAudioInfoStatusDidChange,
        [this](const RecordedStatusChange &) { notificationRecordedAudioInfoStatusDidChnage(); });
    setAudioInputSelectedStatus();
    setUpTitleBar();
}

} // namespace cantorel
