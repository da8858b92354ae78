#include "cli/Commands.h"
#include "cli/RecordRun.h"
#include "settings/SettingsTable.h"
#include "util/ToolFile.h"

#include <QDir>
#include <QFileInfo>

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>

namespace cantorel {

namespace {

struct Arguments {
    std::string source, microphone, folder, play, name, skipSilence, splitSilence, splitEvery, minSeconds, identify;
    std::optional<int> format;
    std::optional<double> seconds;
};

Outcome record(const CommandSession &session, const Arguments &arguments) {
    RecordOptions options;
    if (!arguments.source.empty())
        options.source = recordingSourceNamed(QString::fromStdString(arguments.source));
    options.format = arguments.format;
    options.seconds = arguments.seconds;
    options.microphone = QString::fromStdString(arguments.microphone);
    if (!arguments.folder.empty()) {
        const QString folder = QString::fromStdString(arguments.folder);
        if (!QFileInfo(folder).isDir())
            return Outcome::wrongUsage(
                QStringLiteral("There is no folder \"%1\"; make it first or name another.").arg(folder));
        options.folder = QDir(folder).absolutePath();
    }
    options.play = QString::fromStdString(arguments.play);
    if (!options.play.isEmpty() && !QFileInfo(options.play).isFile())
        return Outcome::wrongUsage(kFileGone(options.play));
    if (!arguments.name.empty()) {
        options.name = ToolFile::cleanFileName(QString::fromStdString(arguments.name));
        if (options.name.isEmpty())
            return Outcome::wrongUsage(QStringLiteral("\"%1\" can't be the name of a file; choose another.")
                                           .arg(QString::fromStdString(arguments.name)));
    }
    const auto set = [&](const char *key, const QVariant &value) {
        options.settings.emplace(QString::fromLatin1(key), value);
    };
    const auto setSwitch = [&](const char *key, const std::string &text) {
        if (!text.empty())
            set(key, text != "off");
    };
    const auto setAmount = [&](const char *switchKey, const char *key, const std::string &text) {
        setSwitch(switchKey, text);
        if (!text.empty() && text != "off")
            set(key, QString::fromStdString(text).toInt());
    };
    setSwitch(setting::kIsAutoSkipSilence.key, arguments.skipSilence);
    setAmount(setting::kIsAutoSplitAudioFile.key, setting::kAutoSplitSeconds.key, arguments.splitSilence);
    setAmount(setting::kIsAutoSplitEverySeconds.key, setting::kAutoSplitEverySeconds.key, arguments.splitEvery);
    setAmount(setting::kIsAutoFilterAudioFile.key, setting::kAutoFilterSeconds.key, arguments.minSeconds);
    setSwitch(setting::kIsAutoIdentifyID3.key, arguments.identify);
    // Silence splits only where it is skipped.
    if (options.settings.count(QString::fromLatin1(setting::kAutoSplitSeconds.key)) > 0
        && arguments.skipSilence.empty())
        set(setting::kIsAutoSkipSilence.key, true);
    RecordRun run(session, std::move(options));
    return run.run();
}

} // namespace

void addRecordCommand(CLI::App &root, CommandSession &session) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App &command =
        addVerb(root, session, "record", "Records system sound, the microphone, or both",
                "record --source system --seconds 10", [&session, arguments] { return record(session, *arguments); });
    command.add_option("--source", arguments->source, "system, mic or both")
        ->check(CLI::IsMember({"system", "mic", "both"}));
    command.add_option("--microphone", arguments->microphone, "The microphone to record, by its name");
    command.add_option("--seconds", arguments->seconds, "How long, from the first sound on; without it until Ctrl-C")
        ->check(CLI::Range(0.1, 1e7));
    command
        .add_option("--format", arguments->format,
                    "0 MP3 high, 1 MP3 standard, 2 and 3 Apple Lossless, 4 WAV, 5 to 7 AAC")
        ->check(CLI::Range(0, 7));
    command.add_option("--folder", arguments->folder, "Where the recording goes");
    command.add_option("--play", arguments->play,
                       "A sound file to play meanwhile; without --seconds its end ends the recording");
    command.add_option("--name", arguments->name, "How the files are called");
    const CLI::IsMember isSwitch({"on", "off"});
    const auto isAmount = [](const std::string &text) {
        bool isNumber = false;
        return text == "off" || (QString::fromStdString(text).toInt(&isNumber) >= 1 && isNumber)
                   ? std::string()
                   : "a whole number from 1, or off";
    };
    command.add_option("--skip-silence", arguments->skipSilence, "on, off: whether silence is left out")
        ->check(isSwitch);
    command
        .add_option("--split-silence", arguments->splitSilence,
                    "MS, off: after how much silence in all the next file begins; silence is left out then")
        ->check(isAmount);
    command.add_option("--split-every", arguments->splitEvery, "S, off: after how many seconds the next file begins")
        ->check(isAmount);
    command.add_option("--min-seconds", arguments->minSeconds, "S, off: what is shorter is deleted")->check(isAmount);
    command.add_option("--identify", arguments->identify, "on, off: whether the music is recognised")->check(isSwitch);
}

} // namespace cantorel
