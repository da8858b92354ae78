// The part of the program that speaks with servers: reads one question, asks it, writes the answer, and ends. A process
// of its own, so that neither the memory of a dozen network libraries nor a fault in one of them reaches a recording.

#include "platform/foundation/HttpExchange.h"
#include "platform/foundation/http/CurlHandles.h"

#include <QFile>
#include <QUrl>

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdio>

namespace cantorel::foundation {

namespace {

constexpr int kGzip = 15 + 16;          // the largest window, in gzip's frame
constexpr curl_off_t kLongest = 86'400; // seconds

struct Body {
    QByteArray bytes;
    qint64 most = 0;
};

std::size_t take(const char *bytes, std::size_t size, std::size_t count, void *body) {
    auto &into = *static_cast<Body *>(body);
    const auto length = static_cast<qsizetype>(size * count);
    if (into.bytes.size() + length > into.most)
        return CURL_WRITEFUNC_ERROR;
    into.bytes.append(bytes, length);
    return size * count;
}

// A form as gzip; empty when there is no memory.
QByteArray compressed(QByteArray form) {
    z_stream stream{};
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kGzip, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        return {};
    QByteArray packed(static_cast<qsizetype>(deflateBound(&stream, static_cast<uLong>(form.size()))),
                      Qt::Uninitialized);
    stream.next_in = reinterpret_cast<Bytef *>(form.data());
    stream.avail_in = static_cast<uInt>(form.size());
    stream.next_out = reinterpret_cast<Bytef *>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    const bool isDone = deflate(&stream, Z_FINISH) == Z_STREAM_END;
    packed.truncate(isDone ? static_cast<qsizetype>(stream.total_out) : 0);
    deflateEnd(&stream);
    return packed;
}

// A text that cannot begin a header of its own.
QByteArray oneLine(QByteArray text) { return text.replace('\r', "").replace('\n', ""); }

HttpAnswer answerTo(const HttpQuestion &question) {
    const auto &[request, limits] = question;
    const CurlEasy easy(curl_easy_init());
    if (!easy)
        return {{}, QStringLiteral("no memory")};
    const auto set = [&easy](CURLoption option, auto value) { curl_easy_setopt(easy.get(), option, value); };
    Body body{{}, limits.bytes};
    std::array<char, CURL_ERROR_SIZE> error{};
    CurlList headers;
    set(CURLOPT_URL, QUrl(request.url).toEncoded().constData());
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, redirectionProtocols(request.url));
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, static_cast<long>(limits.redirects));
    set(CURLOPT_TIMEOUT_MS, static_cast<long>(limits.time.count()));
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_USERAGENT, oneLine(request.userAgent).constData());
    set(CURLOPT_WRITEFUNCTION, &take);
    set(CURLOPT_WRITEDATA, &body);
    set(CURLOPT_ERRORBUFFER, error.data());
    const QByteArray form =
        request.compressesForm ? compressed(request.form.value_or(QByteArray())) : request.form.value_or(QByteArray());
    if (request.form) { // Its type and its length are the library's own headers for it.
        set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(form.size()));
        set(CURLOPT_POSTFIELDS, form.constData());
        headers.reset(curl_slist_append(nullptr, "Expect:")); // It is sent at once, whatever its length.
        if (request.compressesForm)
            curl_slist_append(headers.get(), "Content-Encoding: gzip");
        set(CURLOPT_HTTPHEADER, headers.get());
    }
    const CURLcode code = curl_easy_perform(easy.get());
    if (code != CURLE_OK)
        return {{}, QString::fromUtf8(error[0] != '\0' ? error.data() : curl_easy_strerror(code))};
    long status = 0;
    curl_easy_getinfo(easy.get(), CURLINFO_RESPONSE_CODE, &status);
    curl_off_t retryAfter = 0;
    curl_easy_getinfo(easy.get(), CURLINFO_RETRY_AFTER, &retryAfter);
    return {
        {static_cast<int>(status), std::move(body.bytes), static_cast<int>(std::min<curl_off_t>(retryAfter, kLongest))},
        {}};
}

int run() {
    QFile input, output;
    if (!input.open(stdin, QIODevice::ReadOnly) || !output.open(stdout, QIODevice::WriteOnly))
        return 1;
    const QByteArray bytes = input.readAll();
    QDataStream from(bytes);
    HttpQuestion question;
    from >> question;
    if (from.status() != QDataStream::Ok) {
        std::fputs("This is a part of Cantorel, which Cantorel starts itself.\n", stderr);
        return 2;
    }
    curl_global_init(CURL_GLOBAL_DEFAULT);
    const HttpAnswer answer = answerTo(question);
    curl_global_cleanup();
    QDataStream to(&output);
    to << answer;
    return output.flush() ? 0 : 1;
}

} // namespace

} // namespace cantorel::foundation

int main() { return cantorel::foundation::run(); }
