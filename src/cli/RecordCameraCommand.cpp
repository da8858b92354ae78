#include "capture/ZQAVRecorderKit.h"
#include "cli/Commands.h"
#include "cli/MovieOptions.h"
#include "cli/MovieRun.h"
#include "platform/media/movie/MovieFailures.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

namespace cantorel {

namespace {

struct Arguments {
    MovieArguments movie;
    std::string camera;
    std::string quality;
};

const char *presetOf(const std::string &quality) {
    return quality == "low"      ? media::kSessionPresetLow
           : quality == "medium" ? media::kSessionPresetMedium
                                 : media::kSessionPresetHigh;
}

// The one of that name, else the first.
foundation::Result<media::Camera> chosen(const std::vector<media::Camera> &cameras, const QString &name) {
    const auto found = std::find_if(cameras.begin(), cameras.end(), [&](const media::Camera &camera) {
        return name.isEmpty() || camera.localizedName == name;
    });
    if (found != cameras.end())
        return *found;
    QStringList names;
    for (const media::Camera &camera : cameras)
        names << QStringLiteral("\"%1\"").arg(camera.localizedName);
    if (names.isEmpty())
        return media::failures::cameraMissing(QStringLiteral("there is none"));
    return foundation::Failure{
        QStringLiteral("There is no camera \"%1\"; there is %2.").arg(name, names.join(QStringLiteral(", "))), {}};
}

Outcome recordCamera(const CommandSession &session, const Arguments &arguments) {
    auto options = arguments.movie.options();
    if (!options)
        return Outcome::wrongUsage(options.failure().sentence);
    if (options.value().audio.size() > 1)
        return Outcome::wrongUsage(QStringLiteral("A camera is recorded with one device; name one."));
    ZQAVRecorderKit &kit = ZQAVRecorderKit::sharedInstance();
    const auto camera = chosen(kit.usableCameraDevices(), QString::fromStdString(arguments.camera));
    if (!camera)
        return Outcome::failed(camera.failure().sentence);
    ZQCameraRecorder &recorder = *kit.getCameraRecorder();
    recorder.setCameraDevice(camera.value());
    recorder.setOutputVideoQuality(QString::fromLatin1(presetOf(arguments.quality)));
    MovieRun run(session, std::move(options).value());
    Outcome outcome = run.open(MovieRun::HeardOtherwise::Microphone);
    if (outcome.status == 0) {
        if (!run.devices().empty())
            recorder.setAudioDevice(run.devices().front());
        outcome = run.run(recorder);
    }
    RecorderRelease(&recorder);
    return outcome;
}

} // namespace

void addRecordCameraCommand(CLI::App &root, CommandSession &session) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App &command = addVerb(root, session, "record-camera", "Records a camera with sound",
                                "record-camera --seconds 10 --output camera.mp4",
                                [&session, arguments] { return recordCamera(session, *arguments); });
    arguments->movie.addTo(command, "the default microphone");
    command.add_option("--camera", arguments->camera, "The camera, by its name; without it the first");
    command.add_option("--quality", arguments->quality, "high, medium or low: how large the pictures are")
        ->check(CLI::IsMember({"high", "medium", "low"}));
}

} // namespace cantorel
