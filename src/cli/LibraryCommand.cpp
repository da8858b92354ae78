#include "cli/LibraryCommand.h"

#include "cli/Hardware.h"
#include "platform/foundation/Clock.h"
#include "recording/RecordedList.h"
#include "recording/RecordingJournal.h"
#include "util/ToolFile.h"

#include <QFileInfo>

#include <CLI/CLI.hpp>
#include <memory>

namespace cantorel {

namespace {

void show(const CommandSession &session, const RecordedAudioInfo &item) {
    const RecordedAudioFields &fields = item.fields();
    session.answer({{QStringLiteral("file"), fields._fileName},
                    {QStringLiteral("duration"), fields._duration},
                    {QStringLiteral("size"), fields._size},
                    {QStringLiteral("dateAdded"), fields._dateAdded},
                    {QStringLiteral("artist"), fields._artist},
                    {QStringLiteral("album"), fields._album},
                    {QStringLiteral("year"), fields._year}},
                   QStringLiteral("%1  %2  %3  %4")
                       .arg(fields._dateAdded, fields._duration, fields._size.trimmed(), fields._fileName));
}

Outcome list(const CommandSession &session) {
    foundation::WallClock clock;
    RecordedList recordings(Hardware::stateFolder(), clock);
    recordings.initRecordedList();
    for (const auto &item : recordings.items())
        show(session, *item);
    return Outcome::done();
}

// Changes the recording of that file as the only owner of the list.
Outcome change(const std::string &name, const std::function<Outcome(RecordedList &, RecordedAudioInfo &)> &action) {
    RecordingJournal owner(Hardware::stateFolder());
    if (!owner.claim())
        return Outcome::failed(QStringLiteral("Another Cantorel is running and owns the list; stop it first."));
    foundation::WallClock clock;
    RecordedList recordings(Hardware::stateFolder(), clock);
    recordings.initRecordedList();
    const QString file = QFileInfo(QString::fromStdString(name)).absoluteFilePath();
    RecordedAudioInfo *item = recordings.itemWithFile(file);
    if (!item)
        return Outcome::failed(
            QStringLiteral("\"%1\" is not in the list; \"cantorel-cli library list\" shows what is.").arg(file));
    return action(recordings, *item);
}

Outcome rename(const CommandSession &session, RecordedList &recordings, RecordedAudioInfo &item, const QString &name) {
    if (const auto renamed = recordings.rename(item, name); !renamed)
        return Outcome::failed(renamed.failure().sentence);
    show(session, item);
    return Outcome::done();
}

} // namespace

void addLibraryCommand(CLI::App &root, CommandSession &session) {
    struct Arguments {
        std::string file, name;
        bool deletes = false;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App *library = root.add_subcommand("library", "Shows and changes the list of recordings");
    library->require_subcommand(1);
    library->footer("Example: cantorel-cli library list");

    CLI::App *listing = library->add_subcommand("list", "All recordings in the order of the list");
    listing->footer("Example: cantorel-cli library list --json");
    listing->callback([&session] { session.action = [&session] { return list(session); }; });

    CLI::App *removing = library->add_subcommand("remove", "Takes a recording out of the list");
    removing->add_option("FILE", arguments->file, "The recording's file")->required();
    removing->add_flag("--delete", arguments->deletes, "Deletes the file as well");
    removing->footer("Example: cantorel-cli library remove ~/Music/Track1.mp3");
    removing->callback([&session, arguments] {
        session.action = [arguments] {
            return change(arguments->file, [&](RecordedList &recordings, RecordedAudioInfo &item) {
                const QString file = item.getFileName();
                if (arguments->deletes && !QFile::remove(file))
                    return Outcome::failed(
                        QStringLiteral("\"%1\" can't be deleted; check the rights of its folder.").arg(file));
                recordings.remove(item);
                return Outcome::done();
            });
        };
    });

    CLI::App *renaming = library->add_subcommand("rename", "Renames a recording and its file");
    renaming->add_option("FILE", arguments->file, "The recording's file")->required();
    renaming->add_option("NAME", arguments->name, "The new name, without folder and extension")->required();
    renaming->footer("Example: cantorel-cli library rename ~/Music/Track1.mp3 \"Evening concert\"");
    renaming->callback([&session, arguments] {
        session.action = [&session, arguments] {
            const QString name = QString::fromStdString(arguments->name);
            if (ToolFile::cleanFileName(name).isEmpty())
                return Outcome::wrongUsage(
                    QStringLiteral("\"%1\" can't be the name of a file; choose another.").arg(name));
            return change(arguments->file, [&](RecordedList &recordings, RecordedAudioInfo &item) {
                return rename(session, recordings, item, name);
            });
        };
    });
}

} // namespace cantorel
