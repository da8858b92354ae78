#include "convert/queue/ConvertAdding.h"

#include "settings/AppSettings.h"

#include <QDirIterator>
#include <QFileInfo>

#include <utility>

namespace cantorel {

namespace {

QStringList filesIn(const QString &folder, const std::stop_token &stop) {
    QStringList files;
    QDirIterator below(folder, QDir::Files, QDirIterator::Subdirectories);
    while (below.hasNext() && !stop.stop_requested()) {
        const QString file = below.next();
        const QString extension = QFileInfo(file).suffix();
        if (!extension.isEmpty() && AppSettings::isSuportIntoConvertFileFormat(extension))
            files << file;
    }
    files.sort();
    return files;
}

} // namespace

ConvertAdding::ConvertAdding() = default;

ConvertAdding::~ConvertAdding() {
    mStop.request_stop();
    mWorker.finish();
}

void ConvertAdding::find(const QStringList &paths, std::function<void(const QList<QUrl> &)> found) {
    mWorker.start([this, paths, stop = mStop.get_token(), found = std::move(found)] {
        QList<QUrl> urls;
        for (const QString &path : paths)
            for (const QString &file : QFileInfo(path).isDir() ? filesIn(path, stop) : QStringList{path})
                urls << QUrl::fromLocalFile(QFileInfo(file).absoluteFilePath());
        // The destructor waits for this worker, so "this" is valid here; calls still queued by then are dropped.
        QMetaObject::invokeMethod(this, [found, urls] { found(urls); });
    });
}

} // namespace cantorel
