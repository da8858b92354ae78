#include "cli/MovieOptions.h"

#include <QFileInfo>

#include <CLI/CLI.hpp>
#include <algorithm>

namespace cantorel {

namespace {

constexpr const char *kNoSound = "off";

} // namespace

void MovieArguments::addTo(CLI::App &command, const std::string &heardOtherwise) {
    command.add_option("--seconds", seconds, "How long, from the first picture on; without it until Ctrl-C")
        ->check(CLI::Range(0.1, 1e7));
    command.add_option("--output", output, "The MP4 to make; one of that name is replaced at the end")->required();
    command.add_option("--fps", picturesPerSecond, "Pictures a second at most; without it 30")
        ->check(CLI::Range(1, 120));
    command
        .add_option("--audio", audio,
                    "The device to hear, by its name, or off; several are mixed; without it " + heardOtherwise)
        ->allow_extra_args(false);
}

foundation::Result<MovieOptions> MovieArguments::options() const {
    MovieOptions options;
    const QFileInfo file(QString::fromStdString(output));
    options.output = file.absoluteFilePath();
    if (!QFileInfo(file.absolutePath()).isDir())
        return foundation::Failure{
            QStringLiteral("There is no folder \"%1\"; make it first or name another.").arg(file.absolutePath()), {}};
    if (output.empty() || file.isDir())
        return foundation::Failure{
            QStringLiteral("\"%1\" can't be the name of a file; choose another.").arg(options.output), {}};
    options.seconds = seconds;
    options.picturesPerSecond = picturesPerSecond;
    options.isSilent = std::find(audio.begin(), audio.end(), kNoSound) != audio.end();
    for (const std::string &name : audio)
        options.audio << QString::fromStdString(name);
    return options;
}

std::vector<int> numbersOf(const std::string &text) {
    std::vector<int> numbers;
    for (const QString &part : QString::fromStdString(text).split(QLatin1Char(','))) {
        bool isNumber = false;
        numbers.push_back(part.toInt(&isNumber));
        if (!isNumber)
            return {};
    }
    return numbers;
}

} // namespace cantorel
