#include "cli/RecordCommand.h"

#include "cli/RecordRun.h"

#include <QDir>
#include <QFileInfo>

#include <CLI/CLI.hpp>
#include <memory>

namespace cantorel {

void addRecordCommand(CLI::App &root, CommandSession &session) {
    struct Arguments {
        std::string source, microphone, folder, play;
        int format = 0;
        double seconds = 0;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App *record = root.add_subcommand("record", "Records system sound, the microphone, or both");
    record->add_option("--source", arguments->source, "system, mic or both")
        ->check(CLI::IsMember({"system", "mic", "both"}));
    record->add_option("--microphone", arguments->microphone, "The microphone to record, by its name");
    CLI::Option *seconds =
        record
            ->add_option("--seconds", arguments->seconds, "How long, from the first sound on; without it until Ctrl-C")
            ->check(CLI::Range(0.1, 1e7));
    CLI::Option *format = record
                              ->add_option("--format", arguments->format,
                                           "0 MP3 high, 1 MP3 standard, 2 and 3 Apple Lossless, 4 WAV, 5 to 7 AAC")
                              ->check(CLI::Range(0, 7));
    record->add_option("--folder", arguments->folder, "Where the recording goes");
    record->add_option("--play", arguments->play,
                       "A sound file to play meanwhile; without --seconds its end ends the recording");
    record->footer("Example: cantorel-cli record --source system --seconds 10");
    record->callback([&session, arguments, seconds, format] {
        session.action = [&session, arguments, seconds, format] {
            RecordOptions options;
            if (!arguments->source.empty())
                options.source = RecordingSession::sourceNamed(QString::fromStdString(arguments->source));
            if (format->count() > 0)
                options.format = arguments->format;
            if (seconds->count() > 0)
                options.seconds = arguments->seconds;
            options.microphone = QString::fromStdString(arguments->microphone);
            if (!arguments->folder.empty()) {
                const QString folder = QString::fromStdString(arguments->folder);
                if (!QFileInfo(folder).isDir())
                    return Outcome::wrongUsage(
                        QStringLiteral("There is no folder \"%1\"; make it first or name another.").arg(folder));
                options.folder = QDir(folder).absolutePath();
            }
            options.play = QString::fromStdString(arguments->play);
            if (!options.play.isEmpty() && !QFileInfo(options.play).isFile())
                return Outcome::wrongUsage(QStringLiteral("There is no file \"%1\" to play.").arg(options.play));
            RecordRun run(session, std::move(options));
            return run.run();
        };
    });
}

} // namespace cantorel
