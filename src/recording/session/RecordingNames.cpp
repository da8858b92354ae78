#include "recording/session/RecordingNames.h"

#include "convert/AudioConverter.h"
#include "settings/AppSettings.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"
#include "util/tools/Tools.h"

#include <QDir>
#include <QFileInfo>

namespace cantorel {

bool recordingIsNamedByHand() { return !AppSettings::isAutoGenFileName() && AppSettings::outputFileName().isEmpty(); }

QString chosenRecordingPath(const std::optional<ExecutedTask> &task) {
    if (task) {
        const QString count =
            task->repeats && task->loopedCount > 0 ? QStringLiteral("(%1)").arg(task->loopedCount) : QString();
        const QString name = ToolFile::cleanFileName(task->name);
        return QStringLiteral("%1/%2%3.m4a")
            .arg(AppSettings::outputPath(), name.isEmpty() ? QStringLiteral("Track") : name, count);
    }
    if (AppSettings::isAutoGenFileName())
        return Tools::getAudioNameFromTrack();
    if (recordingIsNamedByHand())
        AppSettings::setOutputFileName(Tools::getAudioNameFromDialog());
    return AppSettings::outputFileName();
}

QString freeRecordingPath(const QString &chosen) {
    const QString extension = AudioConverter::extensionOf(AppSettings::getAudioFormat());
    const auto isFree = [&](const QString &path) {
        return !QFileInfo::exists(path) && !QFileInfo::exists(ToolFile::pathWithExtension(path, extension));
    };
    QString path = ToolString::renameFromFilePath(chosen, 0);
    const QString base = ToolFile::pathWithExtension(chosen, {});
    for (qint64 n = 1; !isFree(path); ++n)
        path = QStringLiteral("%1(%2).m4a").arg(base).arg(n);
    return path;
}

QString freeMoviePath(const QString &chosen) {
    const QString base = ToolFile::pathWithExtension(chosen, {});
    QString path = base + QStringLiteral(".mp4");
    for (qint64 n = 1; QFileInfo::exists(path); ++n)
        path = QStringLiteral("%1(%2).mp4").arg(base).arg(n);
    return path;
}

namespace {

QString besideNone(const QString &lost) {
    const QString folder = AppSettings::outputPath(); // the music folder, where the chosen one is gone
    QDir().mkpath(folder);
    return folder + QLatin1Char('/') + QFileInfo(lost).fileName();
}

} // namespace

QString rescuePath(const QString &lost) { return freeRecordingPath(besideNone(lost)); }

QString movieRescuePath(const QString &lost) { return freeMoviePath(besideNone(lost)); }

} // namespace cantorel
