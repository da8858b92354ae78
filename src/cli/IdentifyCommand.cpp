#include "cli/Commands.h"
#include "cli/RunningInstance.h"
#include "lang/Lang.h"
#include "platform/foundation/Console.h"
#include "settings/AppSettings.h"
#include "tags/TagReading.h"
#include "tags/TagWriting.h"
#include "tags/identify/CommAudioIdentify.h"
#include "tags/identify/RecognisedName.h"

#include <QFileInfo>

#include <CLI/CLI.hpp>
#include <memory>
#include <vector>

namespace cantorel {

namespace {

struct Arguments {
    std::vector<std::string> files;
    std::string server;
};

// As the options have them. The first time says what is sent.
RecognitionServices services(const Arguments &arguments) {
    auto services = arguments.server.empty() ? RecognitionServices::fromSettings()
                                             : RecognitionServices::at(QString::fromStdString(arguments.server));
    if (services.hasAccess() && !services.isAgreed) {
        foundation::printToConsole(Lang::windowIdentifySends() + QLatin1Char('\n'));
        AppSettings::setRecognitionAgreed(true);
        services.isAgreed = true;
    }
    return services;
}

// What went wrong; empty where it was recognised or is just not known.
QString identify(const CommandSession &session, const Arguments &arguments, const QString &file) {
    if (!QFileInfo(file).isFile())
        return QStringLiteral("There is no file \"%1\".").arg(file);
    CommAudioIdentify recogniser(AppSettings::TessolarConverterPath(), services(arguments));
    const auto music = recogniser.Start(file, true);
    if (!music) {
        session.answer({{QStringLiteral("file"), file}, {QStringLiteral("result"), QJsonValue()}},
                       recogniser.proposal()
                           ? QStringLiteral("%1: not sure, perhaps %2 by %3")
                                 .arg(file, recogniser.proposal()->Title(), recogniser.proposal()->Artist())
                           : QStringLiteral("%1: not known").arg(file));
        return recogniser.trouble().isEmpty() ? QString() : Lang::english(recogniser.trouble());
    }
    const QString base = recognisedName(file, *music);
    const QString now = base.isEmpty() ? file : renamedFreely(file, base, [&](const QString &name) {
        return renameInList(file, name).status == 0;
    });
    QString trouble;
    const auto written = writeTags({{now, recognisedTags(readTags(now).value_or(id3Tag()), *music)}});
    if (!written.failures.empty())
        trouble = Lang::english(written.failures.front().failure.sentence);
    else if (const Outcome taken = takeTagsIntoList({now}); taken.status != 0)
        trouble = taken.sentence;
    session.answer(
        {{QStringLiteral("file"), file},
         {QStringLiteral("title"), music->Title()},
         {QStringLiteral("artist"), music->Artist()},
         {QStringLiteral("album"), music->Album()},
         {QStringLiteral("year"), music->Year()},
         {QStringLiteral("renamedTo"), now == file ? QJsonValue() : QJsonValue(now)}},
        QStringLiteral("%1: %2 by %3%4")
            .arg(file, music->Title(), music->Artist(), now == file ? QString() : QStringLiteral(", now ") + now));
    return trouble;
}

Outcome run(const CommandSession &session, const Arguments &arguments) {
    QString last;
    for (const std::string &name : arguments.files) {
        const QString trouble =
            identify(session, arguments, QFileInfo(QString::fromStdString(name)).absoluteFilePath());
        if (trouble.isEmpty())
            continue;
        if (!last.isEmpty())
            foundation::printToConsole(last + QLatin1Char('\n'));
        last = trouble;
    }
    return last.isEmpty() ? Outcome::done() : Outcome::failed(last);
}

} // namespace

void addIdentifyCommand(CLI::App &root, CommandSession &session) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App &identify =
        addVerb(root, session, "identify", "Recognises the music in sound files, names and tags them",
                "identify ~/Music/Track1.mp3", [&session, arguments] { return run(session, *arguments); });
    identify.add_option("FILE", arguments->files, "Sound files")->required();
    identify.add_option("--server", arguments->server, "Stands for all services")->type_name("URL");
}

} // namespace cantorel
