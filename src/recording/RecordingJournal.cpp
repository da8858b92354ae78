#include "recording/RecordingJournal.h"

#include "log/Log.h"
#include "platform/media/RecordingRepair.h"
#include "platform/media/SoundReader.h"
#include "util/ToolString.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace cantorel {

RecordingJournal::RecordingJournal(const QString &folder) : mFolder(folder) {}

bool RecordingJournal::claim() {
    QDir().mkpath(mFolder);
    if (!mLock) {
        mLock = std::make_unique<QLockFile>(mFolder + QStringLiteral("/recorder.lock"));
        mLock->setStaleLockTime(0); // Only the end of its process makes a lock stale.
    }
    return mLock->isLocked() || mLock->tryLock();
}

QStringList RecordingJournal::read() const {
    QFile file(mFolder + QStringLiteral("/recording"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList files;
    // Names may hold line feeds, but no zero byte.
    for (const QByteArray &name : file.readAll().split('\0')) {
        if (!name.isEmpty())
            files.append(QFile::decodeName(name));
    }
    return files;
}

bool RecordingJournal::write(const QStringList &files) const {
    QByteArray names;
    for (const QString &file : files)
        names += QFile::encodeName(file) + '\0';
    QSaveFile file(mFolder + QStringLiteral("/recording"));
    return file.open(QIODevice::WriteOnly) && file.write(names) == names.size() && file.commit();
}

bool RecordingJournal::begin(const QString &file) {
    return write(read() + QStringList{QFileInfo(file).absoluteFilePath()});
}

void RecordingJournal::end(const QString &file) {
    QStringList files = read();
    files.removeAll(QFileInfo(file).absoluteFilePath());
    (void)write(files); // At worst the next start looks at a file that is whole and leaves it alone.
}

std::vector<RecordingJournal::Recovered> RecordingJournal::recover() {
    std::vector<Recovered> recovered;
    for (const QString &file : read()) {
        if (media::isUnfinished(file)) {
            const QFileInfo info(file);
            const QString copy = info.path() + QStringLiteral("/.") + info.fileName() + QStringLiteral(".repaired.m4a");
            const auto repaired = media::repairUnfinished(file, copy);
            if (repaired && QFile(copy).exists() && ::rename(QFile::encodeName(copy), QFile::encodeName(file)) == 0) {
                recovered.push_back({file, file, repaired.value().durationSeconds, {}});
                Log(QStringLiteral("recovered an unfinished recording : %1").arg(file));
            } else {
                QFile::remove(copy);
                const QString kept = ToolString::renameFromFilePath(
                    info.path() + QLatin1Char('/') + info.completeBaseName() + QStringLiteral(" (unfinished).m4a"), 0);
                const bool renamed = QFile::rename(file, kept);
                const QString why = repaired ? QStringLiteral("The repaired copy could not take its place.")
                                             : repaired.failure().sentence;
                recovered.push_back({file, renamed ? kept : file, 0, why});
                Log(QStringLiteral("could not recover %1 : %2").arg(file, why));
            }
        } else if (const auto sound = media::openSound(file, 44100, 2)) {
            recovered.push_back({file, file, sound.value()->durationSeconds(), {}});
        }
        end(file);
    }
    return recovered;
}

} // namespace cantorel
