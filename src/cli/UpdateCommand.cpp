#include "cli/Commands.h"
#include "settings/AppSettings.h"
#include "util/tools/UpdateCheck.h"

#include <QUrl>

#include <CLI/CLI.hpp>
#include <memory>

namespace cantorel {

namespace {

QString keyOf(const char *field) {
    QString key = QString::fromLatin1(field);
    key[0] = key[0].toLower();
    return key;
}

QString sentenceOf(const UpdateDescription &description) {
    const QString what = description.isOffered()
                             ? QStringLiteral("Version %1 is available").arg(description.AppVersion)
                             : QStringLiteral("Version %1 is the latest").arg(description.AppVersion);
    const QString where = description.isOffered() && !description.AppUpdateAddress.isEmpty()
                              ? QStringLiteral(": %1").arg(description.AppUpdateAddress)
                              : QStringLiteral("; this is %1.").arg(AppSettings::appVersion());
    const QString changes =
        description.AppChangeLogs.isEmpty() ? QString() : QLatin1Char('\n') + description.AppChangeLogs.trimmed();
    return what + where + changes;
}

Outcome check(const CommandSession &session, const QString &server) {
    const QUrl url(server);
    const bool isWeb = url.scheme() == QStringLiteral("http") || url.scheme() == QStringLiteral("https");
    if (!server.isEmpty() && (!isWeb || url.host().isEmpty()))
        return Outcome::wrongUsage(
            QStringLiteral("\"%1\" is no server; it looks like \"https://example.com\".").arg(server));
    const auto fetched = UpdateCheck::fetch(server);
    if (!fetched)
        return Outcome::failed(fetched.failure().sentence);
    QJsonObject object;
    UpdateDescription::fields([&](const char *name, QString UpdateDescription::*field) {
        const QString &text = fetched.value().*field;
        object.insert(keyOf(name), text.isNull() ? QJsonValue() : QJsonValue(text));
    });
    session.answer(object, sentenceOf(fetched.value()));
    return Outcome::done();
}

} // namespace

void addUpdateCommand(CLI::App &root, CommandSession &session) {
    const auto server = std::make_shared<std::string>();
    CLI::App &update = addVerb(root, session, "update", "Looks for a newer version", "update check");
    addVerb(update, session, "check", "Fetches the description of the latest release", "update check --json",
            [&session, server] { return check(session, QString::fromStdString(*server)); })
        .add_option("--server", *server, "Another server than the maker's")
        ->type_name("URL");
}

} // namespace cantorel
