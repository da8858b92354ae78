#include "convert/ConverterOutputParser.h"

#include "util/ToolString.h"

namespace cantorel {

QString ConverterOutputParser::durationText(const QString &output) {
    const auto line = ToolString::regexGetStringFromString(output, QStringLiteral(R"(Duration[\s\:]+[\d\:\.]+)"));
    return line ? ToolString::regexGetStringFromString(*line, QStringLiteral(R"(\d[\d\:]+)")).value_or(QString())
                : QString();
}

std::optional<double> ConverterOutputParser::progress(const QString &text, int durationSeconds) {
    if (durationSeconds <= 0)
        return {};
    const auto field = ToolString::regexGetStringFromString(text, QStringLiteral(R"(time[\s\=]+[\d\:\.]+)"));
    const auto time =
        field ? ToolString::regexGetStringFromString(*field, QStringLiteral(R"(\d[\d\:\.]+)")) : std::nullopt;
    if (!time)
        return {};
    const int seconds = ToolString::secondFromString(*time);
    if (seconds >= durationSeconds)
        return {};
    return 100.0 * seconds / durationSeconds;
}

} // namespace cantorel
