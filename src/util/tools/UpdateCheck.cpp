#include "util/tools/UpdateCheck.h"

#include "lang/Lang.h"
#include "log/CommLog.h"
#include "platform/foundation/XmlDocument.h"
#include "settings/AppSettings.h"
#include "util/ToolString.h"
#include "util/easyHTTP.h"

#include <QDateTime>

#include <algorithm>
#include <array>

namespace cantorel {

namespace {

const QString kUserAgent = QStringLiteral("Tessolar");

constexpr int kLargestPart = 999;

using VersionParts = std::array<int, 3>;

VersionParts partsOfID(int version) { return {version / 100, version / 10 % 10, version % 10}; }

// "2.5.1" and "251" are both 2, 5 and 1; empty for any other text.
VersionParts versionParts(const QString &text) {
    const QStringList parts = text.trimmed().split(QLatin1Char('.'));
    if (parts.size() == 1)
        return partsOfID(std::clamp(parts[0].toInt(), 0, kLargestPart * 100)); // 0 when it is no number
    VersionParts version{};
    for (qsizetype i = 0; i < std::min<qsizetype>(3, parts.size()); ++i) {
        bool isNumber = false;
        const int part = parts[i].toInt(&isNumber);
        if (!isNumber || part < 0 || part > kLargestPart)
            return {};
        version[static_cast<std::size_t>(i)] = part;
    }
    return version;
}

} // namespace

int UpdateDescription::versionID() const {
    const auto [first, second, third] = versionParts(AppVersion);
    return second <= 9 && third <= 9 ? first * 100 + second * 10 + third : first * 1'000'000 + second * 1000 + third;
}

bool UpdateDescription::isOffered() const {
    return versionParts(AppVersion) > partsOfID(AppSettings::appVersionID())
           && versionID() != AppSettings::updateSkipVersionID();
}

std::optional<UpdateDescription> UpdateCheck::run(Asked asked, const std::stop_token &stop) {
    if (AppSettings::appDebug())
        return {};
    std::optional<UpdateDescription> known;
    const bool mayRun = mState.with([&](State &state) {
        if (asked == Asked::ByHand)
            known = state.description;
        if (known || state.isRunning || (state.isDone && asked == Asked::Silently))
            return false;
        return state.isRunning = true;
    });
    if (!mayRun)
        return known;
    const auto fetched = fetch(mServer, mLimits, stop);
    mState.with([&](State &state) {
        state.isRunning = false;
        state.isDone = true;
        if (fetched)
            state.description = fetched.value();
    });
    if (!fetched) {
        CommLog::W(fetched.failure().detail);
        return {};
    }
    AppSettings::setLastCheckUpdatesTime(
        ToolString::stringFromDate(QDateTime::currentDateTime(), QStringLiteral("yyyy-MM-dd HH:mm:ss")));
    return fetched.value();
}

foundation::Result<UpdateDescription> UpdateCheck::fetch(const QString &server, const foundation::HttpLimits &limits,
                                                         const std::stop_token &stop) {
    const QString url = address(server.isEmpty() ? AppSettings::supportServer() : server);
    easyHTTP client(limits, stop);
    const QString answer = client.GET(url, kUserAgent);
    if (!answer.isEmpty())
        return parse(answer);
    const foundation::Sentence why = client.failure().isEmpty()
                                         ? QStringLiteral("%1 answered with nothing; try again later.").arg(url)
                                         : client.failure();
    return foundation::Failure{why, QStringLiteral("update check: ") + Lang::english(why)};
}

QString UpdateCheck::address(const QString &server) {
    const QString name = AppSettings::reportName().replace(QLatin1Char(' '), QLatin1Char('-')).toLower();
    const QString base = server.endsWith(QLatin1Char('/')) ? server.chopped(1) : server;
    return base + QStringLiteral("/update/%1.xml").arg(name);
}

foundation::Result<UpdateDescription> UpdateCheck::parse(const QString &text) {
    UpdateDescription description;
    bool describes = false;
    // The text has been decoded already, whatever it says of its encoding.
    if (const auto document = foundation::XmlDocument::parse(text.toUtf8(), "UTF-8"))
        UpdateDescription::fields([&](const char *name, QString UpdateDescription::*field) {
            if (const auto element = document.value().first((QByteArray("//") + name).constData())) {
                description.*field = element->text();
                describes = true;
            }
        });
    if (!describes)
        return foundation::Failure{
            QStringLiteral("The server's answer describes no update; check the server's address."),
            QStringLiteral("update check: no description: %1").arg(text.left(80).simplified())};
    description.AppChangeLogs.replace(QStringLiteral("[CRLF]"), QStringLiteral("\n"));
    return description;
}

} // namespace cantorel
