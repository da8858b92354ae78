#pragma once

#include "platform/foundation/HttpClient.h"

#include <QDataStream>

namespace cantorel::foundation {

// What the program and its part cantorel-http tell each other: one question on the part's standard input, one answer on
// its standard output. Both come out of one build, so no version is told.
struct HttpQuestion {
    HttpRequest request;
    HttpLimits limits;
};

struct HttpAnswer {
    HttpResponse response;
    QString trouble; // why there is no response; empty when there is one
};

// What a redirection may lead to: what was asked for over a safe line is never asked for over an open one.
inline const char *redirectionProtocols(const QString &url) {
    return url.trimmed().startsWith(QLatin1String("https:"), Qt::CaseInsensitive) ? "https" : "http,https";
}

inline QDataStream &operator<<(QDataStream &stream, const HttpQuestion &question) {
    const auto &[request, limits] = question;
    return stream << request.url << request.userAgent << request.form.has_value() << request.form.value_or(QByteArray())
                  << request.compressesForm << static_cast<qint64>(limits.time.count()) << limits.bytes
                  << limits.redirects;
}

inline QDataStream &operator>>(QDataStream &stream, HttpQuestion &question) {
    auto &[request, limits] = question;
    bool isForm = false;
    QByteArray form;
    qint64 time = 0;
    stream >> request.url >> request.userAgent >> isForm >> form >> request.compressesForm >> time >> limits.bytes
        >> limits.redirects;
    request.form = isForm ? std::optional(form) : std::nullopt;
    limits.time = std::chrono::milliseconds(time);
    return stream;
}

inline QDataStream &operator<<(QDataStream &stream, const HttpAnswer &answer) {
    return stream << answer.trouble << answer.response.status << answer.response.body << answer.response.retryAfter;
}

inline QDataStream &operator>>(QDataStream &stream, HttpAnswer &answer) {
    return stream >> answer.trouble >> answer.response.status >> answer.response.body >> answer.response.retryAfter;
}

} // namespace cantorel::foundation
