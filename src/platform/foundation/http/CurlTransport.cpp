#include "platform/foundation/HttpClient.h"
#include "platform/foundation/http/CurlHandles.h"

#include <QUrl>

#include <array>

namespace cantorel::foundation {

namespace {

constexpr int kPollMilliseconds = 1000; // A stop wakes it.

struct Answer {
    QByteArray body;
    qint64 most = 0; // bytes
};

std::size_t take(const char *bytes, std::size_t size, std::size_t count, void *answer) {
    auto &into = *static_cast<Answer *>(answer);
    const auto length = static_cast<qsizetype>(size * count);
    if (into.body.size() + length > into.most)
        return CURL_WRITEFUNC_ERROR;
    into.body.append(bytes, length);
    return size * count;
}

// A text that cannot begin a header of its own.
QByteArray oneLine(QByteArray text) { return text.replace('\r', "").replace('\n', ""); }

// One request: its options, which have to live as long as it, and how it is carried out.
class Transfer {
public:
    Transfer(const HttpRequest &request, const HttpLimits &limits)
        : mUrl(QUrl(request.url).toEncoded()),
          mUserAgent(oneLine(request.userAgent)),
          mForm(request.form),
          mAnswer{{}, limits.bytes} {
        set(CURLOPT_URL, mUrl.constData());
        set(CURLOPT_PROTOCOLS_STR, "http,https");
        set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
        set(CURLOPT_FOLLOWLOCATION, 1L);
        set(CURLOPT_MAXREDIRS, static_cast<long>(limits.redirects));
        set(CURLOPT_TIMEOUT_MS, static_cast<long>(limits.time.count()));
        set(CURLOPT_NOSIGNAL, 1L);
        set(CURLOPT_QUICK_EXIT, 1L); // A stop does not wait for the name to be looked up.
        set(CURLOPT_USERAGENT, mUserAgent.constData());
        set(CURLOPT_WRITEFUNCTION, &take);
        set(CURLOPT_WRITEDATA, &mAnswer);
        set(CURLOPT_ERRORBUFFER, mError.data());
        if (mForm) { // Its type and its length are the library's own headers for it.
            set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(mForm->size()));
            set(CURLOPT_POSTFIELDS, mForm->constData());
            mHeaders.reset(curl_slist_append(nullptr, "Expect:")); // It is sent at once, whatever its length.
            set(CURLOPT_HTTPHEADER, mHeaders.get());
        }
    }

    Result<HttpResponse> run(const std::stop_token &stop) {
        const CurlMulti multi(curl_multi_init());
        if (!multi || !mEasy || curl_multi_add_handle(multi.get(), mEasy.get()) != CURLM_OK)
            return failed(QStringLiteral("no memory"));
        CURLcode code = CURLE_ABORTED_BY_CALLBACK;
        {
            const std::stop_callback wake(stop, [&multi] { curl_multi_wakeup(multi.get()); });
            int running = 1;
            while (running > 0 && !stop.stop_requested() && curl_multi_perform(multi.get(), &running) == CURLM_OK)
                if (running > 0)
                    curl_multi_poll(multi.get(), nullptr, 0, kPollMilliseconds, nullptr);
            int left = 0;
            if (const CURLMsg *message = curl_multi_info_read(multi.get(), &left))
                code = message->data.result;
        }
        curl_multi_remove_handle(multi.get(), mEasy.get());
        if (code != CURLE_OK)
            return failed(mError[0] != '\0' ? QString::fromUtf8(mError.data())
                                            : QString::fromUtf8(curl_easy_strerror(code)));
        long status = 0;
        curl_easy_getinfo(mEasy.get(), CURLINFO_RESPONSE_CODE, &status);
        return HttpResponse{static_cast<int>(status), std::move(mAnswer.body)};
    }

private:
    template <class Value> void set(CURLoption option, Value value) {
        if (mEasy)
            curl_easy_setopt(mEasy.get(), option, value);
    }
    Failure failed(const QString &why) const {
        return {QStringLiteral("%1 gave no answer; check the address and the network connection.")
                    .arg(QString::fromUtf8(mUrl)),
                QStringLiteral("http: %1: %2").arg(QString::fromUtf8(mUrl), why)};
    }

    const QByteArray mUrl;
    const QByteArray mUserAgent;
    const std::optional<QByteArray> mForm;
    Answer mAnswer;
    std::array<char, CURL_ERROR_SIZE> mError{};
    CurlList mHeaders;
    const CurlEasy mEasy{curl_easy_init()};
};

class CurlTransport : public HttpTransport {
public:
    CurlTransport() { curl_global_init(CURL_GLOBAL_DEFAULT); }

    Result<HttpResponse> send(const HttpRequest &request, const HttpLimits &limits,
                              const std::stop_token &stop) const override {
        return Transfer(request, limits).run(stop);
    }
};

} // namespace

} // namespace cantorel::foundation

extern "C" __attribute__((visibility("default"))) const cantorel::foundation::HttpTransport *cantorel_http_transport() {
    static const cantorel::foundation::CurlTransport transport;
    return &transport;
}
