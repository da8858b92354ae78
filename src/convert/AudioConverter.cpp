#include "convert/AudioConverter.h"

#include "lang/Lang.h"
#include "log/Log.h"
#include "platform/foundation/FileIdentity.h"
#include "platform/foundation/HiddenFile.h"
#include "settings/AppSettings.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"

#include <QFileInfo>

#include <cstring>
#include <iterator>
#include <utility>

namespace cantorel {

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

Failure recordingFailed(const QString &inputFile, const ConvertTrouble &trouble) {
    switch (trouble.fault) {
    case ConvertFault::SourceGone:
        return {kRemovedUnconverted(inputFile), trouble.detail};
    case ConvertFault::NoProgram:
        return {kNoConverter(inputFile), trouble.detail};
    case ConvertFault::NoRoom:
        return {kNoRoomToConvert(inputFile), trouble.detail};
    case ConvertFault::Empty:
        return {kConvertedEmpty(), trouble.detail};
    default:
        return {kNotConverted(inputFile), trouble.detail};
    }
}

QString errorText(const char *what, const QString &path, int error) {
    return QStringLiteral("%1 %2: %3").arg(QLatin1String(what), path, QString::fromLocal8Bit(std::strerror(error)));
}

// Null where none is asked for.
const char *bitRateOf(const ConvertPreset &preset) {
    if (AppSettings::isLosslessAudioFormat(preset.format))
        return nullptr;
    const bool isWma = preset.format == QLatin1String("wma");
    switch (preset.quality) {
    case ConvertQuality::Extreme:
        return isWma ? "128k" : "320k";
    case ConvertQuality::High:
        return isWma ? "96k" : "256k";
    case ConvertQuality::Standard:
        return isWma ? "64k" : "128k";
    case ConvertQuality::None:
        break;
    }
    return nullptr;
}

QString nextRecordingName(const QString &path) { return ToolString::renameFromFilePath(path, 0); }

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

Result<QString> AudioConverter::convertRecording(int index, const QString &inputFile, const Converter &converter,
                                                 foundation::Clock &clock) {
    index = validIndex(index);
    if (!converter.isInstalled())
        return Failure{kConverterMissing(), QStringLiteral("no program at %1").arg(converter.program)};
    if (!waitForFile(inputFile, clock, converter.stop))
        return Failure{QStringLiteral("The recording \"%1\" does not exist.").arg(inputFile),
                       QStringLiteral("gave up waiting for %1").arg(inputFile)};

    const FileIdentity recording(inputFile);
    QString output = freeOutputPath(index, inputFile);
    int error = 0;
    auto file = HiddenFile::create(QFileInfo(output).absolutePath(), extensionOf(index), error);
    if (!file)
        return Failure{kFolderTakesNone(inputFile), errorText("create beside", output, error)};
    ConvertTrouble trouble;
    auto result = converter.make(recordingArguments(index, inputFile, output), {inputFile}, std::move(*file),
                                 asLongAs(inputFile), {}, trouble);
    Log(QStringLiteral("convert completed."));
    if (!result)
        return recordingFailed(inputFile, trouble);
    if (isLossless(index)) // It takes the recording's own name.
        error = result->replace(output = inputFile, recording);
    else
        error = takeFreeName(*result, output, nextRecordingName);
    if (error)
        return Failure{kResultUnnamed(inputFile), errorText("rename to", output, error)};
    return output;
}

std::optional<QString> AudioConverter::convert_to_format(int index, const QString &inputFile) {
    foundation::WallClock clock;
    const auto converted = convertRecording(index, inputFile, {AppSettings::TessolarConverterPath()}, clock);
    if (converted)
        return converted.value();
    Log(QStringLiteral("%1 (%2)").arg(Lang::english(converted.failure().sentence), converted.failure().detail));
    return {};
}

ConvertQuality AudioConverter::qualityOf(const QString &text) {
    return text == Lang::video2mp3ExtremeQuality()    ? ConvertQuality::Extreme
           : text == Lang::video2mp3HighQuality()     ? ConvertQuality::High
           : text == Lang::video2mp3StandardQuality() ? ConvertQuality::Standard
                                                      : ConvertQuality::None;
}

QStringList AudioConverter::getConvertArgumentsWithOutputPreset(const ConvertPreset &preset, const QString &inputFile,
                                                                QString outputFile) {
    const QString &format = preset.format;
    QStringList arguments = {QStringLiteral("-i"), inputFile, QStringLiteral("-vn")};
    if (const char *rate = bitRateOf(preset))
        arguments << QStringLiteral("-ab") << QString::fromLatin1(rate);
    else
        arguments << QStringLiteral("-ac") << QStringLiteral("2");
    arguments << QStringLiteral("-ar") << QStringLiteral("44100");
    if (format == QLatin1String("m4a") || format == QLatin1String("m4r"))
        arguments << QStringLiteral("-strict") << QStringLiteral("-2");
    if (preset.isAlac()) {
        arguments << QStringLiteral("-acodec") << QStringLiteral("alac");
        if (const QString ending = QLatin1Char('.') + format; outputFile.endsWith(ending))
            outputFile = outputFile.chopped(ending.size()) + QStringLiteral(".m4a");
    }
    return arguments << QStringLiteral("-y") << outputFile;
}

void AudioConverter::removeCachesFileWithPath(const QString &path) {
    if (ToolFile::isFileExistsAtPath(path))
        (void)ToolFile::removeFileAtPath(path); // a cache file that cannot go is left for the next time
}

} // namespace cantorel
