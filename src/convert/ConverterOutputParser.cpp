#include "convert/ConverterOutputParser.h"

#include "util/ToolString.h"

namespace cantorel {

QString ConverterOutputParser::durationText(const QString &line) {
    if (!line.startsWith(QLatin1String("  Duration:")))
        return {};
    const auto field = ToolString::regexGetStringFromString(line, QStringLiteral(R"(Duration[\s\:]+[\d\:\.]+)"));
    return field ? ToolString::regexGetStringFromString(*field, QStringLiteral(R"(\d[\d\:]+)")).value_or(QString())
                 : QString();
}

bool ConverterOutputParser::tellsOfSound(const QString &line) {
    return line.startsWith(QLatin1String("  Stream #")) && line.contains(QLatin1String(": Audio: "));
}

std::optional<double> ConverterOutputParser::progress(const QString &line, int durationSeconds) {
    if (durationSeconds <= 0 || !line.startsWith(QLatin1String("size=")))
        return {};
    const auto field = ToolString::regexGetStringFromString(line, QStringLiteral(R"(time[\s\=]+[\d\:\.]+)"));
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
