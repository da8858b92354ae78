#pragma once

#include <QString>

#include <optional>

namespace cantorel {

// Reads what the converter prints. Stateless; any thread.
class ConverterOutputParser {
public:
    ConverterOutputParser() = delete;

    // "hh:mm:ss" of a line that tells the duration of an input; empty for others. What a file is called may look like
    // such a line, but does not begin like one; the same holds for the others here.
    static QString durationText(const QString &line);

    // Whether the line names a stream of sound.
    static bool tellsOfSound(const QString &line);

    // Percent done by the first time in a line of progress, for a file of that many seconds. Nothing when there is no
    // time, the duration is not known, or the time is not below it.
    static std::optional<double> progress(const QString &line, int durationSeconds);
};

} // namespace cantorel
