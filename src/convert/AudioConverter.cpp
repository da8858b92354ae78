#include "convert/AudioConverter.h"

#include "lang/Lang.h"
#include "log/Log.h"
#include "platform/foundation/ChildProcess.h"
#include "settings/AppSettings.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"

#include <QFile>
#include <QFileInfo>

#include <cstdio>

namespace cantorel {

using foundation::ChildProcess;
using foundation::Failure;
using foundation::Result;

namespace {

constexpr foundation::SentenceKey kRemovedUnconverted("RemovedUnconverted", "FileName");
constexpr foundation::SentenceKey kNoConverter("NoConverter", "FileName");
constexpr foundation::SentenceKey kNoRoomToConvert("NoRoomToConvert", "FileName");
constexpr foundation::SentenceKey kNotConverted("NotConverted", "FileName");
constexpr foundation::SentenceKey kConverterMissing("ConverterMissing");

using namespace std::chrono_literals;

struct OutputFormat {
    const char *extension;
    const char *bitRate; // empty: none is asked for
};

// By the index of the output format. Index 7 deliberately lacks the "k": the converter reads it as kilobits.
constexpr OutputFormat kFormats[] = {{"mp3", "320k"},  {"mp3", "128k"}, {"m4a", ""},     {"m4a", ""},
                                     {"wav", ""},      {"aac", "320k"}, {"aac", "256k"}, {"aac", "128"},
                                     {"flac", "320k"}, {"flac", "128k"}};
constexpr int kDefaultIndex = 1;
constexpr int kChecksForInput = 30;
constexpr double kRecordedBytesPerSecond = 16000; // well below what the recorder writes

int validIndex(int index) { return index >= 0 && index < int(std::size(kFormats)) ? index : kDefaultIndex; }
bool isLossless(int index) { return index == 2 || index == 3; }
bool isAac(int index) { return index >= 5 && index <= 7; }

QString freeOutputPath(int index, const QString &inputFile) {
    if (isLossless(index))
        // Its fixed name may already be someone's file.
        return ToolString::renameFromFilePath(ToolFile::pathWithExtension(inputFile, {}) + QStringLiteral("_m4a.m4a"),
                                              0);
    const QString path = ToolFile::pathWithExtension(inputFile, QString::fromLatin1(kFormats[index].extension));
    if (ToolString::isEqualIgnoreCase(ToolFile::fileExtensionAtPath(path), QStringLiteral("m4a")))
        return path;
    return ToolString::renameFromFilePath(path, 0);
}

bool waitForFile(const QString &path, foundation::Clock &clock, const std::stop_token &stop) {
    for (int check = 0; check < kChecksForInput && !stop.stop_requested(); ++check) {
        if (ToolFile::isFileExistsAtPath(path))
            return true;
        clock.sleepFor(1s);
    }
    return false;
}

foundation::Clock::Duration usualLimit(const QString &inputFile) {
    const double seconds = 120 + static_cast<double>(QFileInfo(inputFile).size()) / kRecordedBytesPerSecond;
    return std::chrono::seconds(static_cast<std::int64_t>(seconds));
}

constexpr int kProgramMissing = 127; // the exit status by which shells and the launcher tell it

Failure converterFailed(const QString &inputFile, const ChildProcess::Finished &run) {
    const auto &ending = run.ending;
    const QString why = ending.timedOut ? QStringLiteral("it took too long")
                        : ending.signal ? QStringLiteral("it was ended by signal %1").arg(ending.signal)
                                        : QStringLiteral("its exit status was %1").arg(ending.exitStatus);
    const foundation::Sentence sentence = !QFile::exists(inputFile)              ? kRemovedUnconverted(inputFile)
                                          : ending.exitStatus == kProgramMissing ? kNoConverter(inputFile)
                                          : run.output.contains("No space left on device") ? kNoRoomToConvert(inputFile)
                                                                                           : kNotConverted(inputFile);
    return {sentence, QStringLiteral("%1: %2").arg(why, QString::fromUtf8(run.output.right(2000)))};
}

// Puts the converted file in the recording's place in one step, so that at every moment one of them is there.
Result<QString> takePlaceOf(const QString &inputFile, const QString &converted) {
    const QByteArray from = QFile::encodeName(converted);
    const QByteArray to = QFile::encodeName(inputFile);
    if (std::rename(from.constData(), to.constData()) == 0)
        return inputFile;
    return Failure{
        QStringLiteral("The converted file is \"%1\"; it could not take the place of the recording.").arg(converted),
        QStringLiteral("rename to %1: errno %2").arg(inputFile).arg(errno)};
}

} // namespace

QString AudioConverter::extensionOf(int index) { return QString::fromLatin1(kFormats[validIndex(index)].extension); }

QStringList AudioConverter::recordingArguments(int index, const QString &inputFile, const QString &outputFile) {
    index = validIndex(index);
    QStringList arguments = {QStringLiteral("-i"), inputFile};
    if (isLossless(index))
        return arguments << QStringLiteral("-acodec") << QStringLiteral("alac") << QStringLiteral("-y") << outputFile;
    if (isAac(index)) // The blank in the value is deliberate: the converter takes the list as it stands.
        arguments << QStringLiteral("-acodec") << QStringLiteral("aac") << QStringLiteral("-strict")
                  << QStringLiteral(" -2");
    if (const QString rate = QString::fromLatin1(kFormats[index].bitRate); !rate.isEmpty())
        arguments << QStringLiteral("-ab") << rate;
    return arguments << QStringLiteral("-ac") << QStringLiteral("2") << QStringLiteral("-ar") << QStringLiteral("44100")
                     << QStringLiteral("-y") << outputFile;
}

Result<QString> AudioConverter::convertRecording(int index, const QString &inputFile,
                                                 const Surroundings &surroundings) {
    index = validIndex(index);
    if (!QFileInfo(surroundings.converter).isExecutable())
        return Failure{kConverterMissing(), QStringLiteral("no program at %1").arg(surroundings.converter)};
    if (!waitForFile(inputFile, surroundings.clock, surroundings.stop))
        return Failure{QStringLiteral("The recording \"%1\" does not exist.").arg(inputFile),
                       QStringLiteral("gave up waiting for %1").arg(inputFile)};

    const QString output = freeOutputPath(index, inputFile);
    const auto run = ChildProcess::run({surroundings.converter, recordingArguments(index, inputFile, output), {}, {}},
                                       surroundings.limit.value_or(usualLimit(inputFile)), surroundings.stop);
    if (!run)
        return run.failure();
    Log(QStringLiteral("convert completed."));
    // An empty result is a failure, even if the converter reports success.
    if (!run.value().ending.succeeded() || QFileInfo(output).size() <= 0)
        return converterFailed(inputFile, run.value());
    return isLossless(index) ? takePlaceOf(inputFile, output) : Result<QString>(output);
}

std::optional<QString> AudioConverter::convert_to_format(int index, const QString &inputFile) {
    foundation::WallClock clock;
    const auto converted = convertRecording(index, inputFile, {AppSettings::TessolarConverterPath(), clock});
    if (converted)
        return converted.value();
    Log(QStringLiteral("%1 (%2)").arg(Lang::english(converted.failure().sentence), converted.failure().detail));
    return {};
}

void AudioConverter::removeCachesFileWithPath(const QString &path) {
    if (ToolFile::isFileExistsAtPath(path))
        (void)ToolFile::removeFileAtPath(path); // a cache file that cannot go is left for the next time
}

} // namespace cantorel
