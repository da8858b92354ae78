#include "app/start/ZQCommonUtils.h"

#include "lang/Lang.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaultFunctions.h"

namespace cantorel {

CommAppInfo CommAppInfo::current() {
    const auto page = [](const char *name) {
        return AppSettings::supportServer() + QLatin1Char('/') + QLatin1String(name);
    };
    return {.appID = QString::fromLatin1(kBundleIdentifier),
            .identify = AppSettings::appIdenitfyName(),
            .appName = Lang::commAppName(),
            .version = AppSettings::appVersion(),
            .language = AppSettings::appLanguage(),
            .homeURL = page(""),
            .supportURL = page("support"),
            .faqURL = page("faq"),
            .forumURL = page("forum"),
            .productURL = page("cantorel"),
            .logo = QStringLiteral("logo")};
}

} // namespace cantorel
