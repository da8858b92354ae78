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

// The next free name beside the file; its own where the folder takes no other.
QString renamed(const QString &file, const QString &base) {
    const QFileInfo info(file);
    const QString suffix = info.suffix().isEmpty() ? QString() : QLatin1Char('.') + info.suffix();
    for (int n = 0; n < 100; ++n) {
        const QString name = n == 0 ? base : QStringLiteral("%1(%2)").arg(base).arg(n);
        const Outcome moved = renameInList(file, name);
        const QString path = info.path() + QLatin1Char('/') + name + suffix;
        if (moved.status == 0)
            return path;
        if (!QFileInfo::exists(path))
            break;
    }
    return file;
}

// What went wrong; empty where it was recognised or is just not known.
QString identify(const CommandSession &session, const Arguments &arguments, const QString &file) {
    if (!QFileInfo(file).isFile())
        return QStringLiteral("There is no file \"%1\".").arg(file);
    CommAudioIdentify recogniser(AppSettings::TessolarConverterPath(),
                                 arguments.server.empty()
                                     ? RecognitionServices::fromSettings()
                                     : RecognitionServices::at(QString::fromStdString(arguments.server)));
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
    const QString now = base.isEmpty() ? file : renamed(file, base);
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
