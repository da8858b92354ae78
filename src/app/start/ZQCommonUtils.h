#pragma once

#include "platform/foundation/NotificationCenter.h"

#include <QString>

namespace cantorel {

class MainWindowFace;

// What the product says of itself.
struct CommAppInfo {
    QString appID;
    QString identify; // its name as programs know it
    QString appName;  // its name as people read it
    QString version;  // such as "2.5.0"
    QString language; // of the interface, by its name
    QString homeURL;
    QString supportURL;
    QString faqURL;
    QString forumURL;
    QString productURL;
    QString logo; // the name of an image

    // As the settings and the texts have it now.
    static CommAppInfo current();

    bool operator==(const CommAppInfo &) const = default;
};

// Posted with the new record when what is known of the product has changed.
inline constexpr foundation::NotificationName<CommAppInfo> kNotificationAppInfoUpdate{"notification.appInfo.update"};
// Posted when an update is in place and wants the program to start again.
struct RelaunchRequest {};
inline constexpr foundation::NotificationName<RelaunchRequest> kNotificationRelaunchAfterUpdate{"relaunchAfterUpdate"};

// The services that all of the maker's programs share: who the product is, and whether there is a newer one. Made by
// the composition root; main thread.
class ZQCommonUtils {
public:
    virtual ~ZQCommonUtils() = default;

    // Before all else. The parent window outlives the services.
    virtual void initWithCommAppInfo(const CommAppInfo &info, MainWindowFace &parentWindow) = 0;
    virtual void setAppInfo(const CommAppInfo &info) = 0;
    // Looks for a newer version beside the main thread; silent if there is none or the server does not answer.
    virtual void checkSilent() = 0;
    // The program ends: stops waiting for the server.
    virtual void stopWaiting() = 0;
    // Ends whatever is under way, without waiting for others.
    virtual void dispose() = 0;
};

} // namespace cantorel
