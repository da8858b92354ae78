#include "app/start/SignalWatch.h"
#include "cli/Commands.h"
#include "cli/RunningInstance.h"
#include "lang/Lang.h"
#include "log/GuardedAction.h"
#include "platform/foundation/Console.h"
#include "settings/AppSettings.h"
#include "tags/TagReading.h"
#include "tags/TagWriting.h"
#include "tags/identify/CommAudioIdentify.h"
#include "tags/identify/OwnSongs.h"
#include "tags/identify/RecognisedName.h"
#include "tags/identify/SongScan.h"
#include "tags/index/SongStore.h"

#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QJsonArray>

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <optional>
#include <stop_token>
#include <thread>
#include <vector>

namespace cantorel {

namespace {

constexpr int kStoppedBySignal = 130;

struct Arguments {
    std::vector<std::string> files, folders;
    std::string server;
    bool isLocal = false, forgets = false;
};

// As the options have them. The first time says what is sent.
RecognitionServices services(const Arguments &arguments) {
    if (arguments.isLocal)
        return {};
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
    CommAudioIdentify recogniser(AppSettings::TessolarConverterPath(), services(arguments), {},
                                 arguments.isLocal ? songStorePath() : CommAudioIdentify::songsInUse());
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
    const auto written = writeTags({{now, recognisedTags(*music)}});
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

// Reads the songs of these folders, and of those named before, as the window does from then on.
Outcome scan(const CommandSession &session, const Arguments &arguments) {
    const bool isFirst = !AppSettings::isOwnSongs() && AppSettings::ownSongFolders().isEmpty();
    QStringList folders = isFirst ? QStringList() : OwnSongs::folders();
    for (const std::string &name : arguments.folders)
        folders << QDir::cleanPath(QFileInfo(QString::fromStdString(name)).absoluteFilePath());
    folders.removeDuplicates();
    OwnSongs::setFolders(folders);
    AppSettings::setOwnSongs(true);

    std::stop_source stop;
    const SignalWatch signals([&stop] { stop.request_stop(); }); // before the worker
    QEventLoop loop;
    const bool showsProgress = !session.json && !session.quiet && ::isatty(STDOUT_FILENO);
    const auto show = [](int known) {
        std::fputs(qPrintable(QStringLiteral("\r\033[K%1 songs").arg(known)), stdout);
        std::fflush(stdout);
    };
    SongScan scan{songStorePath(), AppSettings::TessolarConverterPath(), folders, {}, stop.get_token()};
    if (showsProgress)
        scan.progress = [&](int known) { QMetaObject::invokeMethod(&loop, [show, known] { show(known); }); };
    std::optional<foundation::Result<SongScan::Summary>> summary;
    std::thread worker([&] {
        (void)guarded("read songs", [&] { summary = scan.run(); }); // logged there
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec();
    worker.join();
    if (showsProgress)
        std::fputs("\r\033[K", stdout);
    if (!summary)
        return Outcome::failed(QStringLiteral("The songs can't be read; the log says why."));
    if (!*summary)
        return Outcome::failed(summary->failure().sentence);
    const auto &[end, known, read, forgotten] = summary->value();
    if (end == SongScan::End::Elsewhere)
        return Outcome::failed(QStringLiteral("Another Cantorel is reading songs; try again when it is done."));
    if (end == SongScan::End::Stopped)
        return {kStoppedBySignal, QStringLiteral("Stopped by a signal; what was read by then is kept.")};
    session.answer({{QStringLiteral("folders"), QJsonArray::fromStringList(folders)},
                    {QStringLiteral("songs"), known},
                    {QStringLiteral("read"), read},
                    {QStringLiteral("forgotten"), forgotten}},
                   QStringLiteral("Songs known: %1, read now: %2").arg(known).arg(read));
    return Outcome::done();
}

Outcome forget() {
    AppSettings::setOwnSongs(false);
    return SongScan::forget(songStorePath())
               ? Outcome::done()
               : Outcome::failed(QStringLiteral("Another Cantorel is reading songs; try again when it is done."));
}

Outcome run(const CommandSession &session, const Arguments &arguments) {
    if (arguments.forgets)
        return forget();
    if (!arguments.folders.empty())
        if (const Outcome scanned = scan(session, arguments); scanned.status != 0)
            return scanned;
    if (arguments.files.empty() && arguments.folders.empty())
        return Outcome::wrongUsage(QStringLiteral("Name sound files, or a folder with --scan."));
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
    identify.add_option("FILE", arguments->files, "Sound files");
    auto *server = identify.add_option("--server", arguments->server, "Stands for all services")->type_name("URL");
    identify
        .add_option("--scan", arguments->folders,
                    "Learns how the songs in a folder sound, so that any part of one is recognised; nothing is sent")
        ->type_name("FOLDER")
        ->check(CLI::ExistingDirectory)
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    identify.add_flag("--local", arguments->isLocal, "Asks only the songs that were learnt, and no service")
        ->excludes(server);
    identify.add_flag("--forget", arguments->forgets, "Forgets the songs that were learnt, and reads no more");
}

} // namespace cantorel
