#include "recording/library/RecordedList.h"

#include "log/GuardedAction.h"
#include "platform/foundation/Background.h"
#include "recording/library/NotedRename.h"
#include "tags/AudioIdentify.h"
#include "util/ToolFile.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QThread>

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>

namespace cantorel {

namespace {

constexpr foundation::SentenceKey kNameTaken("NameTaken", "Name");
constexpr foundation::SentenceKey kNotRenamed("NotRenamed", "FileName");

constexpr std::chrono::seconds kSweepInterval(1);
const QString kDateFormat = QStringLiteral("yyyy-MM-dd HH:mm:ss");

} // namespace

RecordedList::RecordedList(const QString &stateFolder, foundation::Clock &clock)
    : mStateFolder(stateFolder), mClock(clock), mStore(stateFolder) {}

RecordedList::~RecordedList() {
    mReader.finish();
    QCoreApplication::sendPostedEvents(&mTold, QEvent::MetaCall); // What was read is stored.
}

void RecordedList::initRecordedList() {
    mInvalidFiles.clear();
    take(load());
}

void RecordedList::initRecordedListBehind(std::function<void()> loaded) {
    mInvalidFiles.clear();
    mLoading = std::async(std::launch::async, [this, loaded = std::move(loaded)] {
        foundation::standBack(); // The window is painted first.
        Items items = load();
        (void)::malloc_trim(0); // Reading takes several times what stays; it goes back to the system.
        QMetaObject::invokeMethod(&mLoaded, [this, loaded] {
            (void)guarded("initRecordedList", [&] { finishLoading(); });
            loaded();
        });
        return items;
    });
}

void RecordedList::finishLoading() {
    if (isLoading())
        take(mLoading.get());
}

RecordedList::Items RecordedList::load() {
    Items items = mStore.load();
    NotedRename::finish(mStateFolder, [&items](const QString &name) {
        return std::any_of(items.begin(), items.end(), [&](const auto &item) { return item->getFileName() == name; });
    });
    if (mTold.thread() != QThread::currentThread())
        for (const auto &item : items)
            (void)item->searchKey(); // made while nobody waits for it
    return items;
}

void RecordedList::take(Items items) {
    mItems = std::move(items);
    mTimerInvalid = mClock.every(kSweepInterval, [this] {
        (void)guarded("deleteInvalidRecordedFiles", [this] { _deleteInvalidRecordedFiles(); });
    });
    if (view) {
        view->recordedListDidChange();
        view->updatePlayButton();
    }
}

void RecordedList::saveRecordedList() {
    finishLoading();
    mStore.save(mItems);
}

foundation::Sentence RecordedList::storedAtLast() {
    if (!unsaved().isEmpty())
        saveRecordedList();
    return unsaved();
}

std::size_t RecordedList::indexOf(const RecordedAudioInfo &item) const {
    const auto found = std::find_if(mItems.begin(), mItems.end(), [&](const auto &one) { return one.get() == &item; });
    return static_cast<std::size_t>(found - mItems.begin());
}

QStringList RecordedList::folders() const {
    QSet<QByteArray> folders;
    QByteArrayView last;
    for (const auto &item : mItems) {
        const QByteArrayView folder = item->folder();
        if (folder != last) // Most lie where the one before lies.
            folders.insert(folder.toByteArray());
        last = folder;
    }
    QStringList names;
    for (const QByteArray &folder : folders)
        names << QString::fromUtf8(folder);
    return names;
}

RecordedAudioInfo *RecordedList::itemWithFile(const QString &path) const {
    const auto found = std::find_if(mItems.begin(), mItems.end(),
                                    [file = path.toUtf8()](const auto &item) { return item->hasFile(file); });
    return found == mItems.end() ? nullptr : found->get();
}

RecordedAudioInfo &RecordedList::addRecordedFile(const QString &path, const QString &recordDuration,
                                                 const QString &recordFileSize) {
    auto item = std::make_unique<RecordedAudioInfo>(path);
    item->setDuration(recordDuration);
    item->setSize(recordFileSize);
    item->setDateAdded(QDateTime::currentDateTime().toString(kDateFormat));
    finishLoading();
    mItems.push_back(std::move(item));
    mStore.save(mItems, ListStore::Change::Insert, {mItems.size() - 1});
    changed();
    return *mItems.back();
}

QStringList RecordedList::append(std::vector<RecordedAudioFields> recordings) {
    finishLoading();
    QSet<QString> listed;
    for (const auto &item : mItems)
        listed.insert(item->getFileName());
    std::erase_if(recordings, [&](const RecordedAudioFields &fields) { return listed.contains(fields._fileName); });
    const QString now = QDateTime::currentDateTime().toString(kDateFormat);
    QStringList files;
    std::vector<std::size_t> places;
    for (RecordedAudioFields &fields : recordings) {
        files << fields._fileName;
        fields._dateAdded = now;
        places.push_back(mItems.size());
        mItems.push_back(std::make_unique<RecordedAudioInfo>(fields));
    }
    if (files.isEmpty())
        return files;
    mStore.save(mItems, ListStore::Change::Insert, places);
    changed();
    return files;
}

void RecordedList::insert(std::size_t at, RecordedAudioFields fields) {
    finishLoading();
    at = std::min(at, mItems.size());
    mItems.insert(mItems.begin() + static_cast<std::ptrdiff_t>(at), std::make_unique<RecordedAudioInfo>(fields));
    mStore.save(mItems, ListStore::Change::Insert, {at});
    changed();
}

void RecordedList::remove(RecordedAudioInfo &item) {
    const std::size_t at = indexOf(item);
    if (at == mItems.size())
        return;
    const auto gone = std::move(mItems[at]); // The caller may still use it while the view hears of the change.
    mItems.erase(mItems.begin() + static_cast<std::ptrdiff_t>(at));
    mStore.save(mItems, ListStore::Change::Remove, {at});
    changed();
}

void RecordedList::removeFiles(const QStringList &files) {
    const QSet<QString> unlisted(files.begin(), files.end());
    const auto gone = std::stable_partition(mItems.begin(), mItems.end(), [&](const auto &item) {
        return item->isInUse() || !unlisted.contains(item->getFileName());
    });
    const Items kept(std::make_move_iterator(gone), std::make_move_iterator(mItems.end())); // as in remove()
    mItems.erase(gone, mItems.end());
    saveRecordedList();
    changed();
}

void RecordedList::save(const RecordedAudioInfo &item) {
    if (const std::size_t at = indexOf(item); at < mItems.size())
        mStore.save(mItems, ListStore::Change::Set, {at});
}

struct RecordedList::Tagged {
    RecordedItemPointer item;
    QString file;
    std::optional<id3Tag> tag;
    QString size;
};

std::vector<RecordedList::Tagged> RecordedList::tagged(const QStringList &files) const {
    std::vector<Tagged> tagged;
    for (const QString &file : files)
        if (RecordedAudioInfo *item = itemWithFile(file))
            tagged.push_back({item, file, {}, {}});
    return tagged;
}

void RecordedList::read(std::vector<Tagged> &tagged) {
    for (Tagged &one : tagged) {
        one.tag = AudioIdentify::getID3TagFromFile(one.file);
        one.size = ToolFile::fileSizeFormatterToString(QFileInfo(one.file).size());
    }
}

void RecordedList::take(const std::vector<Tagged> &tagged) {
    QSet<const RecordedAudioInfo *> retagged;
    QStringList renamed;
    for (const Tagged &one : tagged) {
        RecordedAudioInfo *item = one.item;
        if (item && !one.tag && item->getFileName() != one.file)
            renamed << item->getFileName();
        if (!item || !one.tag)
            continue;
        item->setAlbum(one.tag->id3Album);
        item->setArtist(one.tag->id3Artist);
        item->setYear(one.tag->id3Year);
        item->setCover(one.tag->id3Image);
        item->setSize(one.size);
        retagged.insert(item);
    }
    std::vector<std::size_t> places;
    for (std::size_t at = 0; at < mItems.size() && !retagged.isEmpty(); ++at)
        if (retagged.contains(mItems[at].get()))
            places.push_back(at);
    if (!places.empty()) {
        mStore.save(mItems, ListStore::Change::Set, places);
        changed();
    }
    if (!renamed.isEmpty())
        takeTagsBehind(renamed);
}

void RecordedList::takeTags(const QStringList &files) {
    finishLoading();
    std::vector<Tagged> written = tagged(files);
    read(written);
    take(written);
}

void RecordedList::takeTagsBehind(const QStringList &files) {
    finishLoading();
    mReader.start([this, written = std::make_shared<std::vector<Tagged>>(tagged(files))] {
        (void)guarded("takeTags", [&] { read(*written); }); // logged there
        QMetaObject::invokeMethod(&mTold, [this, written] { (void)guarded("tagsTaken", [&] { take(*written); }); });
    });
}

foundation::Result<void> RecordedList::rename(RecordedAudioInfo &item, const QString &name) {
    const QFileInfo file(item.getFileName());
    static const QRegularExpression outer(QStringLiteral("^/+|/+$"));
    // No file name has a stroke, and "1/2" is another one than "12".
    const QString clean =
        ToolFile::cleanFileName(QString(name).remove(outer).replace(QLatin1Char('/'), QLatin1Char('-')));
    const QString suffix = file.suffix().isEmpty() ? QString() : QLatin1Char('.') + file.suffix();
    const QString before = file.filePath(), renamed = file.path() + QLatin1Char('/') + clean + suffix;
    QString why;
    const bool hadBoth = renamed != before && areTwoNames(before, renamed);
    if (clean.isEmpty() || (QFileInfo::exists(renamed) && !hadBoth))
        return foundation::Failure{kNameTaken(clean + suffix), {}};
    // The file has both names until the list with the new one is on the disk, where the disk can do that: whenever this
    // is killed, the stored list names a file that is there.
    const NotedRename noted(mStateFolder, before, renamed);
    const bool hasBoth =
        hadBoth || ::link(QFile::encodeName(before).constData(), QFile::encodeName(renamed).constData()) == 0;
    if (!hasBoth && !ToolFile::moveFileFromPath(before, renamed, &why))
        return foundation::Failure{kNotRenamed(before), why};
    item.setFileName(renamed);
    save(item);
    if (!unsaved().isEmpty()) {
        item.setFileName(before);
        if (hasBoth && !hadBoth)
            QFile::remove(renamed);
        else if (!hasBoth)
            (void)ToolFile::moveFileFromPath(renamed, before); // At worst it keeps the name that was asked for.
        return foundation::Failure{unsaved(), QStringLiteral("the list was not saved")};
    }
    if (hasBoth)
        QFile::remove(before);
    changed();
    return {};
}

void RecordedList::move(std::size_t from, std::size_t to) {
    if (from >= mItems.size() || to >= mItems.size() || from == to)
        return;
    const auto first = mItems.begin() + static_cast<std::ptrdiff_t>(std::min(from, to));
    const auto last = mItems.begin() + static_cast<std::ptrdiff_t>(std::max(from, to)) + 1;
    std::rotate(first, from < to ? first + 1 : last - 1, last);
    saveRecordedList();
    changed();
}

void RecordedList::changed() {
    if (view)
        view->recordedListDidChange();
}

void RecordedList::_deleteInvalidRecordedFiles() {
    const auto found = std::find_if(mInvalidFiles.cbegin(), mInvalidFiles.cend(),
                                    [](const QString &path) { return QFile::exists(path); });
    if (found == mInvalidFiles.cend() || !QFile::remove(*found))
        return;
    Log(QStringLiteral("delete invalid recorded file: %1").arg(*found));
    mInvalidFiles.erase(found); // One file a second.
}

} // namespace cantorel
