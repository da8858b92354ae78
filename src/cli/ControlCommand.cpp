#include "cli/Commands.h"
#include "cli/RunningInstance.h"
#include "recording/control/RecordingControl.h"
#include "recording/session/RecordingSpace.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"

#include <CLI/CLI.hpp>

namespace cantorel {

namespace {

struct ControlCommand {
    const char *command, *method, *help;
};

constexpr ControlCommand kCommands[] = {
    {"start", control::kStart, "Has the Cantorel that runs record, if it does not yet"},
    {"stop", control::kStop, "Ends the recording; it is finished and converted as any"},
    {"toggle", control::kToggle, "Starts or ends a recording, as one key for both"},
    {"pause", control::kPause, "Pauses the recording, or lets it go on"},
    {"split", control::kSplit, "Goes on in another file; nothing is lost between the two"},
    {"status", control::kStatus, "What is recorded, and how long the disk still lasts"}};

QString textOf(const QVariantMap &status) {
    QStringList parts{status.value(QStringLiteral("state")).toString()};
    parts[0].replace(0, 1, parts[0].at(0).toUpper());
    if (const QString file = status.value(QStringLiteral("file")).toString(); !file.isEmpty())
        parts << file << ToolString::stringFromDuration(status.value(QStringLiteral("seconds")).toDouble())
              << ToolFile::fileSizeFormatterToString(status.value(QStringLiteral("bytes")).toLongLong()).trimmed();
    if (const QVariant left = status.value(QStringLiteral("timeLeftSeconds")); left.isValid())
        parts << QStringLiteral("the disk lasts for %1").arg(timeLeftText(left.toLongLong()));
    return parts.join(QStringLiteral("; "));
}

// What is not known is null.
QJsonObject jsonOf(const QVariantMap &status) {
    QJsonObject json;
    for (const char *key : {"state", "file", "seconds", "bytes", "timeLeftSeconds"})
        json.insert(QLatin1String(key), QJsonValue::fromVariant(status.value(QLatin1String(key))));
    return json;
}

Outcome ask(const CommandSession &session, const char *method) {
    auto answer = askRunningInstance(method);
    // Where nothing runs, nothing is recorded; whatever else was asked for can't be done.
    if (!answer && method == control::kStatus)
        answer = RecordingControl::stoppedStatus();
    if (!answer)
        return Outcome::failed(QStringLiteral("No Cantorel is running; start one with \"cantorel-cli record\" or "
                                              "\"cantorel-cli tasks run\"."));
    if (!*answer)
        return Outcome::failed(answer->failure().sentence);
    session.answer(jsonOf(answer->value()), textOf(answer->value()));
    return Outcome::done();
}

} // namespace

void addControlCommands(CLI::App &root, CommandSession &session) {
    for (const ControlCommand &each : kCommands)
        addVerb(root, session, each.command, each.help, std::string(each.command) + " --json",
                [&session, method = each.method] { return ask(session, method); });
}

} // namespace cantorel
