#include "platform/foundation/ErrorReason.h"
#include "platform/foundation/Handle.h"
#include "tags/index/SongStore.h"

#include <QFile>
#include <QFileInfo>

#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace cantorel {

namespace {

using foundation::Failure;
using foundation::Result;

// The songs stand in one table, each with its fingerprint. Those of a range of ids that has no new ones any more have
// the places of their items, sorted, in one row of another; what comes behind the last range is sorted when it is
// looked through. Whoever is removed stays among the places of its range, and nothing is found under its id.
constexpr int kFormat = 0x43615367, kVersion = 1; // "CaSg"
constexpr const char *kTables = R"(
CREATE TABLE song(id INTEGER PRIMARY KEY AUTOINCREMENT, path TEXT NOT NULL UNIQUE, size INTEGER NOT NULL,
  modified INTEGER NOT NULL, inode INTEGER NOT NULL, title TEXT NOT NULL, artist TEXT NOT NULL, album TEXT NOT NULL,
  genre TEXT NOT NULL, year TEXT NOT NULL, items BLOB);
CREATE INDEX song_inode ON song(inode);
CREATE TABLE range(first INTEGER PRIMARY KEY, last INTEGER NOT NULL, songs INTEGER NOT NULL, places BLOB NOT NULL);
)";
constexpr const char *kSong = "SELECT id, path, size, modified, inode, title, artist, album, genre, year";
constexpr int kItems = 10;                // the column behind these
constexpr int kRange = 64;                // songs
constexpr qint64 kWidest = 0x7000;        // ids of a range, files that are no songs included
static_assert(2 * kWidest + 1 < 0x10000); // what comes behind the last range, and another one that is given new ids
constexpr int kPatience = 5000;           // ms, while another program writes
constexpr int kMostAside = 99;

constexpr foundation::SentenceKey kNotKept("SongsNotKept", "Reason");

static_assert(sizeof(ItemPlace) == 8 && std::is_trivially_copyable_v<ItemPlace>);

void closeDatabase(sqlite3 *database) { sqlite3_close_v2(database); }   // once its statements have ended
void finalise(sqlite3_stmt *statement) { sqlite3_finalize(statement); } // what it failed with has been told
using Database = foundation::Handle<sqlite3, closeDatabase>;
using StatementHandle = foundation::Handle<sqlite3_stmt, finalise>;

bool isDamage(int code) { return (code & 0xff) == SQLITE_CORRUPT || (code & 0xff) == SQLITE_NOTADB; }

int errorOf(int code) {
    switch (code & 0xff) {
    case SQLITE_FULL:
        return ENOSPC;
    case SQLITE_PERM:
    case SQLITE_READONLY:
    case SQLITE_CANTOPEN:
        return EACCES;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return EBUSY;
    default:
        return EIO;
    }
}

// Moves what can't be read to a free name beside itself, with what was not finished in it.
bool setAside(const QString &path) {
    const QFileInfo file(path);
    for (int n = 0; n < kMostAside; ++n) {
        const QString aside =
            QStringLiteral("%1/%2-damaged%3.%4")
                .arg(file.path(), file.completeBaseName(), n == 0 ? QString() : QString::number(n), file.suffix());
        if (QFileInfo::exists(aside))
            continue;
        (void)QFile::rename(path + QStringLiteral("-journal"), aside + QStringLiteral("-journal")); // seldom there
        return QFile::rename(path, aside);
    }
    return false;
}

class SqliteStore final : public SongStore {
public:
    static Result<std::unique_ptr<SongStore>> open(const QString &path, Opening opening);

    Result<int> count() override;
    Result<std::optional<Song>> withPath(const QString &path) override;
    Result<std::optional<Song>> like(const SongFile &file) override;
    Result<std::optional<Song>> song(qint64 id) override;
    Result<std::optional<Song>> after(qint64 id) override;
    Result<void> add(const Song &song) override;
    Result<void> move(qint64 id, const QString &path) override;
    Result<void> remove(qint64 id) override;
    Result<void> tidy() override;
    Result<void> each(const Look &look) override;

private:
    // One statement, from its values to its rows; it remembers its first failure.
    class Statement {
    public:
        Statement(sqlite3 *database, const char *sql) {
            sqlite3_stmt *made = nullptr;
            if (!database) {
                mCode = SQLITE_CANTOPEN; // set aside meanwhile
                return;
            }
            mCode = sqlite3_prepare_v2(database, sql, -1, &made, nullptr);
            mStatement.reset(made);
        }
        Statement &operator<<(qint64 value) {
            if (mCode == SQLITE_OK)
                mCode = sqlite3_bind_int64(mStatement.get(), ++mBound, value);
            return *this;
        }
        Statement &operator<<(const QString &text) {
            const QByteArray bytes = text.toUtf8();
            if (mCode == SQLITE_OK)
                mCode = sqlite3_bind_text(mStatement.get(), ++mBound, bytes.constData(), static_cast<int>(bytes.size()),
                                          SQLITE_TRANSIENT);
            return *this;
        }
        template <class T> Statement &operator<<(std::span<const T> values) {
            if (mCode == SQLITE_OK)
                mCode = values.empty() ? sqlite3_bind_null(mStatement.get(), ++mBound)
                                       : sqlite3_bind_blob64(mStatement.get(), ++mBound, values.data(),
                                                             values.size_bytes(), SQLITE_TRANSIENT);
            return *this;
        }
        bool next() {
            if (mCode == SQLITE_OK || mCode == SQLITE_ROW)
                mCode = sqlite3_step(mStatement.get());
            return mCode == SQLITE_ROW;
        }
        // After the last row.
        bool isDone() const { return mCode == SQLITE_DONE; }
        int code() const { return mCode; }
        qint64 number(int column) const { return sqlite3_column_int64(mStatement.get(), column); }
        QString text(int column) const {
            const auto *bytes = reinterpret_cast<const char *>(sqlite3_column_text(mStatement.get(), column));
            return QString::fromUtf8(bytes, sqlite3_column_bytes(mStatement.get(), column));
        }
        template <class T> std::vector<T> values(int column) const {
            const void *bytes = sqlite3_column_blob(mStatement.get(), column);
            std::vector<T> values(static_cast<std::size_t>(sqlite3_column_bytes(mStatement.get(), column)) / sizeof(T));
            if (!values.empty())
                std::memcpy(values.data(), bytes, values.size() * sizeof(T));
            return values;
        }

    private:
        StatementHandle mStatement;
        int mCode = SQLITE_OK;
        int mBound = 0;
    };

    SqliteStore(QString path, Opening opening, Database database)
        : mPath(std::move(path)), mOpening(opening), mDatabase(std::move(database)) {}

    Statement statement(const char *sql) { return {mDatabase.get(), sql}; }
    // Of a statement without rows, and of several at once.
    Result<void> done(Statement &&statement);
    Result<void> run(const char *sql);
    // All of it or nothing.
    template <class Action> Result<void> whole(Action &&action);
    Result<qint64> number(Statement &&statement);
    Result<std::optional<Song>> one(Statement &&statement, bool withItems = false);
    Failure failure(int code);
    Result<void> prepare();
    Result<void> closeRange();
    Result<qint64> lastOfRanges() { return number(statement("SELECT coalesce(max(last), 0) FROM range")); }

    const QString mPath;
    const Opening mOpening;
    Database mDatabase; // none once it was set aside
};

Failure SqliteStore::failure(int code) {
    const QString detail =
        QStringLiteral("the songs in %1: %2")
            .arg(mPath, mDatabase ? QString::fromUtf8(sqlite3_errmsg(mDatabase.get())) : QStringLiteral("not open"));
    if (isDamage(code) && mOpening == Opening::ToChange && mDatabase) {
        mDatabase.reset();
        if (setAside(mPath))
            return {kNotKept(foundation::errorReason(EIO)), detail + QStringLiteral("; set aside")};
    }
    return {kNotKept(foundation::errorReason(errorOf(code))), detail};
}

Result<void> SqliteStore::done(Statement &&statement) {
    while (statement.next()) {
    }
    return statement.isDone() ? Result<void>() : failure(statement.code());
}

Result<void> SqliteStore::run(const char *sql) {
    const int code = !mDatabase ? SQLITE_CANTOPEN : sqlite3_exec(mDatabase.get(), sql, nullptr, nullptr, nullptr);
    return code == SQLITE_OK ? Result<void>() : failure(code);
}

template <class Action> Result<void> SqliteStore::whole(Action &&action) {
    if (const auto begun = run("BEGIN IMMEDIATE"); !begun)
        return begun;
    Result<void> result = action();
    if (result)
        result = run("COMMIT");
    if (!result && mDatabase)
        sqlite3_exec(mDatabase.get(), "ROLLBACK", nullptr, nullptr, nullptr); // already done after some failures
    return result;
}

Result<qint64> SqliteStore::number(Statement &&statement) {
    if (statement.next())
        return statement.number(0);
    return failure(statement.code());
}

Result<std::optional<Song>> SqliteStore::one(Statement &&statement, bool withItems) {
    if (!statement.next())
        return statement.isDone() ? Result<std::optional<Song>>(std::nullopt) : failure(statement.code());
    Song song;
    song.id = statement.number(0);
    song.file = {statement.text(1), statement.number(2), statement.number(3),
                 static_cast<quint64>(statement.number(4))};
    song.title = statement.text(5);
    song.artist = statement.text(6);
    song.album = statement.text(7);
    song.genre = statement.text(8);
    song.year = statement.text(9);
    if (withItems)
        song.items = statement.values<std::uint32_t>(kItems);
    return std::optional(std::move(song));
}

// Makes the tables of a new store; fails for what is none of ours.
Result<void> SqliteStore::prepare() {
    const auto format = number(statement("PRAGMA application_id"));
    if (!format)
        return format.failure();
    const auto version = number(statement("PRAGMA user_version"));
    if (!version)
        return version.failure();
    const auto tables = number(statement("SELECT count(*) FROM sqlite_master"));
    if (!tables)
        return tables.failure();
    if (format.value() == 0 && version.value() == 0 && tables.value() == 0)
        return mOpening == Opening::ToRead ? Result<void>(failure(SQLITE_NOTADB)) : whole([this] {
            const QByteArray marks = QByteArrayLiteral("PRAGMA application_id=") + QByteArray::number(kFormat)
                                     + QByteArrayLiteral("; PRAGMA user_version=") + QByteArray::number(kVersion);
            const auto made = run(kTables);
            return made ? run(marks.constData()) : made;
        });
    if (format.value() != kFormat || version.value() != kVersion)
        return failure(SQLITE_NOTADB);
    return {};
}

Result<std::unique_ptr<SongStore>> SqliteStore::open(const QString &path, Opening opening) {
    if (opening == Opening::ToRead && !QFileInfo::exists(path))
        return std::unique_ptr<SongStore>();
    for (int attempt = 0;; ++attempt) {
        sqlite3 *made = nullptr;
        // Who only reads may still have to take back what a killed program has begun.
        const int flags =
            SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | (opening == Opening::ToChange ? SQLITE_OPEN_CREATE : 0);
        const int code = sqlite3_open_v2(QFile::encodeName(path).constData(), &made, flags, nullptr);
        auto store = std::unique_ptr<SqliteStore>(new SqliteStore(path, opening, Database(made)));
        if (code != SQLITE_OK)
            return store->failure(code);
        sqlite3_busy_timeout(made, kPatience);
        const auto ready = store->prepare();
        if (ready)
            return std::unique_ptr<SongStore>(std::move(store));
        if (attempt > 0 || store->mDatabase) // not set aside
            return ready.failure();
    }
}

Result<int> SqliteStore::count() {
    const auto count = number(statement("SELECT count(*) FROM song WHERE items IS NOT NULL"));
    if (!count)
        return count.failure();
    return static_cast<int>(count.value());
}

Result<std::optional<Song>> SqliteStore::withPath(const QString &path) {
    auto wanted = statement((QByteArray(kSong) + " FROM song WHERE path = ?").constData());
    return one(std::move(wanted << path));
}

Result<std::optional<Song>> SqliteStore::like(const SongFile &file) {
    auto wanted =
        statement((QByteArray(kSong) + " FROM song WHERE inode = ? AND size = ? AND modified = ? LIMIT 1").constData());
    return one(std::move(wanted << static_cast<qint64>(file.inode) << file.size << file.modified));
}

Result<std::optional<Song>> SqliteStore::song(qint64 id) {
    auto wanted = statement((QByteArray(kSong) + ", items FROM song WHERE id = ?").constData());
    return one(std::move(wanted << id), true);
}

Result<std::optional<Song>> SqliteStore::after(qint64 id) {
    auto wanted = statement((QByteArray(kSong) + " FROM song WHERE id > ? ORDER BY id LIMIT 1").constData());
    return one(std::move(wanted << id));
}

Result<void> SqliteStore::add(const Song &song) {
    return whole([&] {
        auto removed = done(std::move(statement("DELETE FROM song WHERE path = ?") << song.file.path));
        if (!removed)
            return removed;
        auto wanted =
            statement("INSERT INTO song(path, size, modified, inode, title, artist, album, genre, year, items) "
                      "VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
        wanted << song.file.path << song.file.size << song.file.modified << static_cast<qint64>(song.file.inode)
               << song.title << song.artist << song.album << song.genre << song.year
               << std::span<const std::uint32_t>(song.items);
        const auto added = done(std::move(wanted));
        return added ? closeRange() : added;
    });
}

// Sorts the places of the last songs once they are enough for a range, or spread over too many ids.
Result<void> SqliteStore::closeRange() {
    const auto last = lastOfRanges();
    if (!last)
        return last.failure();
    auto facts = statement("SELECT count(items), min(id), max(id) FROM song WHERE id > ?");
    facts << last.value();
    if (!facts.next())
        return failure(facts.code());
    const qint64 songs = facts.number(0), from = facts.number(1), to = facts.number(2);
    if (songs < kRange && to - from < kWidest)
        return {};
    std::vector<ItemPlace> places;
    auto rows = statement("SELECT id, items FROM song WHERE id > ? AND items IS NOT NULL");
    rows << last.value();
    while (rows.next())
        addPlaces(places, static_cast<std::uint16_t>(rows.number(0) - from), rows.values<std::uint32_t>(1));
    if (!rows.isDone())
        return failure(rows.code());
    std::ranges::sort(places);
    auto range = statement("INSERT INTO range VALUES(?, ?, ?, ifnull(?, x''))");
    return done(std::move(range << from << to << songs << std::span<const ItemPlace>(places)));
}

Result<void> SqliteStore::move(qint64 id, const QString &path) {
    return whole([&] {
        const auto removed = done(std::move(statement("DELETE FROM song WHERE path = ? AND id <> ?") << path << id));
        return removed ? done(std::move(statement("UPDATE song SET path = ? WHERE id = ?") << path << id)) : removed;
    });
}

Result<void> SqliteStore::remove(qint64 id) {
    return done(std::move(statement("DELETE FROM song WHERE id = ?") << id));
}

// A range of which less than half is left gives its songs new ids, behind all others.
Result<void> SqliteStore::tidy() {
    for (;;) {
        auto range = statement("SELECT first, last FROM range WHERE songs > 2 * (SELECT count(items) FROM song "
                               "WHERE id BETWEEN first AND last) LIMIT 1");
        if (!range.next())
            return range.isDone() ? Result<void>() : failure(range.code());
        const qint64 first = range.number(0), last = range.number(1);
        const auto moved = whole([&]() -> Result<void> {
            const auto most = number(statement("SELECT max(seq) FROM sqlite_sequence"));
            if (!most)
                return most.failure();
            const qint64 on = most.value() - first + 1;
            auto renumber = statement("UPDATE song SET id = id + ? WHERE id BETWEEN ? AND ?");
            if (auto done_ = done(std::move(renumber << on << first << last)); !done_)
                return done_;
            if (auto counted = done(std::move(statement("UPDATE sqlite_sequence SET seq = ?") << last + on)); !counted)
                return counted;
            if (auto gone = done(std::move(statement("DELETE FROM range WHERE first = ?") << first)); !gone)
                return gone;
            return closeRange();
        });
        if (!moved)
            return moved;
    }
}

Result<void> SqliteStore::each(const Look &look) {
    auto ranges = statement("SELECT first, places FROM range ORDER BY first");
    while (ranges.next())
        if (const auto looked = look(ranges.number(0), ranges.values<ItemPlace>(1)); !looked)
            return looked;
    if (!ranges.isDone())
        return failure(ranges.code());
    const auto last = lastOfRanges();
    if (!last)
        return last.failure();
    std::vector<ItemPlace> places;
    qint64 from = 0;
    auto rows = statement("SELECT id, items FROM song WHERE id > ? AND items IS NOT NULL ORDER BY id");
    rows << last.value();
    while (rows.next()) {
        if (places.empty())
            from = rows.number(0);
        addPlaces(places, static_cast<std::uint16_t>(rows.number(0) - from), rows.values<std::uint32_t>(1));
    }
    if (!rows.isDone())
        return failure(rows.code());
    std::ranges::sort(places);
    return look(from, places);
}

} // namespace

} // namespace cantorel

extern "C" __attribute__((visibility("default"))) cantorel::foundation::Result<std::unique_ptr<cantorel::SongStore>>
cantorel_song_store(const QString &path, cantorel::SongStore::Opening opening) {
    return cantorel::SqliteStore::open(path, opening);
}
