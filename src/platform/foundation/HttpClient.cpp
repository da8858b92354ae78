#include "platform/foundation/HttpClient.h"

#include "platform/foundation/LoadedModule.h"

namespace cantorel::foundation {

Result<HttpResponse> sendHttpRequest(const HttpRequest &request, const HttpLimits &limits,
                                     const std::stop_token &stop) {
    static const auto transport = []() -> Result<const HttpTransport *> {
        const auto entry = loadEntryPoint("cantorel-http.so", kHttpEntryPoint);
        if (!entry)
            return entry.failure();
        return reinterpret_cast<HttpEntryPoint>(entry.value())();
    }();
    if (!transport)
        return transport.failure();
    return transport.value()->send(request, limits, stop);
}

} // namespace cantorel::foundation
