#pragma once

#include "platform/foundation/Clock.h"
#include "platform/foundation/Result.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <stop_token>

namespace cantorel {

// Class operations that convert files by the converter program, a child process. They block, so they run on workers.
class AudioConverter {
public:
    AudioConverter() = delete;

    // What a conversion needs of the world around it.
    struct Surroundings {
        QString converter;        // path of the program; writes into the file that CANTOREL_CONVERT_INTO names
        foundation::Clock &clock; // waits for the input
        // How long the converter may take; usualLimit() by default.
        std::optional<foundation::Clock::Duration> limit = {};
        std::stop_token stop = {}; // ends the conversion
    };

    // Converts a finished recording to the output format of that index (0 to 9, any other counts as 1) and answers the
    // path of the result, or nothing, with the reason in the log. The recording itself stays, but for the lossless
    // formats 2 and 3, whose result takes its place once it is whole.
    static std::optional<QString> convert_to_format(int index, const QString &inputFile);

    // The same with its reason. Waits up to 30 s for the input to appear. A result has its name only when all of the
    // recording is in it and on the disk; it replaces no other file.
    static foundation::Result<QString> convertRecording(int index, const QString &inputFile,
                                                        const Surroundings &surroundings);

    // Two minutes, and at least the length of the recording by its size.
    static foundation::Clock::Duration usualLimit(const QString &inputFile);

    // The extension of what that format makes.
    static QString extensionOf(int index);

    // The converter's arguments for an input and the output it writes.
    static QStringList recordingArguments(int index, const QString &inputFile, const QString &outputFile);

    // Deletes the file when it exists.
    static void removeCachesFileWithPath(const QString &path);
};

} // namespace cantorel
