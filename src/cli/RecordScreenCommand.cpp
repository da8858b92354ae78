#include "capture/ZQAVRecorderKit.h"
#include "cli/Commands.h"
#include "cli/MovieOptions.h"
#include "cli/MovieRun.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace cantorel {

namespace {

struct Arguments {
    MovieArguments movie;
    std::uint32_t display = 0;
    std::string region;
    bool hidesPointer = false;
};

Outcome recordScreen(const CommandSession &session, const Arguments &arguments) {
    auto options = arguments.movie.options();
    if (!options)
        return Outcome::wrongUsage(options.failure().sentence);
    ZQScreenRecorder &recorder = *ZQAVRecorderKit::sharedInstance().getScreenRecorder();
    recorder.setScreenDisplayId(arguments.display);
    if (!arguments.region.empty()) {
        const std::vector<int> numbers = numbersOf(arguments.region);
        recorder.setRecordRect({numbers[0], numbers[1], numbers[2], numbers[3]});
    }
    recorder.setShowsCursor(!arguments.hidesPointer);
    MovieRun run(session, std::move(options).value());
    Outcome outcome = run.open(MovieRun::HeardOtherwise::Output);
    if (outcome.status == 0) {
        recorder.setCaptureAudioDevices(run.devices());
        outcome = run.run(recorder);
    }
    RecorderRelease(&recorder);
    return outcome;
}

} // namespace

void addRecordScreenCommand(CLI::App &root, CommandSession &session) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App &command = addVerb(root, session, "record-screen", "Records a display, or a part of it, with sound",
                                "record-screen --seconds 10 --output screen.mp4",
                                [&session, arguments] { return recordScreen(session, *arguments); });
    arguments->movie.addTo(command, "what the default output plays");
    command.add_option("--display", arguments->display, "The display, by its number; without it the main one");
    command
        .add_option("--region", arguments->region,
                    "X,Y,W,H: the part to record, in points of the space that all displays share")
        ->check([](const std::string &text) {
            const std::vector<int> numbers = numbersOf(text);
            return numbers.size() == 4 && numbers[2] > 0 && numbers[3] > 0
                       ? std::string()
                       : "four whole numbers with commas between them: X,Y,W,H";
        });
    command.add_flag("--no-pointer", arguments->hidesPointer, "Leave the pointer out of the picture");
}

} // namespace cantorel
