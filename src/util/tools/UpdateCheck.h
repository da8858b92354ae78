#pragma once

#include "platform/foundation/Guarded.h"
#include "platform/foundation/HttpClient.h"

#include <QString>

#include <optional>

namespace cantorel {

// What the maker says of the latest release; a text that is not said is null.
struct UpdateDescription {
    QString AppID;
    QString AppVersion;
    QString AppUpdateAddress;
    QString AppUpdateFiles;
    QString AppUsers;
    QString AppChangeLogs;
    QString AppUpdateSize;
    QString AppFailedUpdateDownloadURL;

    // Each field by its name, in the order above.
    template <class Visitor> static void fields(Visitor &&visitor) {
        visitor("AppID", &UpdateDescription::AppID);
        visitor("AppVersion", &UpdateDescription::AppVersion);
        visitor("AppUpdateAddress", &UpdateDescription::AppUpdateAddress);
        visitor("AppUpdateFiles", &UpdateDescription::AppUpdateFiles);
        visitor("AppUsers", &UpdateDescription::AppUsers);
        visitor("AppChangeLogs", &UpdateDescription::AppChangeLogs);
        visitor("AppUpdateSize", &UpdateDescription::AppUpdateSize);
        visitor("AppFailedUpdateDownloadURL", &UpdateDescription::AppFailedUpdateDownloadURL);
    }

    // The version as a number by which it is skipped: "2.5.1" and "251" are 251, "2.10.1" is 2010001; 0 when it is
    // none. Such numbers tell versions apart, but not which is newer.
    int versionID() const;
    // Newer than this program, and not a version that the person wants to skip.
    bool isOffered() const;
};

// Asks the maker's server for the latest release, once in a process. Made by the composition root and shared by all who
// check; run() on any thread but the main one.
class UpdateCheck {
public:
    // What it asks, at most; the description is a page of text.
    static constexpr foundation::HttpLimits kLimits{.time = std::chrono::seconds(30), .bytes = 1 << 20};

    // Without a server, the maker's.
    explicit UpdateCheck(const QString &server = {}, const foundation::HttpLimits &limits = kLimits)
        : mServer(server), mLimits(limits) {}

    enum class Asked { Silently, ByHand };

    // What the server describes. Nothing in debug mode, when a check has been done or is running already, and when no
    // description comes. By hand, a check that has been done answers what it brought, or is tried again when it brought
    // nothing.
    std::optional<UpdateDescription> run(Asked asked = Asked::Silently, const std::stop_token &stop = {});

    // One request, whatever has been done before. Fails with one sentence.
    static foundation::Result<UpdateDescription>
    fetch(const QString &server = {}, const foundation::HttpLimits &limits = kLimits, const std::stop_token &stop = {});
    // Where the description lies on that server.
    static QString address(const QString &server);
    // Read tolerantly; fails for a text that describes no release.
    static foundation::Result<UpdateDescription> parse(const QString &text);

private:
    struct State {
        bool isRunning = false, isDone = false;
        std::optional<UpdateDescription> description;
    };

    const QString mServer;
    const foundation::HttpLimits mLimits;
    foundation::Guarded<State> mState;
};

} // namespace cantorel
