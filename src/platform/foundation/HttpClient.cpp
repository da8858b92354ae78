#include "platform/foundation/HttpClient.h"

#include "platform/foundation/ChildProcess.h"
#include "platform/foundation/HttpExchange.h"
#include "platform/foundation/LoadedModule.h"

#include <QIODevice>

namespace cantorel::foundation {

namespace {

constexpr std::chrono::seconds kGrace(5); // beyond the request's own limit, which the part keeps itself

QString troubleOf(const ChildProcess::Ending &ending) {
    if (ending.timedOut)
        return QStringLiteral("nothing came in time");
    return ending.signal != 0 ? QStringLiteral("ended by signal %1").arg(ending.signal)
                              : QStringLiteral("no answer, exit status %1").arg(ending.exitStatus);
}

} // namespace

Result<HttpResponse> sendHttpRequest(const HttpRequest &request, const HttpLimits &limits,
                                     const std::stop_token &stop) {
    ChildProcess::Command part{.program = partPath("cantorel-http"), .arguments = {}, .folder = {}, .environment = {}};
    part.errorsApart = true;
    QDataStream question(&part.input, QIODevice::WriteOnly);
    question << HttpQuestion{request, limits};
    const auto finished = ChildProcess::run(part, limits.time + kGrace, stop);
    if (!finished)
        return finished.failure();

    HttpAnswer answer;
    QDataStream from(finished.value().output);
    from >> answer;
    if (from.status() != QDataStream::Ok)
        answer.trouble = troubleOf(finished.value().ending);
    if (answer.trouble.isEmpty())
        return answer.response;
    return Failure{QStringLiteral("%1 gave no answer; check the address and the network connection.").arg(request.url),
                   QStringLiteral("http: %1: %2").arg(request.url, answer.trouble)};
}

} // namespace cantorel::foundation
