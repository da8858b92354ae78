#include "recording/library/RecordedList.h"

#include "log/GuardedAction.h"
#include "settings/AppSettings.h"
#include "settings/SettingsTable.h"
#include "settings/StoredList.h"
#include "util/ToolFile.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QThread>

#include <algorithm>
#include <string_view>

namespace cantorel {

namespace {

constexpr foundation::SentenceKey kNameTaken("NameTaken", "Name");
constexpr foundation::SentenceKey kNotRenamed("NotRenamed", "FileName");

constexpr std::chrono::seconds kSweepInterval(1);
// A list of a few hundred recordings is stored whole as quickly as a journal is synchronised.
constexpr qint64 kSmallArchive = 64 * 1024;

constexpr const char *kInsert = "insert";
constexpr const char *kRemove = "remove";
constexpr const char *kSet = "set";

QString storedKey() { return QString::fromLatin1(setting::kRecordedList); }

QJsonArray jsonOf(const RecordedAudioFields &fields) {
    return {fields._fileName, fields._duration, fields._size, fields._dateAdded,
            fields._artist,   fields._album,    fields._year};
}

RecordedAudioFields fieldsOf(const QJsonArray &json) {
    return {json.at(0).toString(), json.at(1).toString(), json.at(2).toString(), json.at(3).toString(),
            json.at(4).toString(), json.at(5).toString(), json.at(6).toString()};
}

} // namespace

RecordedList::RecordedList(const QString &stateFolder, foundation::Clock &clock)
    : mStateFolder(stateFolder), mClock(clock), mJournal(stateFolder + QStringLiteral("/recordedList.journal")) {}

RecordedList::~RecordedList() = default;

void RecordedList::initRecordedList() {
    mInvalidFiles.clear();
    take(load());
}

void RecordedList::initRecordedListBehind(std::function<void()> loaded) {
    mInvalidFiles.clear();
    mLoading = std::async(std::launch::async, [this, loaded = std::move(loaded)] {
        Items items = load();
        QMetaObject::invokeMethod(&mTold, [this, loaded] {
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
    const StoredList stored = loadStoredList(storedKey(), mStateFolder);
    Items items;
    items.reserve(static_cast<std::size_t>(stored.items.size()));
    for (const QVariant &archived : stored.items) {
        if (auto fields = recordedAudioFields(archived))
            items.push_back(std::make_unique<RecordedAudioInfo>(*std::move(fields)));
    }
    mJournalFits = items.size() == static_cast<std::size_t>(stored.items.size());
    applyJournal(stored.archive, items);
    mArchiveSize = stored.archive.size();
    if (std::erase_if(items, [](const auto &item) { return !QFile::exists(item->getFileName()); }) > 0)
        mJournalFits = false;
    if (QThread *const owner = mTold.thread(); owner != QThread::currentThread()) {
        for (const auto &item : items) {
            (void)item->searchKey(); // made while nobody waits for it
            item->moveToThread(owner);
        }
    }
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

void RecordedList::applyJournal(const QByteArray &archive, Items &items) {
    const auto changes = mJournal.changesTo(archive);
    for (const QJsonObject &change : changes) {
        const QString operation = change.value(QStringLiteral("op")).toString();
        const auto at = static_cast<std::size_t>(change.value(QStringLiteral("at")).toInteger(-1));
        auto fields = fieldsOf(change.value(QStringLiteral("item")).toArray());
        const auto place = items.begin() + static_cast<std::ptrdiff_t>(std::min(at, items.size()));
        if (operation == QLatin1String(kInsert) && at <= items.size())
            items.insert(place, std::make_unique<RecordedAudioInfo>(std::move(fields)));
        else if (operation == QLatin1String(kRemove) && at < items.size())
            items.erase(place);
        else if (operation == QLatin1String(kSet) && at < items.size())
            *place = std::make_unique<RecordedAudioInfo>(std::move(fields));
    }
    if (!changes.empty())
        mJournalFits = false; // It is folded into the archive with the next change.
    else
        mJournal.begin(archive);
}

void RecordedList::saveRecordedList() {
    finishLoading();
    QVariantList archived;
    archived.reserve(static_cast<qsizetype>(mItems.size()));
    for (const auto &item : mItems)
        archived.append(archivedItem(item->fields()));
    AppSettings::setRecordedMovieList(archived);
    const QByteArray archive = AppSettings::getFromUserDefaults_Data(storedKey());
    mArchiveSize = archive.size();
    mJournal.begin(archive);
    mJournalFits = true;
}

void RecordedList::store(const char *operation, std::size_t at) {
    if (mJournalFits && mArchiveSize > kSmallArchive && mJournal.size() < mArchiveSize / 4) {
        QJsonObject change{{QStringLiteral("op"), QString::fromLatin1(operation)},
                           {QStringLiteral("at"), static_cast<qint64>(at)}};
        if (std::string_view(operation) != kRemove)
            change.insert(QStringLiteral("item"), jsonOf(mItems[at]->fields()));
        if (mJournal.append(change))
            return;
    }
    saveRecordedList();
}

std::size_t RecordedList::indexOf(const RecordedAudioInfo &item) const {
    const auto found = std::find_if(mItems.begin(), mItems.end(), [&](const auto &one) { return one.get() == &item; });
    return static_cast<std::size_t>(found - mItems.begin());
}

RecordedAudioInfo *RecordedList::itemWithFile(const QString &path) const {
    const auto found =
        std::find_if(mItems.begin(), mItems.end(), [&](const auto &item) { return item->getFileName() == path; });
    return found == mItems.end() ? nullptr : found->get();
}

RecordedAudioInfo &RecordedList::addRecordedFile(const QString &path, const QString &recordDuration,
                                                 const QString &recordFileSize) {
    auto item = std::make_unique<RecordedAudioInfo>(path);
    item->setDuration(recordDuration);
    item->setSize(recordFileSize);
    item->setDateAdded(QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
    finishLoading();
    mItems.push_back(std::move(item));
    store(kInsert, mItems.size() - 1);
    changed();
    return *mItems.back();
}

void RecordedList::insert(std::size_t at, RecordedAudioFields fields) {
    finishLoading();
    at = std::min(at, mItems.size());
    mItems.insert(mItems.begin() + static_cast<std::ptrdiff_t>(at),
                  std::make_unique<RecordedAudioInfo>(std::move(fields)));
    store(kInsert, at);
    changed();
}

void RecordedList::remove(RecordedAudioInfo &item) {
    const std::size_t at = indexOf(item);
    if (at == mItems.size())
        return;
    const auto gone = std::move(mItems[at]); // The caller may still name it while the change is told.
    mItems.erase(mItems.begin() + static_cast<std::ptrdiff_t>(at));
    store(kRemove, at);
    changed();
}

void RecordedList::save(const RecordedAudioInfo &item) {
    if (const std::size_t at = indexOf(item); at < mItems.size())
        store(kSet, at);
}

foundation::Result<void> RecordedList::rename(RecordedAudioInfo &item, const QString &name) {
    const QFileInfo file(item.getFileName());
    const QString clean = ToolFile::cleanFileName(name);
    const QString suffix = file.suffix().isEmpty() ? QString() : QLatin1Char('.') + file.suffix();
    const QString renamed = file.path() + QLatin1Char('/') + clean + suffix;
    QString why;
    // A name is taken as it was typed, or not at all: "1/2" would become another one.
    if (clean.isEmpty() || name.contains(QLatin1Char('/')) || QFileInfo::exists(renamed))
        return foundation::Failure{kNameTaken(name + suffix), {}};
    if (!ToolFile::moveFileFromPath(file.filePath(), renamed, &why))
        return foundation::Failure{kNotRenamed(file.filePath()), why};
    item.setFileName(renamed);
    save(item);
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
