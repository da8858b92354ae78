#include "tags/identify/OwnSongs.h"

#include "log/GuardedAction.h"
#include "log/Log.h"
#include "platform/foundation/SearchPaths.h"
#include "settings/AppSettings.h"
#include "tags/identify/SongScan.h"

#include <QMetaObject>

#include <optional>
#include <utility>

namespace cantorel {

OwnSongs::OwnSongs(QString program, QString store) : mProgram(std::move(program)), mStore(std::move(store)) {}

OwnSongs::~OwnSongs() {
    mStop.request_stop();
    mWorker.finish();
}

QStringList OwnSongs::folders() {
    const QStringList stored = AppSettings::ownSongFolders().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    return stored.isEmpty() ? QStringList{foundation::searchPath(foundation::SearchPath::Music)} : stored;
}

void OwnSongs::setFolders(const QStringList &folders) {
    AppSettings::setOwnSongFolders(folders.join(QLatin1Char('\n')));
}

std::stop_token OwnSongs::restart() {
    mStop.request_stop();
    mStop = {};
    mTrouble = {};
    return mStop.get_token();
}

// The destructor waits for the worker, so "this" is valid there; calls still queued by then are dropped.
void OwnSongs::tell(const std::stop_token &stop, std::function<void()> news) {
    QMetaObject::invokeMethod(this, [this, stop, news = std::move(news)] {
        if (stop.stop_requested())
            return;
        news();
        Q_EMIT changed();
    });
}

void OwnSongs::update() {
    const auto stop = restart();
    mIsReading = AppSettings::isOwnSongs();
    if (mIsReading)
        mWorker.start([this, stop, scan = SongScan{mStore, mProgram, folders(), {}, stop}]() mutable {
            scan.progress = [&](int known) { tell(stop, [this, known] { mKnown = known; }); };
            std::optional<foundation::Result<SongScan::Summary>> summary;
            (void)guarded("read songs", [&] { summary = scan.run(); }); // logged there
            if (summary && !*summary)
                Log(QStringLiteral("songs are not read: %1").arg(summary->failure().detail));
            tell(stop, [this, summary] {
                mIsReading = false;
                if (summary && !*summary)
                    mTrouble = summary->failure().sentence;
                else if (summary && summary->value().end == SongScan::End::Done)
                    mKnown = summary->value().known;
            });
        });
    Q_EMIT changed();
}

void OwnSongs::forget() {
    (void)restart(); // nothing is told of what follows
    AppSettings::setOwnSongs(false);
    mIsReading = false;
    mKnown = 0;
    mWorker.start([store = mStore] {
        if (!SongScan::forget(store))
            Log(QStringLiteral("%1 stays, since it is in use").arg(store));
    });
    Q_EMIT changed();
}

} // namespace cantorel
