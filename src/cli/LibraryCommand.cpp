#include "app/start/Hardware.h"
#include "cli/Commands.h"
#include "cli/RunningInstance.h"
#include "platform/foundation/Clock.h"
#include "recording/control/ListRequests.h"
#include "recording/control/RecordingControl.h"
#include "util/ToolFile.h"

#include <QFileInfo>

#include <CLI/CLI.hpp>
#include <memory>

namespace cantorel {

namespace {

void show(const CommandSession &session, const RecordedAudioInfo &item) {
    const RecordedAudioFields fields = item.fields();
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

// The list as it is stored.
class StoredRecordings {
public:
    StoredRecordings() { mList.initRecordedList(); }
    RecordedList &list() { return mList; }

private:
    foundation::WallClock mClock;
    RecordedList mList{Hardware::stateFolder(), mClock};
};

Outcome list(const CommandSession &session) {
    StoredRecordings recordings;
    for (const auto &item : recordings.list().items())
        show(session, *item);
    return Outcome::done();
}

const QString kTheList = QStringLiteral("the list");

QString pathOf(const std::string &file) { return QFileInfo(QString::fromStdString(file)).absoluteFilePath(); }

Outcome remove(const std::string &name, bool deletesFile) {
    const QString file = pathOf(name);
    return changeOwnedList(
        kTheList,
        [&] {
            StoredRecordings recordings;
            const auto removed = removeRecording(recordings.list(), file, deletesFile);
            return removed ? Outcome::done() : Outcome::failed(removed.failure().sentence);
        },
        deletesFile ? control::kDeleteRecording : control::kRemoveRecording, {file}, [](const QVariantMap &) {});
}

Outcome rename(const CommandSession &session, const std::string &from, const QString &name) {
    const QString file = pathOf(from);
    const auto showItem = [&](StoredRecordings &recordings, const QString &renamed) {
        if (const RecordedAudioInfo *item = recordings.list().itemWithFile(renamed))
            show(session, *item);
    };
    return changeOwnedList(
        kTheList,
        [&] {
            StoredRecordings recordings;
            const auto renamed = renameRecording(recordings.list(), file, name);
            if (!renamed)
                return Outcome::failed(renamed.failure().sentence);
            showItem(recordings, renamed.value());
            return Outcome::done();
        },
        control::kRenameRecording, {file, name},
        [&](const QVariantMap &answer) {
            StoredRecordings recordings;
            showItem(recordings, answer.value(QStringLiteral("file")).toString());
        });
}

} // namespace

Outcome renameInList(const QString &file, const QString &name) {
    if (StoredRecordings().list().itemWithFile(file))
        return changeOwnedList(
            kTheList,
            [&] {
                StoredRecordings recordings;
                const auto renamed = renameRecording(recordings.list(), file, name);
                return renamed ? Outcome::done() : Outcome::failed(renamed.failure().sentence);
            },
            control::kRenameRecording, {file, name}, [](const QVariantMap &) {});
    const QFileInfo info(file);
    const QString suffix = info.suffix().isEmpty() ? QString() : QLatin1Char('.') + info.suffix();
    QString why;
    return ToolFile::moveFileFromPath(file, info.path() + QLatin1Char('/') + name + suffix, &why)
               ? Outcome::done()
               : Outcome::failed(why);
}

Outcome takeTagsIntoList(const QStringList &files) {
    bool isDone = false; // by ourselves, for all of them
    for (const QString &file : files) {
        const Outcome taken = changeOwnedList(
            kTheList,
            [&] {
                StoredRecordings recordings;
                recordings.list().takeTags(files);
                isDone = true;
                return recordings.list().unsaved().isEmpty() ? Outcome::done()
                                                             : Outcome::failed(recordings.list().unsaved());
            },
            control::kTagsWritten, {file}, [](const QVariantMap &) {});
        if (isDone || taken.status != 0)
            return taken;
    }
    return Outcome::done();
}

void addLibraryCommand(CLI::App &root, CommandSession &session) {
    struct Arguments {
        std::string file, name;
        bool deletes = false;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App &library = addVerb(root, session, "library", "Shows and changes the list of recordings", "library list");
    addVerb(library, session, "list", "All recordings in the order of the list", "library list --json",
            [&session] { return list(session); });

    CLI::App &removing =
        addVerb(library, session, "remove", "Takes a recording out of the list", "library remove ~/Music/Track1.mp3",
                [arguments] { return remove(arguments->file, arguments->deletes); });
    removing.add_option("FILE", arguments->file, "The recording's file")->required();
    removing.add_flag("--delete", arguments->deletes, "Deletes the file as well");

    CLI::App &renaming =
        addVerb(library, session, "rename", "Renames a recording and its file",
                "library rename ~/Music/Track1.mp3 \"Evening concert\"", [&session, arguments] {
                    const QString name = QString::fromStdString(arguments->name);
                    if (ToolFile::cleanFileName(name).isEmpty())
                        return Outcome::wrongUsage(
                            QStringLiteral("\"%1\" can't be the name of a file; choose another.").arg(name));
                    return rename(session, arguments->file, name);
                });
    renaming.add_option("FILE", arguments->file, "The recording's file")->required();
    renaming.add_option("NAME", arguments->name, "The new name, without folder and extension")->required();
}

} // namespace cantorel
