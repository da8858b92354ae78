#include "convert/AudioConverter.h"

#include "lang/Lang.h"
#include "log/Log.h"
#include "platform/foundation/ChildProcess.h"
#include "platform/foundation/FileIdentity.h"
#include "platform/foundation/HiddenFile.h"
#include "platform/media/SoundReader.h"
#include "settings/AppSettings.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <utility>

namespace cantorel {

using foundation::ChildProcess;
using foundation::Failure;
using foundation::FileIdentity;
using foundation::HiddenFile;
using foundation::Result;

namespace {

constexpr foundation::SentenceKey kConvertedEmpty("ConvertedEmpty");
constexpr foundation::SentenceKey kFolderTakesNone("FolderTakesNone", "FileName");
constexpr foundation::SentenceKey kResultUnnamed("ResultUnnamed", "FileName");
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
// What a coder may add: an MP3 begins with 1105 frames of delay and ends on a full block behind them, at 44100 a
// second.
constexpr double kCoderPadding = 0.1;

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

constexpr const char *kEmpty = "it is empty";
constexpr int kProgramMissing = 127; // the exit status by which shells and the launcher tell it

QString describe(const ChildProcess::Ending &ending) {
    return ending.timedOut ? QStringLiteral("it took too long")
           : ending.signal ? QStringLiteral("it was ended by signal %1").arg(ending.signal)
                           : QStringLiteral("its exit status was %1").arg(ending.exitStatus);
}

Failure converterFailed(const QString &inputFile, const ChildProcess::Finished &run, const QString &why) {
    const foundation::Sentence sentence = !QFile::exists(inputFile)                  ? kRemovedUnconverted(inputFile)
                                          : run.ending.exitStatus == kProgramMissing ? kNoConverter(inputFile)
                                          : run.output.contains("No space left on device") ? kNoRoomToConvert(inputFile)
                                          : why == QLatin1String(kEmpty)                   ? kConvertedEmpty()
                                                                                           : kNotConverted(inputFile);
    return {sentence, QStringLiteral("%1: %2").arg(why, QString::fromUtf8(run.output.right(2000)))};
}

// Why the result is not the whole recording; empty when it is, and on the disk.
QString lackOf(const HiddenFile &result, const QString &inputFile) {
    if (const int error = result.flush())
        return QStringLiteral("flushing it: errno %1").arg(error);
    if (QFileInfo(result.path()).size() == 0)
        return QString::fromLatin1(kEmpty);
    const auto recorded = media::soundSeconds(inputFile), converted = media::soundSeconds(result.path());
    if (!recorded || !converted)
        return (recorded ? converted : recorded).failure().detail;
    if (std::abs(converted.value() - recorded.value()) <= kCoderPadding)
        return {};
    return QStringLiteral("%1 s of %2 s are in it").arg(converted.value()).arg(recorded.value());
}

// Gives the result its name: the recording's own, or else the one wanted or the next free one.
Result<QString> name(HiddenFile &result, int index, const QString &inputFile, const FileIdentity &recording,
                     QString wanted) {
    int error = 0;
    if (isLossless(index)) {
        error = result.replace(wanted = inputFile, recording);
    } else {
        QString next = std::move(wanted);
        do {
            wanted = next;
            error = result.take(wanted);
            next = ToolString::renameFromFilePath(wanted, 0);
        } while (error == EEXIST && next != wanted); // a dangling link counts as free there
    }
    if (!error)
        return wanted;
    return Failure{kResultUnnamed(inputFile),
                   QStringLiteral("rename to %1: %2").arg(wanted, QString::fromLocal8Bit(std::strerror(error)))};
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

    const FileIdentity recording(inputFile);
    const QString output = freeOutputPath(index, inputFile);
    int error = 0;
    auto result = HiddenFile::create(QFileInfo(output).absolutePath(), extensionOf(index), error);
    if (!result)
        return Failure{
            kFolderTakesNone(inputFile),
            QStringLiteral("create beside %1: %2").arg(output, QString::fromLocal8Bit(std::strerror(error)))};
    const auto run = ChildProcess::run({surroundings.converter,
                                        recordingArguments(index, inputFile, output),
                                        {},
                                        {QStringLiteral("CANTOREL_CONVERT_INTO=") + result->path()}},
                                       surroundings.limit.value_or(usualLimit(inputFile)), surroundings.stop);
    if (!run)
        return run.failure();
    Log(QStringLiteral("convert completed."));
    // The converter's word is not enough: ffmpeg is content with a last write that met a full disk.
    const auto &ending = run.value().ending;
    if (const QString lack = ending.succeeded() ? lackOf(*result, inputFile) : describe(ending); !lack.isEmpty())
        return converterFailed(inputFile, run.value(), lack);
    return name(*result, index, inputFile, recording, output);
}

foundation::Clock::Duration AudioConverter::usualLimit(const QString &inputFile) {
    const double seconds = 120 + static_cast<double>(QFileInfo(inputFile).size()) / kRecordedBytesPerSecond;
    return std::chrono::seconds(static_cast<std::int64_t>(seconds));
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
