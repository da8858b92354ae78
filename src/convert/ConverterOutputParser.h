#pragma once

#include <QString>

#include <optional>

namespace cantorel {

// Reads what the converter prints. Stateless; any thread.
class ConverterOutputParser {
public:
    ConverterOutputParser() = delete;

    // "hh:mm:ss" of the first duration that the output tells; empty when it tells none.
    static QString durationText(const QString &output);

    // Percent done by the first time in the text, for a file of that many seconds. Nothing when there is no time, the
    // duration is not known, or the time is not below it.
    static std::optional<double> progress(const QString &text, int durationSeconds);
};

} // namespace cantorel
