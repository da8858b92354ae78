#include "tags/identify/SongScan.h"

#include "log/Log.h"
#include "platform/foundation/Background.h"
#include "platform/foundation/ErrorReason.h"
#include "platform/foundation/FileLock.h"
#include "recording/library/RecordingsAdding.h"
#include "tags/TagReading.h"
#include "tags/identify/DecodedSound.h"
#include "tags/identify/Fingerprint.h"
#include "tags/index/SongStore.h"
#include "util/ToolFile.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

namespace cantorel {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr foundation::SentenceKey kNotKept("SongsNotKept", "Reason");
constexpr int kLongest = 7200; // seconds of a song; what comes behind is not known

// Held by the one who changes the store.
foundation::FileDescriptor claim(const QString &store) { return foundation::lockFile(store + QStringLiteral(".lock")); }

// Nothing for what is no file any more.
std::optional<SongFile> fileAt(const QString &path) {
    struct stat status {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0 || !S_ISREG(status.st_mode))
        return {};
    return SongFile{path, status.st_size, status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec,
                    status.st_ino};
}

bool isBelow(const QString &path, const QString &folder) {
    return path.startsWith(folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/'));
}

// One scan under way.
class Scanning {
public:
    Scanning(const SongScan &scan, SongStore &store, int known) : mScan(scan), mStore(store) { mSummary.known = known; }

    Result<SongScan::Summary> run() {
        for (const QString &folder : mScan.folders)
            for (QDirIterator below(folder, soundFilePatterns(), QDir::Files, QDirIterator::Subdirectories);
                 below.hasNext() && !mScan.stop.stop_requested();)
                if (const auto looked = look(below.next()); !looked)
                    return looked.failure();
        if (mScan.stop.stop_requested())
            mSummary.end = SongScan::End::Stopped;
        else if (const auto forgotten = forgetOthers(); !forgotten)
            return forgotten.failure();
        const auto known = mStore.count();
        if (!known)
            return known.failure();
        mSummary.known = known.value();
        return mSummary;
    }

private:
    Result<void> look(const QString &path) {
        const auto file = fileAt(path);
        if (!file)
            return {};
        const auto known = mStore.withPath(path);
        if (!known)
            return known.failure();
        if (known.value() && known.value()->file.isSame(*file))
            return {};
        const auto elsewhere = mStore.like(*file);
        if (!elsewhere)
            return elsewhere.failure();
        if (elsewhere.value() && !QFileInfo::exists(elsewhere.value()->file.path)) // renamed
            return mStore.move(elsewhere.value()->id, path);
        return read(*file);
    }

    Result<void> read(const SongFile &file) {
        const id3Tag tags = songTags(file.path);
        Song song{0, file, tags.id3Title, tags.id3Artist, tags.id3Album, tags.id3Genre, tags.id3Year, {}};
        if (!song.title.isEmpty()) {
            ConvertTrouble trouble;
            const auto sound = DecodedSound::decode(mScan.program, file.path, kLongest, mScan.stop, trouble);
            const auto now = fileAt(file.path);
            if (mScan.stop.stop_requested() || !now || !now->isSame(file))
                return {}; // another time
            if (!sound && (trouble.fault == ConvertFault::NoRoom || trouble.fault == ConvertFault::NoProgram))
                return Failure{
                    kNotKept(foundation::errorReason(trouble.fault == ConvertFault::NoRoom ? ENOSPC : ENOENT)),
                    trouble.detail};
            const auto fingerprint =
                sound ? fingerprintOf(sound->samples(), DecodedSound::kRate) : Failure{{}, trouble.detail};
            if (fingerprint)
                song.items = fingerprint.value().items;
            else
                Log(QStringLiteral("no song: %1: %2").arg(file.path, fingerprint.failure().detail));
        }
        if (const auto added = mStore.add(song); !added)
            return added;
        if (!song.items.empty()) {
            ++mSummary.read;
            ++mSummary.known;
            if (mScan.progress)
                mScan.progress(mSummary.known);
        }
        return {};
    }

    Result<void> forgetOthers() {
        for (qint64 id = 0;;) {
            const auto song = mStore.after(id);
            if (!song)
                return song.failure();
            if (!song.value())
                break;
            id = song.value()->id;
            const QString &path = song.value()->file.path;
            const auto folder =
                std::ranges::find_if(mScan.folders, [&](const QString &it) { return isBelow(path, it); });
            if (folder != mScan.folders.end() && (!QFileInfo::exists(*folder) || fileAt(path)))
                continue;
            if (const auto removed = mStore.remove(id); !removed)
                return removed;
            ++mSummary.forgotten;
        }
        return mStore.tidy();
    }

    const SongScan &mScan;
    SongStore &mStore;
    SongScan::Summary mSummary;
};

} // namespace

Result<SongScan::Summary> SongScan::run() const {
    foundation::standBack();
    if (!ToolFile::createFolderAtPath(QFileInfo(store).path()))
        return Failure{kNotKept(foundation::errorReason(EACCES)), QStringLiteral("no folder for %1").arg(store)};
    const auto claimed = claim(store);
    if (!claimed.isOpen())
        return Summary{End::Elsewhere, 0, 0, 0};
    for (bool isFirst = true;; isFirst = false) {
        if (!QFileInfo::exists(store))
            (void)ToolFile::createFileAtPath(store); // its owner's alone; opening it says what is wrong
        const auto opened = openSongStore(store, SongStore::Opening::ToChange);
        if (!opened)
            return opened.failure();
        const auto known = opened.value()->count();
        auto summary = known ? Scanning(*this, *opened.value(), known.value()).run() : known.failure();
        // What is found to be damaged is set aside, and all is read anew.
        if (summary || !isFirst || QFileInfo::exists(store))
            return summary;
    }
}

bool SongScan::forget(const QString &store) {
    if (!QFileInfo::exists(store))
        return true;
    const auto claimed = claim(store);
    if (!claimed.isOpen())
        return false;
    QFile::remove(store + QStringLiteral("-journal"));
    return QFile::remove(store);
}

} // namespace cantorel
