#pragma once

#include "platform/foundation/HttpClient.h"
#include "platform/foundation/Sentence.h"

#include <QByteArray>
#include <QString>

namespace cantorel {

// A small HTTP client whose requests block: never on the main thread. What fails yields no text and raises nothing; one
// request at a time.
class easyHTTP {
public:
    // Deliberately of another system.
    static constexpr const char *kDefaultUserAgent =
        "Mozilla/5.0 (Windows NT 6.1; rv:22.0) Gecko/20100101 Firefox/22.0";

    // A requested stop ends a request at once.
    explicit easyHTTP(const foundation::HttpLimits &limits = {}, std::stop_token stop = {})
        : mLimits(limits), mStop(std::move(stop)) {}

    // The body as text, whatever the status: an error page's too. Empty when none came.
    QString GET(const QString &url, const QString &userAgent = QString::fromLatin1(kDefaultUserAgent));
    // Sends a form; what is not ASCII in it becomes "?". The answer is written to the console.
    void POST(const QString &url, const QString &postData);

    // Why the last request brought nothing, in one sentence; empty when it brought something.
    const foundation::Sentence &failure() const { return mFailure; }

    // For a connection that brings its answer piece by piece; the requests above use none of these.
    void connectionDidReceiveResponse() { mReceivedData.clear(); }
    void connectionDidReceiveData(const QByteArray &data) { mReceivedData += data; }
    void connectionDidFailWithError() { mReceivedData.clear(); }
    // All that was received, as text: letters may have come in two pieces.
    QString connectionDidFinishLoading() const { return QString::fromUtf8(mReceivedData); }

private:
    QString send(const foundation::HttpRequest &request);

    const foundation::HttpLimits mLimits;
    const std::stop_token mStop;
    foundation::Sentence mFailure;
    QByteArray mReceivedData;
};

} // namespace cantorel
