#include "util/easyHTTP.h"

#include "platform/foundation/Console.h"

#include <QList>

namespace cantorel {

namespace {

QByteArray lossyAscii(const QString &text) {
    QByteArray bytes;
    for (const uint letter : text.toUcs4())
        bytes += letter < 0x80 ? static_cast<char>(letter) : '?';
    return bytes;
}

} // namespace

QString easyHTTP::GET(const QString &url, const QString &userAgent) {
    return send({.url = url, .userAgent = userAgent.toUtf8(), .form = {}});
}

void easyHTTP::POST(const QString &url, const QString &postData) {
    const QString body = send({.url = url, .userAgent = {}, .form = lossyAscii(postData)});
    if (!body.isEmpty())
        foundation::printToConsole(QStringLiteral("easyHTTP -> http responseData:\n%1\n").arg(body));
}

QString easyHTTP::send(const foundation::HttpRequest &request) {
    const auto response = foundation::sendHttpRequest(request, mLimits, mStop);
    mFailure = response ? foundation::Sentence() : response.failure().sentence;
    return response ? QString::fromUtf8(response.value().body) : QString();
}

} // namespace cantorel
