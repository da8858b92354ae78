#include "tags/identify/RecognitionServices.h"

#include "log/Log.h"
#include "platform/foundation/SearchPaths.h"
#include "settings/AppSettings.h"
#include "tags/Pictures.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>
#include <QUrl>
#include <QUrlQuery>

#include <algorithm>
#include <condition_variable>
#include <mutex>

namespace cantorel {

using foundation::Failure;
using foundation::HttpRequest;
using foundation::HttpResponse;
using foundation::Result;
using namespace std::chrono_literals;

namespace {

constexpr qint64 kLongestAnswer = 4 << 20, kLargestCover = 8 << 20, kLongestAccess = 4096; // bytes
constexpr int kRedirects = 5;
constexpr int kLongestWait = 30; // seconds that a service may ask for

// Lets requests to one service pass one after the other, so far apart.
class Pace {
public:
    explicit Pace(std::chrono::milliseconds apart) : mApart(apart) {}

    // Waits for one's turn; false when a stop comes first.
    bool wait(const std::stop_token &stop) {
        std::unique_lock lock(mMutex);
        const auto turn = std::max(mNext, std::chrono::steady_clock::now());
        mNext = turn + mApart;
        mWaiting.wait_until(lock, stop, turn, [] { return false; });
        return !stop.stop_requested();
    }

private:
    const std::chrono::milliseconds mApart;
    std::mutex mMutex; // guards mNext
    std::condition_variable_any mWaiting;
    std::chrono::steady_clock::time_point mNext;
};

// As many a second as the services allow.
Pace lookupPace(334ms), musicDataPace(1000ms), coverPace(334ms);

void waitFor(std::chrono::seconds time, const std::stop_token &stop) {
    std::mutex mutex;
    std::unique_lock lock(mutex);
    std::condition_variable_any never;
    never.wait_for(lock, stop, time, [] { return false; });
}

// What a busy service answers.
bool isBusy(int status) { return status == 429 || status == 502 || status == 503 || status == 504; }

// Once more where the service is busy, or gave no answer at all.
Result<HttpResponse> ask(const HttpRequest &request, Pace &pace, qint64 bytes, std::chrono::milliseconds patience,
                         const std::stop_token &stop) {
    const foundation::HttpLimits limits{patience, bytes, kRedirects};
    for (bool isFirst = true;; isFirst = false) {
        if (!pace.wait(stop))
            return Failure{{}, QStringLiteral("stopped")};
        auto answer = foundation::sendHttpRequest(request, limits, stop);
        const bool helps = !answer || isBusy(answer.value().status);
        if (!isFirst || !helps || stop.stop_requested())
            return answer;
        const int asked = answer ? answer.value().retryAfter : 0;
        if (asked > kLongestWait)
            return answer;
        waitFor(std::chrono::seconds(std::max(asked, 1)), stop);
    }
}

} // namespace

RecognitionServices RecognitionServices::fromSettings() {
    RecognitionServices services;
    services.lookup = AppSettings::recognitionServer();
    services.musicData = AppSettings::musicDataServer();
    services.covers = AppSettings::coverServer();
    services.client = AppSettings::recognitionAccess();
    services.isAgreed = AppSettings::isRecognitionAgreed();
    services.userAgent = QStringLiteral("%1/%2 ( com.tessolar.Cantorel )")
                             .arg(AppSettings::appName(), AppSettings::appVersion())
                             .toUtf8();
    return services;
}

RecognitionServices RecognitionServices::at(const QString &server) {
    RecognitionServices services = fromSettings();
    QString address = server;
    while (address.endsWith(QLatin1Char('/')))
        address.chop(1);
    services.lookup = services.musicData = services.covers = address;
    if (services.client.isEmpty())
        services.client = AppSettings::appName(); // Who names a server knows what it wants.
    return services;
}

Result<std::vector<RecognitionCandidate>> RecognitionServices::candidates(const QByteArray &fingerprint, int seconds,
                                                                          const std::stop_token &stop) const {
    if (!hasAccess())
        return Failure{QStringLiteral("There is no access to the recognition service; enter its key in the settings."),
                       QStringLiteral("no key of the look-up service")};
    QUrlQuery form;
    const auto add = [&form](const char *name, const QString &value) {
        form.addQueryItem(QLatin1String(name), QString::fromLatin1(QUrl::toPercentEncoding(value)));
    };
    add("client", client);
    add("clientversion", AppSettings::appVersion());
    add("format", QStringLiteral("json"));
    add("duration", QString::number(seconds));
    add("maxdurationdiff", QStringLiteral("30"));
    add("meta", QStringLiteral("recordings releasegroups releases sources"));
    add("fingerprint", QString::fromLatin1(fingerprint));
    const auto answer =
        ask({lookup + QStringLiteral("/v2/lookup"), userAgent, form.toString(QUrl::FullyEncoded).toLatin1(), true},
            lookupPace, kLongestAnswer, patience, stop);
    if (!answer)
        return answer.failure();
    return recognitionCandidates(answer.value().body);
}

QString RecognitionServices::genre(const QString &recording, const std::stop_token &stop) const {
    if (recording.isEmpty() || musicData.isEmpty())
        return {};
    const QString url = QStringLiteral("%1/ws/2/recording/%2?fmt=json&inc=genres")
                            .arg(musicData, QString::fromLatin1(QUrl::toPercentEncoding(recording)));
    const auto answer = ask({url, userAgent, {}}, musicDataPace, kLongestAnswer, patience, stop);
    if (answer && answer.value().status == 200)
        return mostNamedGenre(answer.value().body);
    Log(QStringLiteral("no genre: %1").arg(answer ? QString::number(answer.value().status) : answer.failure().detail));
    return {};
}

QByteArray RecognitionServices::cover(const QString &release, const std::stop_token &stop) const {
    if (release.isEmpty() || covers.isEmpty())
        return {};
    const QString url =
        QStringLiteral("%1/release/%2/front-500").arg(covers, QString::fromLatin1(QUrl::toPercentEncoding(release)));
    const auto answer = ask({url, userAgent, {}}, coverPace, kLargestCover, patience, stop);
    const auto pictures = loadPictures();
    // The name of its type may lie, so its bytes tell.
    if (answer && answer.value().status == 200 && pictures && pictures.value()->size(answer.value().body))
        return answer.value().body;
    Log(QStringLiteral("no cover: %1").arg(answer ? QString::number(answer.value().status) : answer.failure().detail));
    return {};
}

void refreshRecognitionAccess(const QString &server, const std::stop_token &stop) {
    QFile lastOne(foundation::stateFolder() + QStringLiteral("/cantorel/recognition-access"));
    const QString before = AppSettings::recognitionAccess();
    const QByteArray handedOut = lastOne.open(QIODevice::ReadOnly) ? lastOne.readAll() : QByteArray();
    if (server.isEmpty() || (!before.isEmpty() && before.toLatin1() != handedOut))
        return;
    const foundation::HttpLimits limits{30s, kLongestAccess, kRedirects};
    const auto answer = foundation::sendHttpRequest(
        {server + QStringLiteral("/recognition/cantorel.txt"), RecognitionServices::fromSettings().userAgent, {}},
        limits, stop);
    static const QRegularExpression key(QStringLiteral("^[A-Za-z0-9_-]{4,128}$"));
    const QString access = answer ? QString::fromLatin1(answer.value().body).trimmed() : QString();
    if (!answer || answer.value().status != 200 || !key.match(access).hasMatch())
        return Log(QStringLiteral("no access to recognition: %1")
                       .arg(answer ? QString::number(answer.value().status) : answer.failure().detail));
    if (access == before || AppSettings::recognitionAccess() != before) // which was entered meanwhile
        return;
    // Noted first: one that is stored and not noted counts as entered by the person.
    QDir().mkpath(QFileInfo(lastOne).path());
    QSaveFile note(lastOne.fileName());
    if (note.open(QIODevice::WriteOnly) && note.write(access.toLatin1()) == access.size() && note.commit())
        AppSettings::setRecognitionAccess(access);
}

} // namespace cantorel
