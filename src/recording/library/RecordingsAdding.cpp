#include "recording/library/RecordingsAdding.h"

#include "log/GuardedAction.h"
#include "platform/media/asset/OpenAsset.h"
#include "recording/library/RecordedList.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"

#include <QDir>
#include <QFileInfo>

#include <memory>
#include <utility>

namespace cantorel {

namespace {

constexpr foundation::SentenceKey kNotAdded("NotAdded", "FileName");
constexpr foundation::SentenceKey kSeveralNotAdded("SeveralNotAdded", "Count", "FileName");

double secondsOf(const QString &file) {
    if (!QFileInfo(file).isFile()) // Others could keep us waiting.
        return 0;
    const auto asset = media::openAsset(QUrl::fromLocalFile(file));
    return asset && asset.value()->isPlayable() ? asset.value()->duration().seconds() : 0;
}

} // namespace

const QStringList &soundFilePatterns() {
    static const QStringList patterns = [] {
        QStringList all;
        for (const char *suffix : {"mp3",  "m4a", "m4b", "m4r",  "mp4", "aac", "wav", "flac", "ogg", "oga",
                                   "opus", "wma", "aif", "aiff", "ac3", "amr", "ape", "wv",   "mka", "caf"})
            all << QStringLiteral("*.") + QLatin1String(suffix);
        return all;
    }();
    return patterns;
}

RecordingsAdding::RecordingsAdding(RecordedList &list) : mList(list) {}

RecordingsAdding::~RecordingsAdding() {
    mStop.request_stop();
    mWorker.finish();
}

RecordingsAdding::Found RecordingsAdding::lookInto(const QStringList &paths, const std::stop_token &stop) {
    QStringList files;
    for (const QString &path : paths) {
        const QString clean = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
        if (!QFileInfo(clean).isDir()) {
            files << clean;
            continue;
        }
        for (const QFileInfo &file : QDir(clean).entryInfoList(soundFilePatterns(), QDir::Files, QDir::Name))
            files << file.absoluteFilePath();
    }
    files.removeDuplicates();
    Found found;
    for (const QString &file : std::as_const(files)) {
        if (stop.stop_requested())
            break;
        if (const double seconds = secondsOf(file); seconds > 0)
            found.sounds.push_back({file,
                                    ToolString::stringFromDuration(seconds),
                                    ToolFile::fileSizeFormatterToString(QFileInfo(file).size()),
                                    {},
                                    {},
                                    {},
                                    {}});
        else
            found.unreadable << file;
    }
    return found;
}

RecordingsAdding::Added RecordingsAdding::join(Found found) {
    mAdded = mList.append(std::move(found.sounds));
    Added added{mAdded, {}};
    if (!mList.unsaved().isEmpty())
        added.trouble = mList.unsaved();
    else if (found.unreadable.size() == 1)
        added.trouble = kNotAdded(QFileInfo(found.unreadable.front()).fileName());
    else if (!found.unreadable.isEmpty())
        added.trouble =
            kSeveralNotAdded(QString::number(found.unreadable.size()), QFileInfo(found.unreadable.front()).fileName());
    return added;
}

void RecordingsAdding::add(const QStringList &paths, std::function<void(const Added &)> done) {
    mWorker.start([this, paths, stop = mStop.get_token(), done = std::move(done)] {
        const auto found = std::make_shared<Found>();
        (void)guarded("lookInto", [&] { *found = lookInto(paths, stop); }); // logged there
        // The destructor waits for this worker, so "this" is valid here; calls still queued by then are dropped.
        QMetaObject::invokeMethod(this, [this, found, done] { done(join(std::move(*found))); });
    });
}

void RecordingsAdding::undo() { mList.removeFiles(std::exchange(mAdded, {})); }

} // namespace cantorel
