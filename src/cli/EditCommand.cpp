#include "app/start/SignalWatch.h"
#include "cli/Commands.h"
#include "cli/TagOptions.h"
#include "editor/operations/ZQAudioEditor.h"
#include "editor/operations/ZQAudioInserter.h"
#include "lang/Lang.h"
#include "platform/media/asset/AssetFailures.h"
#include "platform/media/asset/OpenAsset.h"
#include "platform/media/export/ExportSession.h"
#include "settings/SettingsTable.h"
#include "settings/UserDefaultFunctions.h"
#include "tags/AudioIdentify.h"
#include "util/ToolFile.h"

#include <QEventLoop>
#include <QFileInfo>
#include <QJsonArray>
#include <QRegularExpression>
#include <QTimer>

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace cantorel {

namespace {

using foundation::Result;
using media::AssetPointer;

constexpr int kStoppedBySignal = 130;
constexpr int kProgressMilliseconds = 200;

struct Arguments {
    std::string file, format = "mp3", output;
    std::vector<std::string> operations, selections, names, titles; // the last two of the parts
    bool joins = false, parts = false;
    TagOptions tags;
};

// What one --op asks for.
struct Operation {
    InsertType type = InsertType::Silence;
    QString file;
    double at = 0, length = 0; // seconds
};

// Nothing for what is no operation.
std::optional<Operation> operationIn(const QString &text) {
    static const QRegularExpression silence(QStringLiteral(R"(\Asilence@(\d+(?:\.\d+)?):(\d+(?:\.\d+)?)\z)"));
    static const QRegularExpression append(QStringLiteral(R"(\Aappend=(.+)\z)"));
    static const QRegularExpression other(QStringLiteral(R"(\A(insert|mix|overwrite)=(.+)@(\d+(?:\.\d+)?)\z)"));
    if (const auto found = silence.match(text); found.hasMatch())
        return Operation{InsertType::Silence, {}, found.captured(1).toDouble(), found.captured(2).toDouble()};
    if (const auto found = append.match(text); found.hasMatch())
        return Operation{InsertType::Append, found.captured(1), 0, 0};
    if (const auto found = other.match(text); found.hasMatch()) {
        const QString name = found.captured(1);
        return Operation{name == QLatin1String("insert") ? InsertType::Insert
                         : name == QLatin1String("mix")  ? InsertType::Mix
                                                         : InsertType::Overwrite,
                         found.captured(2), found.captured(3).toDouble(), 0};
    }
    return {};
}

std::optional<CutRange> selectionIn(const QString &text) {
    static const QRegularExpression range(QStringLiteral(R"(\A(\d+(?:\.\d+)?)-(\d+(?:\.\d+)?)\z)"));
    const auto found = range.match(text);
    return found.hasMatch() ? std::optional(CutRange{found.captured(1).toDouble(), found.captured(2).toDouble()})
                            : std::nullopt;
}

Result<AssetPointer> open(const QString &file) {
    auto opened = media::openAsset(QUrl::fromLocalFile(QFileInfo(file).absoluteFilePath()));
    if (opened && (opened.value()->format().channels == 0 || !opened.value()->isPlayable()))
        return media::failures::notSound(file, QStringLiteral("no sound in it"));
    return opened;
}

Result<AssetPointer> applied(const Operation &operation, const AssetPointer &asset) {
    AssetPointer other;
    if (operation.type != InsertType::Silence) {
        auto opened = open(operation.file);
        if (!opened)
            return opened;
        other = opened.value();
    }
    const media::MediaTime length = other ? other->duration() : media::MediaTime{milliseconds(operation.length), 1000};
    return ZQAudioInserter().insertAudioAsset(other, asset, operation.type, {{0, length.timescale}, length},
                                              {milliseconds(operation.at), 1000});
}

// Why it can't be exported; else it ends at the end of the sound at the latest.
QString trim(CutRange &range, double duration) {
    if (milliseconds(range.start) >= milliseconds(range.end))
        return QStringLiteral("A selection begins at %1 s and ends at %2 s; its start has to lie before its end.")
            .arg(range.start)
            .arg(range.end);
    if (range.start >= duration)
        return QStringLiteral("A selection begins at %1 s, but the sound ends at %2 s; choose an earlier one.")
            .arg(range.start)
            .arg(duration);
    range.end = std::min(range.end, std::ceil(duration * 1000) / 1000);
    return {};
}

// The path of the M4A that is exported: the name may bear the extension of a type, which is not the one that counts.
QString exportPath(const std::string &output) {
    static const QStringList types{QStringLiteral("mp3"), QStringLiteral("aac"),  QStringLiteral("m4a"),
                                   QStringLiteral("wav"), QStringLiteral("flac"), QStringLiteral("wma")};
    const QString path = QFileInfo(QString::fromStdString(output)).absoluteFilePath();
    const bool hasType = types.contains(QFileInfo(path).suffix().toLower());
    return (hasType ? ToolFile::pathWithExtension(path, {}) : path) + QStringLiteral(".m4a");
}

// Gives each part the name and the title that it is told; answers why it can't have them. An empty text, or none,
// leaves what all parts have.
QString tellParts(ZQAudioExportFormat &format, const Arguments &arguments) {
    const std::size_t count = std::max(arguments.names.size(), arguments.titles.size());
    if (count > arguments.selections.size())
        return QStringLiteral("There are more --part-name or --part-title than --select; give each selection at most "
                              "one of each.");
    const ZQAudioExportFormat common = format;
    for (std::size_t part = 0; part < count; ++part) {
        ZQAudioExportFormat own = common;
        if (part < arguments.names.size())
            own.fileName = own.withoutExtension(QString::fromStdString(arguments.names[part]));
        if (part < arguments.titles.size() && !arguments.titles[part].empty())
            own.ID3Title = QString::fromStdString(arguments.titles[part]);
        format.parts.push_back(own);
    }
    const foundation::Sentence trouble = format.namesTrouble();
    return trouble.isEmpty() ? QString() : Lang::english(trouble);
}

// One run of "edit" from the export on. Main thread.
class EditRun : private AudioExportDelegate {
public:
    EditRun(const CommandSession &command, AssetPointer asset) : mCommand(command), mEditor(std::move(asset)) {
        mEditor.exportDelegate = this;
    }

    Outcome run(std::vector<CutRange> ranges, const ZQAudioExportFormat &format, const QString &path) {
        QTimer progress;
        QObject::connect(&progress, &QTimer::timeout, [this] { showProgress(); });
        if (!mCommand.json && !mCommand.quiet && ::isatty(STDOUT_FILENO))
            progress.start(kProgressMilliseconds);
        mEditor.addSelectedCutEntitys(std::move(ranges));
        mEditor.exportAudioWithExportFotmat(format, path);
        mLoop.exec();
        if (progress.isActive())
            std::fputs("\r\033[K", stdout);
        if (!mOutputs.isEmpty())
            mCommand.answer({{QStringLiteral("outputs"), QJsonArray::fromStringList(mOutputs)}},
                            mOutputs.join(QLatin1Char('\n')));
        if (mEditor.failure() == media::kExportStopped())
            return {kStoppedBySignal, QStringLiteral("Stopped by a signal; what was exported by then is kept.")};
        return mEditor.failure().isEmpty() ? Outcome::done() : Outcome::failed(mEditor.failure());
    }

private:
    void AudioExportDelegate_ShouldEndExportWithResult(bool, const QStringList &outputPaths) override {
        mOutputs = outputPaths;
        mLoop.quit();
    }
    void showProgress() const {
        std::fputs(qPrintable(QStringLiteral("\r\033[K%1 %").arg(static_cast<int>(mEditor.progress() * 100))), stdout);
        std::fflush(stdout);
    }

    const CommandSession &mCommand;
    SignalWatch mSignals{[this] { mEditor.cancel(); }}; // before the threads of the editor
    ZQAudioEditor mEditor;
    QEventLoop mLoop;
    QStringList mOutputs;
};

Outcome edit(const CommandSession &session, const Arguments &arguments) {
    std::vector<Operation> operations;
    for (const std::string &text : arguments.operations) {
        const auto operation = operationIn(QString::fromStdString(text));
        if (!operation)
            return Outcome::wrongUsage(QStringLiteral("\"%1\" is no operation; name one as --help shows it.")
                                           .arg(QString::fromStdString(text)));
        operations.push_back(*operation);
    }
    std::vector<CutRange> ranges;
    for (const std::string &text : arguments.selections) {
        const auto range = selectionIn(QString::fromStdString(text));
        if (!range)
            return Outcome::wrongUsage(QStringLiteral("\"%1\" is no selection; name its start and its end in seconds, "
                                                      "such as 1.5-20.")
                                           .arg(QString::fromStdString(text)));
        ranges.push_back(*range);
    }
    const QString path = exportPath(arguments.output);
    const QFileInfo target(path);
    if (!QFileInfo(target.absolutePath()).isDir() || target.fileName() == QLatin1String(".m4a"))
        return Outcome::wrongUsage(
            QStringLiteral("There is no folder \"%1\", or no name for a file in it; make it first "
                           "or name another.")
                .arg(target.absolutePath()));
    id3TagEdit tags;
    if (const Outcome read = arguments.tags.read(tags); read.status != 0)
        return read;

    const QString file = QString::fromStdString(arguments.file);
    auto asset = open(file);
    for (const Operation &operation : operations)
        if (asset)
            asset = applied(operation, asset.value());
    if (!asset)
        return Outcome::failed(asset.failure().sentence);
    for (CutRange &range : ranges)
        if (const QString refused = trim(range, asset.value()->duration().seconds()); !refused.isEmpty())
            return Outcome::wrongUsage(refused);

    const id3Tag tag = tags.applied(AudioIdentify::getID3TagFromFile(file).value_or(id3Tag()));
    ZQAudioExportFormat format;
    format.fileType = QString::fromStdString(arguments.format);
    format.isMerger = !arguments.parts;
    format.ID3Title = tag.id3Title;
    format.ID3Artist = tag.id3Artist;
    format.ID3Album = tag.id3Album;
    format.ID3Year = tag.id3Year;
    format.ID3Genre = tag.id3Genre;
    format.ID3ArtworkData = tag.id3Image;
    if (const QString refused = tellParts(format, arguments); !refused.isEmpty())
        return Outcome::wrongUsage(refused);
    standardUserDefaults().setArgument(QString::fromLatin1(setting::kAudioExportMergerEnable.key), format.isMerger);
    return EditRun(session, asset.value()).run(std::move(ranges), format, path);
}

} // namespace

void addEditCommand(CLI::App &root, CommandSession &session) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App &command =
        addVerb(root, session, "edit", "Writes parts of a sound file to new files",
                "edit concert.mp3 --select 12.5-180 --select 200-260 --join --format mp3 --output encore",
                [&session, arguments] { return edit(session, *arguments); });
    command.add_option("FILE", arguments->file, "The sound file, which stays as it is")->required();
    command
        .add_option("--op", arguments->operations,
                    "Done to the sound first, in this order; times in seconds: silence@AT:LENGTH, append=FILE, "
                    "insert=FILE@AT, mix=FILE@AT, overwrite=FILE@AT")
        ->type_name("OP")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command.add_option("--select", arguments->selections, "What is written, in seconds; all of it without one")
        ->type_name("A-B")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    CLI::Option *join = command.add_flag("--join", arguments->joins, "All selections in one file; so without either");
    CLI::Option *parts = command.add_flag("--parts", arguments->parts, "A file for each selection")->excludes(join);
    for (const auto &[name, values, what] :
         {std::tuple(
              "--part-name", &arguments->names,
              "What the file of each selection is called, in their order; an empty text leaves the next free name"),
          std::tuple("--part-title", &arguments->titles, "The title of each; an empty text leaves that of all")})
        command.add_option(name, *values, what)
            ->type_name("TEXT")
            ->expected(1)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
            ->needs(parts);
    command.add_option("--format", arguments->format, "What to write; mp3 without it")
        ->check(CLI::IsMember({"mp3", "aac", "wav", "flac", "wma"}));
    command.add_option("--output", arguments->output, "Path of the file to be written; the format gives its extension")
        ->required();
    arguments->tags.addTo(command, "A picture, or none; without it that of the file");
}

} // namespace cantorel
