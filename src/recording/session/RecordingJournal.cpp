#include "recording/session/RecordingJournal.h"

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
    const QString path = QFileInfo(file).absoluteFilePath();
    if (!write(read() + QStringList{path}))
        return false;
    mOwn.append(path);
    return true;
}

void RecordingJournal::end(const QString &file) {
    giveUp(file);
    QStringList files = read();
    files.removeAll(QFileInfo(file).absoluteFilePath());
    (void)write(files); // At worst the next start looks at a file that is whole and leaves it alone.
}

void RecordingJournal::giveUp(const QString &file) { mOwn.removeAll(QFileInfo(file).absoluteFilePath()); }

QStringList RecordingJournal::abandoned() const {
    QStringList files = read();
    files.removeDuplicates();
    files.removeIf([this](const QString &file) { return mOwn.contains(file); });
    return files;
}

std::vector<RecordingJournal::Leftover> RecordingJournal::leftovers() const {
    std::vector<Leftover> found;
    for (const QString &file : abandoned()) {
        if (!media::isUnfinished(file))
            continue;
        const QFileInfo info(file);
        found.push_back({file, info.size(), media::unfinishedSeconds(file), info.lastModified()});
    }
    return found;
}

std::optional<RecordingJournal::Recovered> RecordingJournal::repair(const QString &file) {
    if (!media::isUnfinished(file)) {
        if (const auto sound = media::openSound(file, 44100, 2))
            return Recovered{file, file, sound.value()->durationSeconds(), {}};
        return {};
    }
    const auto repaired = media::repairUnfinished(file, file);
    if (repaired) {
        Log(QStringLiteral("recovered an unfinished recording : %1").arg(file));
        return Recovered{file, file, repaired.value().durationSeconds, {}};
    }
    Log(QStringLiteral("could not recover %1 : %2").arg(file, repaired.failure().detail));
    Recovered failed{file, file, 0, repaired.failure().sentence};
    if (media::unfinishedSound(file) == media::UnfinishedSound::Whole)
        return failed; // What was in the way, a full disk for one, may be gone by the next start.
    const QFileInfo info(file);
    const QString kept = ToolString::renameFromFilePath(
        info.path() + QLatin1Char('/') + info.completeBaseName() + QStringLiteral(" (unfinished).m4a"), 0);
    if (QFile::rename(file, kept))
        failed.file = kept;
    return failed;
}

QStringList RecordingJournal::dropEmpty() {
    QStringList dropped;
    for (const QString &file : abandoned()) {
        if (!media::isUnfinished(file) || media::unfinishedSound(file) != media::UnfinishedSound::None
            || !QFile::remove(file))
            continue;
        end(file);
        dropped.append(file);
    }
    return dropped;
}

std::vector<RecordingJournal::Recovered> RecordingJournal::recover() {
    std::vector<Recovered> recovered;
    for (const QString &file : abandoned()) {
        const auto repaired = repair(file);
        if (!repaired || !repaired->isPending())
            end(file);
        if (repaired)
            recovered.push_back(*repaired);
    }
    return recovered;
}

} // namespace cantorel
