// What AudioConverter does for the queue.

#include "convert/AudioConverter.h"
#include "convert/ConverterOutputParser.h"
#include "log/Log.h"
#include "platform/foundation/HiddenFile.h"
#include "platform/media/DiskSpace.h"
#include "platform/media/SoundFacts.h"
#include "platform/media/asset/OpenAsset.h"
#include "settings/AppSettings.h"
#include "tags/Covers.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"
#include "util/tools/Tools.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <functional>
#include <optional>
#include <stop_token>
#include <utility>
#include <vector>

namespace cantorel {

using foundation::Failure;
using foundation::HiddenFile;
using foundation::Result;

namespace {

constexpr foundation::SentenceKey kConvertGone("ConvertGone", "FileName");
constexpr foundation::SentenceKey kConvertNotAllowed("ConvertNotAllowed", "FileName");
constexpr foundation::SentenceKey kConvertNoSound("ConvertNoSound", "FileName");
constexpr foundation::SentenceKey kConvertNoLength("ConvertNoLength", "FileName");
constexpr foundation::SentenceKey kConvertNoEncoder("ConvertNoEncoder");
constexpr foundation::SentenceKey kConvertNoProgram("ConvertNoProgram");
constexpr foundation::SentenceKey kConvertTimedOut("ConvertTimedOut", "FileName");
constexpr foundation::SentenceKey kConvertEnded("ConvertEnded", "FileName");
constexpr foundation::SentenceKey kConvertIncomplete("ConvertIncomplete", "FileName");
constexpr foundation::SentenceKey kConvertOther("ConvertOther", "FileName", "Reason");
constexpr foundation::SentenceKey kJoinChannels("JoinChannels", "FileName");
constexpr foundation::SentenceKey kJoinIncomplete("JoinIncomplete");

constexpr double kLongWave = 6 * 3600;  // seconds; a WAV of the queue comes to 4 GiB after 6.7 hours
constexpr qsizetype kLongestName = 255; // bytes

// As much of the stem as leaves room for the rest of a file name.
QString shortened(QString stem, qsizetype room) {
    while (!stem.isEmpty() && QFile::encodeName(stem).size() > room)
        stem.chop(stem.size() > 1 && stem.back().isLowSurrogate() ? 2 : 1);
    return stem;
}

// A free path in the folder whose name a file system takes, with a number too.
QString resultPath(const QString &folder, const QString &stem, const QString &tail, const QString &extension) {
    QString path;
    for (const qsizetype forNumber : {0, 11}) {
        const qsizetype rest = QFile::encodeName(tail + QLatin1Char('.') + extension).size() + forNumber;
        path = AppSettings::freePathInFolder(
            QStringLiteral("%1/%2%3.%4").arg(folder, shortened(stem, kLongestName - rest), tail, extension));
        if (QFile::encodeName(QFileInfo(path).fileName()).size() <= kLongestName)
            break;
    }
    return path;
}

foundation::Sentence sentenceOf(const ConvertTrouble &trouble, const QString &path, const QString &folder) {
    const QString file = QFileInfo(path).fileName();
    switch (trouble.fault) {
    case ConvertFault::Stopped:
        return kConvertStopped();
    case ConvertFault::SourceGone:
        return kConvertGone(file);
    case ConvertFault::NotAllowed:
        return kConvertNotAllowed(file);
    case ConvertFault::NoProgram:
        return kConvertNoProgram();
    case ConvertFault::NoRoom:
        return media::kDiskFull(folder);
    case ConvertFault::NoSound:
        return kConvertNoSound(file);
    case ConvertFault::NoLength:
        return kConvertNoLength(file);
    case ConvertFault::NoEncoder:
        return kConvertNoEncoder();
    case ConvertFault::Empty:
    case ConvertFault::Incomplete:
        return kConvertIncomplete(file);
    case ConvertFault::TimedOut:
        return kConvertTimedOut(file);
    case ConvertFault::Signalled:
        return kConvertEnded(file);
    case ConvertFault::Other:
        break;
    }
    return kConvertOther(file, trouble.reason);
}

Failure fileFailed(const ConvertTrouble &trouble, const QString &path, const QString &folder = {}) {
    Log(QStringLiteral("%1: %2").arg(path, trouble.detail));
    const bool isUnexplained = trouble.fault == ConvertFault::Other || trouble.fault == ConvertFault::Incomplete;
    if (isUnexplained && !folder.isEmpty() && !QFileInfo(folder).isDir())
        return media::folderFailed(folder, ENOENT); // It went while the converter wrote into it.
    return {sentenceOf(trouble, path, folder), trouble.detail};
}

// Why the converter is not even asked. What is no file could keep it waiting for ever.
std::optional<Failure> lackOf(const Converter &converter, const QStringList &inputs) {
    if (!converter.isInstalled())
        return Failure{kConverterMissing(), QStringLiteral("no program at %1").arg(converter.program)};
    for (const QString &input : inputs) {
        const QFileInfo file(input);
        if (!file.exists())
            return fileFailed({ConvertFault::SourceGone, {}, QStringLiteral("it does not exist")}, input);
        if (!file.isFile())
            return fileFailed({ConvertFault::NoSound, {}, QStringLiteral("it is no plain file")}, input);
    }
    return {};
}

// The parts of a joined file together, with the padding of each.
Result<media::SoundFacts> sumOf(const QStringList &paths, const ConvertPreset &preset) {
    media::SoundFacts sum;
    // Their levels come out wrong where the number of channels changes within a file.
    const bool needsEqual = preset.extension() == QLatin1String("m4a") || preset.format == QLatin1String("wma");
    for (const QString &path : paths) {
        const auto facts = media::soundFacts(path);
        if (!facts)
            return fileFailed({ConvertFault::NoSound, {}, facts.failure().detail}, path);
        const media::SoundFacts &part = facts.value();
        if (sum.channels == 0) {
            sum.channels = part.channels;
            sum.rate = part.rate;
        }
        if (needsEqual && part.channels != sum.channels)
            return Failure{kJoinChannels(QFileInfo(path).fileName()),
                           QStringLiteral("%1 channels in %2").arg(part.channels).arg(path)};
        sum.seconds += part.seconds;
        sum.padding += part.padding;
    }
    return sum;
}

// All of it is decoded: what the converter and the headers of the file promise does not count.
QString lackOfJoined(const QString &path, const media::SoundFacts &sum, const std::stop_token &stop) {
    const auto asset = media::openAsset(QUrl::fromLocalFile(path));
    const auto reader = asset ? asset.value()->openReader({sum.rate, sum.channels}) : asset.failure();
    if (!reader)
        return reader.failure().detail;
    std::vector<float> block(static_cast<std::size_t>(sum.channels) * 65536);
    double frames = 0;
    for (std::size_t read = 1; read > 0 && !stop.stop_requested(); frames += static_cast<double>(read)) {
        const auto got = reader.value()->read(block.data(), 65536);
        read = got ? got.value() : 0;
    }
    const double seconds = frames / sum.rate;
    if (std::abs(seconds - sum.seconds) <= sum.padding)
        return {};
    return QStringLiteral("%1 s of %2 s can be decoded").arg(seconds).arg(sum.seconds);
}

// A WAV may exceed 4 GiB, as RF64, where it may have to.
QStringList withRoomFor(double seconds, const ConvertPreset &preset, QStringList arguments) {
    if (preset.format == QLatin1String("wav") && seconds > kLongWave)
        for (const char *option : {"-rf64", "auto"})
            arguments.insert(arguments.size() - 2, QString::fromLatin1(option)); // before "-y" and the output
    return arguments;
}

// A line per file. A name with a line feed can't stand in one, so a link of another name stands for it.
QString concatList(const QStringList &paths, const QTemporaryDir &links) {
    QStringList lines;
    for (const QString &path : paths) {
        QString name = path;
        if (name.contains(QLatin1Char('\n'))) {
            name = links.filePath(QString::number(lines.size()));
            (void)QFile::link(path, name); // the converter tells where it is missing
        }
        lines << QStringLiteral("file '%1'").arg(name);
    }
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

} // namespace

Result<MediaInformation> AudioConverter::readMediaInformation(const QString &file, const Converter &converter) {
    if (const auto lack = lackOf(converter, {file}))
        return *lack;
    MediaInformation information;
    bool hasSound = false;
    const auto run = converter.run({QStringLiteral("-i"), file}, {file}, {}, [&](const QByteArray &line) {
        const QString text = QString::fromUtf8(line);
        if (information.duration.isEmpty())
            information.duration = ConverterOutputParser::durationText(text);
        hasSound = hasSound || ConverterOutputParser::tellsOfSound(text);
    });
    if (!run)
        return run.failure();
    const QString said = QString::fromUtf8(run.value().said);
    Log(QStringLiteral("Media Info %1").arg(said));
    // The converter's exit status is a failure here whatever it finds, since it is given nothing to make.
    if (hasSound && !information.duration.isEmpty())
        return information;
    ConvertTrouble trouble = converter.troubleIn(run.value(), {file});
    if (trouble.fault == ConvertFault::Other)
        trouble.fault = hasSound ? ConvertFault::NoLength : ConvertFault::NoSound;
    return fileFailed(trouble, file);
}

Result<QString> AudioConverter::convertFile(const FileToConvert &file, const Converter &converter,
                                            const std::function<void(double percent)> &progress) {
    const QString &input = file.path;
    const ConvertPreset &preset = file.preset;
    if (const auto lack = lackOf(converter, {input}))
        return *lack;

    const QString wanted = resultPath(file.folder, ToolFile::fileNameAtPath(input),
                                      preset.isAlac() ? QStringLiteral("(ALAC)") : QString(), preset.extension());
    const QStringList arguments =
        withRoomFor(file.seconds, preset, getConvertArgumentsWithOutputPreset(preset, input, wanted));
    QString output = arguments.last();
    (void)ToolFile::createFolderAtPath(file.folder); // Where it is missing still, no file can be made in it.
    int error = 0;
    auto hidden = HiddenFile::create(file.folder, preset.extension(), error);
    if (!hidden)
        return media::folderFailed(file.folder, error);
    Log(QStringLiteral("Args :%1").arg(arguments.join(QLatin1Char(' '))));
    // The converter is told to leave pictures out: it fails with some that players show.
    Converter withCover = converter;
    withCover.complete = [&](const QString &path) {
        if (const QByteArray cover = coverOf(input); !cover.isEmpty())
            (void)giveCover(path, cover); // not every kind of file holds one
    };
    ConvertTrouble trouble;
    auto result = withCover.make(
        arguments, {input}, std::move(*hidden), asLongAs(input),
        [&](const QByteArray &line) {
            const auto percent = ConverterOutputParser::progress(QString::fromUtf8(line), file.seconds);
            if (percent && progress)
                progress(*percent);
        },
        trouble);
    if (!result)
        return fileFailed(trouble, input, file.folder);
    if ((error = takeFreeName(*result, output, AppSettings::freePathInFolder)))
        return media::folderFailed(file.folder, error);
    return output;
}

QStringList AudioConverter::exportArguments(const QString &inputFile, const QString &outputFile) {
    return {QStringLiteral("-i"),  inputFile,           QStringLiteral("-ab"), QStringLiteral("320K"),
            QStringLiteral("-ac"), QStringLiteral("2"), QStringLiteral("-ar"), QStringLiteral("44100"),
            QStringLiteral("-y"),  outputFile};
}

Result<HiddenFile> AudioConverter::convertExported(const QString &inputFile, const QString &outputFile,
                                                   const Converter &converter,
                                                   const std::function<void(double percent)> &progress) {
    if (const auto lack = lackOf(converter, {inputFile}))
        return *lack;
    const auto facts = media::promisedSoundFacts(inputFile);
    const int seconds = facts ? static_cast<int>(std::ceil(facts.value().seconds)) : 0;
    const QFileInfo output(outputFile);
    int error = 0;
    auto hidden = HiddenFile::create(output.absolutePath(), output.suffix(), error);
    if (!hidden)
        return media::folderFailed(output.absolutePath(), error);
    ConvertTrouble trouble;
    auto result = converter.make(
        exportArguments(inputFile, outputFile), {inputFile}, std::move(*hidden), asLongAs(inputFile),
        [&](const QByteArray &line) {
            if (const auto percent = ConverterOutputParser::progress(QString::fromUtf8(line), seconds))
                progress(*percent);
        },
        trouble);
    if (!result)
        return fileFailed(trouble, inputFile, output.absolutePath());
    return std::move(*result);
}

Result<QString> AudioConverter::startMerge(const QStringList &paths, const ConvertPreset &usePreset,
                                           const QString &withOutputFile, const Converter &converter) {
    Log(QStringLiteral("Start merge \n files:%1").arg(paths.join(QLatin1Char('\n'))));
    const auto failed = [](const Failure &failure) {
        Log(QStringLiteral("Merge failed."));
        return failure;
    };
    if (const auto lack = lackOf(converter, paths))
        return failed(*lack);
    const auto sum = sumOf(paths, usePreset);
    if (!sum)
        return failed(sum.failure());

    const QTemporaryDir links;
    const QString list = Tools::getUniqeNameInTempDirWithExtenionName(QStringLiteral("txt"));
    (void)Tools::writeToFile(concatList(paths, links), list, false); // whether it is there is looked at
    if (!ToolFile::isFileExistsAtPath(list)) {
        Log(QStringLiteral("Merge failed, concat file doesn't exist!,%1").arg(list));
        return media::folderFailed(ToolString::getTempDir(), 0);
    }
    const QStringList arguments =
        withRoomFor(sum.value().seconds, usePreset,
                    {QStringLiteral("-f"), QStringLiteral("concat"), QStringLiteral("-i"), list, QStringLiteral("-c"),
                     QStringLiteral("copy"), QStringLiteral("-y"), withOutputFile});
    const QString folder = QFileInfo(withOutputFile).absolutePath();
    int error = 0;
    auto hidden = HiddenFile::create(folder, usePreset.extension(), error);
    if (!hidden) {
        removeCachesFileWithPath(list);
        return failed(media::folderFailed(folder, error));
    }
    ConvertTrouble trouble;
    auto result = converter.make(
        arguments, paths, std::move(*hidden),
        [&](const QString &path) { return lackOfJoined(path, sum.value(), converter.stop); },
        [](const QByteArray &line) { Log(QStringLiteral("*** %1").arg(QString::fromUtf8(line))); }, trouble);
    removeCachesFileWithPath(list);
    Log(QStringLiteral("Merge output :%1").arg(trouble.detail));
    if (!result) {
        if (trouble.fault == ConvertFault::Empty || trouble.fault == ConvertFault::Incomplete)
            return failed({kJoinIncomplete(), trouble.detail});
        const auto gone =
            std::find_if_not(paths.begin(), paths.end(), [](const QString &p) { return QFile::exists(p); });
        return failed(fileFailed(trouble, gone == paths.end() ? withOutputFile : *gone, folder));
    }
    QString output = withOutputFile;
    if ((error = takeFreeName(*result, output, AppSettings::freePathInFolder)))
        return failed(media::folderFailed(folder, error));
    Log(QStringLiteral("Merge succeeded."));
    return output;
}

QString AudioConverter::mergedPath(const QString &first, const QString &folder, const ConvertPreset &preset) {
    return resultPath(folder, ToolFile::fileNameAtPath(first), QStringLiteral("-merge"), preset.extension());
}

} // namespace cantorel
