#pragma once

#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <optional>
#include <stop_token>

namespace cantorel::foundation {

// A question to a server of the web.
struct HttpRequest {
    QString url; // http or https; no redirection leads elsewhere, nor from https to http
    QByteArray userAgent;
    std::optional<QByteArray> form; // posted as an encoded form; without one the request is a GET
    bool compressesForm = false;    // by gzip, which the server has to know
};

// What a server may cost at most; what goes beyond fails.
struct HttpLimits {
    std::chrono::milliseconds time = std::chrono::seconds(60); // redirections included
    qint64 bytes = qint64{8} << 20;
    int redirects = 10;
};

struct HttpResponse {
    int status = 0;
    QByteArray body;    // whatever the status
    int retryAfter = 0; // seconds that the server wants us to wait; 0 when it says nothing
};

// Sends a request and waits for the whole answer, or until `stop` is requested. A separate process does it, so that our
// process never loads the network libraries. Blocks; any thread that may.
Result<HttpResponse> sendHttpRequest(const HttpRequest &request, const HttpLimits &limits = {},
                                     const std::stop_token &stop = {});

} // namespace cantorel::foundation
