#pragma once

#include "platform/foundation/Result.h"
#include "tags/index/SongSearch.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace cantorel {

// A file of one's own, as it was when it was read.
struct SongFile {
    QString path;
    qint64 size = 0, modified = 0; // bytes; nanoseconds since 1970
    quint64 inode = 0;

    bool isSame(const SongFile &other) const {
        return size == other.size && modified == other.modified && inode == other.inode;
    }
};

// What is remembered of one: a song, or a file that is none and is not read again until it changes.
struct Song {
    qint64 id = 0;
    SongFile file;
    QString title, artist, album, genre, year; // empty where its tags say nothing
    FingerprintItems items;                    // empty for what is no song
};

// The songs on the disk. What is added is there whole or not at all, whenever the program ends. One thread at a time;
// several programs may read it, and one may change it.
class SongStore {
public:
    enum class Opening { ToRead, ToChange };

    virtual ~SongStore() = default;

    virtual foundation::Result<int> count() = 0; // of songs
    // What is remembered of a path, or of a file of that size, time and inode.
    virtual foundation::Result<std::optional<Song>> withPath(const QString &path) = 0;
    virtual foundation::Result<std::optional<Song>> like(const SongFile &file) = 0;
    // With its items, and the one that comes first behind an id, without them.
    virtual foundation::Result<std::optional<Song>> song(qint64 id) = 0;
    virtual foundation::Result<std::optional<Song>> after(qint64 id) = 0;

    // In place of what was remembered of its path.
    virtual foundation::Result<void> add(const Song &song) = 0;
    virtual foundation::Result<void> move(qint64 id, const QString &path) = 0;
    virtual foundation::Result<void> remove(qint64 id) = 0;
    // Makes room that removed songs have taken free again.
    virtual foundation::Result<void> tidy() = 0;

    // All songs, some at a time: the places of their items in order, whose songs are counted from an id on.
    using Look = std::function<foundation::Result<void>(qint64 from, std::span<const ItemPlace> places)>;
    virtual foundation::Result<void> each(const Look &look) = 0;
};

// Opens the store in a file, which is made where it is to be changed and not there; null where there is none to read.
// What is no store, is damaged, or was made by a later version is set aside by who opens it to change it.
foundation::Result<std::unique_ptr<SongStore>> openSongStore(const QString &path, SongStore::Opening opening);

// Where the songs of this person are kept.
QString songStorePath();

// The one function that the module exports, by this name and type; loaded when it is first needed.
inline constexpr const char *kSongStoreEntryPoint = "cantorel_song_store";
using SongStoreEntryPoint = foundation::Result<std::unique_ptr<SongStore>> (*)(const QString &path,
                                                                               SongStore::Opening opening);

} // namespace cantorel
