#include "recording/library/ListStore.h"

#include "platform/foundation/KeyedArchiver.h"
#include "settings/SettingsTable.h"
#include "settings/StoredList.h"
#include "settings/UserDefaultFunctions.h"

#include <QFile>
#include <QJsonArray>

#include <sys/stat.h>

#include <algorithm>
#include <optional>
#include <tuple>

namespace cantorel {

namespace {

using Change = ListStore::Change;

constexpr foundation::SentenceKey kListNotSaved("ListNotSaved", "FileName");

// A list of a few hundred recordings is stored whole as quickly as a journal is synchronised.
constexpr qint64 kSmallArchive = 64 * 1024;

constexpr int kAttempts = 5;

QString nameOf(Change change) {
    return change == Change::Insert   ? QStringLiteral("insert")
           : change == Change::Remove ? QStringLiteral("remove")
                                      : QStringLiteral("set");
}

QString storedKey() { return QString::fromLatin1(setting::kRecordedList); }

// Tells one state of the settings file from another.
auto stampOfSettings() {
    struct stat status = {};
    (void)::stat(QFile::encodeName(standardUserDefaults().filePath()).constData(),
                 &status); // stays zero without the file
    return std::tuple(status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec);
}

QJsonArray jsonOf(const RecordedAudioFields &fields) {
    return {fields._fileName, fields._duration, fields._size, fields._dateAdded,
            fields._artist,   fields._album,    fields._year};
}

RecordedAudioFields fieldsOf(const QJsonArray &json) {
    return {json.at(0).toString(), json.at(1).toString(), json.at(2).toString(), json.at(3).toString(),
            json.at(4).toString(), json.at(5).toString(), json.at(6).toString()};
}

std::optional<ListStore::Items::value_type> storedItem(const QVariant &archived) {
    const auto fields = recordedAudioFields(archived);
    return fields ? std::optional(std::make_unique<RecordedAudioInfo>(*fields)) : std::nullopt;
}

void replay(const std::vector<QJsonObject> &changes, ListStore::Items &items) {
    for (const QJsonObject &change : changes) {
        const QString operation = change.value(QStringLiteral("op")).toString();
        const auto at = static_cast<std::size_t>(change.value(QStringLiteral("at")).toInteger(-1));
        auto fields = fieldsOf(change.value(QStringLiteral("item")).toArray());
        const auto place = items.begin() + static_cast<std::ptrdiff_t>(std::min(at, items.size()));
        if (operation == nameOf(Change::Insert) && at <= items.size())
            items.insert(place, std::make_unique<RecordedAudioInfo>(fields));
        else if (operation == nameOf(Change::Remove) && at < items.size())
            items.erase(place);
        else if (operation == nameOf(Change::Set) && at < items.size())
            *place = std::make_unique<RecordedAudioInfo>(fields);
    }
}

} // namespace

ListStore::ListStore(const QString &stateFolder)
    : mStateFolder(stateFolder), mJournal(stateFolder + QStringLiteral("/recordedList.journal")) {}

ListStore::Items ListStore::load() {
    // Archive and journal are read one after the other, while their owner may fold the one into the other.
    StoredList<Items::value_type> stored;
    std::vector<QJsonObject> changes;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const auto before = stampOfSettings();
        stored = loadStoredList<Items::value_type>(storedKey(), mStateFolder, storedItem);
        changes = mJournal.changesTo(stored.archive);
        if (!changes.empty() || before == stampOfSettings())
            break;
    }
    Items items = std::move(stored.items);
    // Once there are changes, the next one stores the whole list, and the journal begins anew.
    mJournalFits = changes.empty() && stored.isWhole;
    replay(changes, items);
    mJournal.begin(stored.archive);
    mArchiveSize = stored.archive.size();
    if (std::erase_if(items, [](const auto &item) { return !item->fileExists(); }) > 0)
        mJournalFits = false;
    return items;
}

void ListStore::save(const Items &items) {
    QVariantList archived;
    archived.reserve(static_cast<qsizetype>(items.size()));
    for (const auto &item : items)
        archived.append(archivedItem(item->fields()));
    const QByteArray archive = foundation::archivedData(archived);
    // The journal belongs to the archive on the disk, and is removed only once another archive has replaced it.
    mJournalFits = ZQUserDefaultSetValue_Object(archive, storedKey());
    if (!mJournalFits) {
        // Our next change stores the list as it is then; another setting's save must not store it as it is now.
        standardUserDefaults().discard(storedKey());
        mUnsaved = kListNotSaved(standardUserDefaults().filePath());
        return;
    }
    mUnsaved = {};
    mArchiveSize = archive.size();
    mJournal.remove();
    mJournal.begin(archive);
}

void ListStore::save(const Items &items, Change change, const std::vector<std::size_t> &places) {
    const bool areFew = places.size() <= 1 || places.size() < items.size() / 8;
    if (mJournalFits && mArchiveSize > kSmallArchive && mJournal.size() < mArchiveSize / 4 && areFew) {
        std::vector<QJsonObject> lines;
        for (const std::size_t at : places) {
            QJsonObject line{{QStringLiteral("op"), nameOf(change)}, {QStringLiteral("at"), static_cast<qint64>(at)}};
            if (change != Change::Remove)
                line.insert(QStringLiteral("item"), jsonOf(items[at]->fields()));
            lines.push_back(std::move(line));
        }
        if (mJournal.append(lines))
            return;
    }
    save(items);
}

} // namespace cantorel
