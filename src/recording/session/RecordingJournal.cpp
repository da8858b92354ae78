#include "recording/session/RecordingJournal.h"

#include "convert/AudioConverter.h"
#include "lang/Lang.h"
#include "log/Log.h"
#include "platform/foundation/FileLock.h"
#include "platform/media/MediaFailures.h"
#include "platform/media/RecordingRepair.h"
#include "platform/media/UnfinishedName.h"
#include "platform/media/asset/OpenAsset.h"
#include "recording/library/RecordedAudioInfo.h"
#include "settings/AppSettings.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <optional>
#include <utility>

namespace cantorel {

RecordingJournal::RecordingJournal(const QString &folder) : mFolder(folder) {}

bool RecordingJournal::claim() {
    QDir().mkpath(mFolder);
    if (!mLock.isOpen())
        mLock = foundation::lockFile(mFolder + QStringLiteral("/recorder.lock"));
    // Where nothing can be written there is no other one, and beginning a recording says why it can't be.
    return mLock.isOpen() || errno != EWOULDBLOCK;
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
    return file.open(QIODevice::WriteOnly) && file.setPermissions(QFile::ReadOwner | QFile::WriteOwner)
           && file.write(names) == names.size() && file.commit();
}

bool RecordingJournal::begin(const QString &file) {
    const QString path = QFileInfo(file).absoluteFilePath();
    if (!write(read() + QStringList{path}))
        return false;
    mEnded.removeAll(path);
    mOwn.append(path);
    return true;
}

void RecordingJournal::end(const QString &file) {
    giveUp(file);
    mEnded.append(QFileInfo(file).absoluteFilePath());
    if (listIsStored && !listIsStored())
        return;
    QStringList files = read();
    files.removeIf([this](const QString &one) { return mEnded.contains(one); });
    if (write(files)) // At worst the next start looks at a file that is whole and leaves it alone.
        mEnded.clear();
}

void RecordingJournal::giveUp(const QString &file) { mOwn.removeAll(QFileInfo(file).absoluteFilePath()); }

void RecordingJournal::settle(const QString &file) {
    if (media::isUnfinished(file) || (!media::finishedName(file).isEmpty() && QFileInfo::exists(file)))
        giveUp(file);
    else
        end(file);
}

QStringList RecordingJournal::abandoned() const {
    QStringList files = read();
    files.removeDuplicates();
    files.removeIf([this](const QString &file) { return mOwn.contains(file) || mEnded.contains(file); });
    return files;
}

std::vector<RecordingJournal::Leftover> RecordingJournal::leftovers() const {
    std::vector<Leftover> found;
    for (const QString &file : abandoned()) {
        const QFileInfo info(file);
        if (!info.isFile() || !media::isUnfinished(file)) // Opening a pipe would wait for a writer.
            continue;
        found.push_back({file, info.size(), media::unfinishedSeconds(file), info.lastModified()});
    }
    return found;
}

namespace {

using Recovered = RecordingJournal::Recovered;

// A file that is whole, or nothing.
std::optional<Recovered> whole(const QString &file) {
    if (!QFileInfo(file).isFile())
        return {};
    if (const auto seconds = media::movieSeconds(file)) // it may have no sound
        return Recovered{file, file, *seconds, {}, true};
    const auto sound = media::openAsset(QUrl::fromLocalFile(file));
    if (!sound || !sound.value()->isPlayable())
        return {};
    return Recovered{file, file, sound.value()->duration().seconds(), {}, true};
}

Recovered repaired(const QFileInfo &info) {
    const QString file = info.filePath();
    // A movie has grown under a hidden name; the one that it was to get may be another file's by now.
    const QString named = media::finishedName(file);
    const QString target = named.isEmpty() ? file : ToolString::renameFromFilePath(named, 0);
    const auto repaired = media::repairUnfinished(file, target);
    if (repaired) {
        Log(QStringLiteral("recovered an unfinished recording : %1").arg(target));
        if (target != file)
            (void)QFile::remove(file); // it stays hidden at worst
        return Recovered{file, target, repaired.value().durationSeconds, {}};
    }
    Log(QStringLiteral("could not recover %1 : %2").arg(file, repaired.failure().detail));
    Recovered failed{file, file, 0, repaired.failure().sentence};
    if (media::unfinishedSound(file) == media::UnfinishedSound::Whole)
        return failed; // What was in the way, a full disk for one, may be gone by the next start.
    const QFileInfo shown(named.isEmpty() ? file : named);
    const QString kept = ToolString::renameFromFilePath(
        QStringLiteral("%1/%2 (unfinished).%3").arg(info.path(), shown.completeBaseName(), shown.suffix()), 0);
    if (QFile::rename(file, kept))
        failed.file = kept;
    return failed;
}

// A movie whose program ended before it had its own name.
Recovered named(const QString &file, double seconds) {
    const QString path = ToolString::renameFromFilePath(media::finishedName(file), 0);
    if (QFile::rename(file, path))
        return {file, path, seconds, {}};
    return {file, file, 0, media::failures::cannotCreate(path, errno).sentence};
}

} // namespace

QStringList RecordingJournal::dropEmpty() {
    QStringList dropped;
    for (const QString &file : abandoned()) {
        if (!QFileInfo(file).isFile() || !media::isUnfinished(file)
            || media::unfinishedSound(file) != media::UnfinishedSound::None || !QFile::remove(file))
            continue;
        end(file);
        dropped.append(file);
    }
    return dropped;
}

std::vector<RecordingJournal::Recovered> RecordingJournal::recover(const QString &file) {
    std::vector<Recovered> recovered;
    const QFileInfo info(file);
    if (info.isFile() && media::isUnfinished(file))
        return {repaired(info)};
    auto found = whole(file);
    if (found && !media::finishedName(file).isEmpty())
        return {named(file, found->durationSeconds)};
    if (found)
        recovered.push_back(*std::move(found));
    if (isMovieFile(file)) // It is not converted.
        return recovered;
    // A recording takes a name that is free with every extension, so what has it was made of the recording.
    QStringList extensions;
    for (int format = 0; format < AppSettings::audioFormats().size(); ++format)
        extensions << AudioConverter::extensionOf(format);
    extensions.removeDuplicates();
    extensions.removeAll(info.suffix());
    for (const QString &extension : std::as_const(extensions))
        if (auto made = whole(ToolFile::pathWithExtension(file, extension)))
            recovered.push_back(*std::move(made));
    return recovered;
}

bool RecordingJournal::isOutOfReach(const QString &file) { return !QFileInfo(QFileInfo(file).path()).isDir(); }

} // namespace cantorel
