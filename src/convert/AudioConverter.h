#pragma once

#include "convert/ConvertPreset.h"
#include "convert/Converter.h"
#include "platform/foundation/Clock.h"
#include "platform/foundation/HiddenFile.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/Sentence.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace cantorel {

inline constexpr foundation::SentenceKey kConverterMissing("ConverterMissing");
inline constexpr foundation::SentenceKey kConvertStopped("ConvertStopped");

// What the converter tells of a file.
struct MediaInformation {
    QString duration; // "hh:mm:ss"
};

// A file of the queue.
struct FileToConvert {
    QString path;
    QString folder; // of the result; made when it is missing
    ConvertPreset preset;
    int seconds = 0; // its length by its media information; 0 where that is not known
};

// Class operations that convert files by the converter program, a child process. They block, so they run on workers. A
// result has its name only when all of its input is in it and it is on the disk; it replaces no other file.
class AudioConverter {
public:
    AudioConverter() = delete;

    // Converts a finished recording to the output format of that index (0 to 9, any other counts as 1) and answers the
    // path of the result, or nothing, with the reason in the log. The recording itself stays, but for the lossless
    // formats 2 and 3, whose result takes its place once it is whole.
    static std::optional<QString> convert_to_format(int index, const QString &inputFile);

    // The same with its reason. Waits up to 30 s for the input to appear.
    static foundation::Result<QString> convertRecording(int index, const QString &inputFile, const Converter &converter,
                                                        foundation::Clock &clock);

    // The extension of what that format makes.
    static QString extensionOf(int index);

    // The converter's arguments for an input and the output it writes.
    static QStringList recordingArguments(int index, const QString &inputFile, const QString &outputFile);

    // The quality of that name in the language in force. Main thread.
    static ConvertQuality qualityOf(const QString &text);

    // The same for the queue. An output that bears the name of an ALAC format as its extension gets that of M4A in its
    // place, so the last argument is what is written.
    static QStringList getConvertArgumentsWithOutputPreset(const ConvertPreset &preset, const QString &inputFile,
                                                           QString outputFile);

    // Fails for what has no sound or tells no length.
    static foundation::Result<MediaInformation> readMediaInformation(const QString &file, const Converter &converter);

    // Converts a file into a free name of the folder and answers its path. The progress is told from 0 to below 100.
    static foundation::Result<QString> convertFile(const FileToConvert &file, const Converter &converter,
                                                   const std::function<void(double percent)> &progress = {});

    // What the editor has exported, for the output, whose extension is its type: the same list for every type.
    static QStringList exportArguments(const QString &inputFile, const QString &outputFile);
    // Makes the output in a hidden file of its folder. The input stays.
    static foundation::Result<foundation::HiddenFile>
    convertExported(const QString &inputFile, const QString &outputFile, const Converter &converter,
                    const std::function<void(double percent)> &progress);

    // Joins the files, which are of that format, into the output or the next free name, and answers its path. All of it
    // has been decoded by then. The files stay.
    static foundation::Result<QString> startMerge(const QStringList &paths, const ConvertPreset &usePreset,
                                                  const QString &withOutputFile, const Converter &converter);
    // Where files that begin with this one are joined to.
    static QString mergedPath(const QString &first, const QString &folder, const ConvertPreset &preset);

    // Deletes the file when it exists.
    static void removeCachesFileWithPath(const QString &path);
};

} // namespace cantorel
