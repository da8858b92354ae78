#pragma once

#include "platform/foundation/Clock.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/SerialWorker.h"
#include "recording/library/ListStore.h"
#include "recording/library/RecordedAudioInfo.h"

#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <future>
#include <memory>
#include <vector>

namespace cantorel {

// Shows the list. All optional.
class RecordedListView {
public:
    virtual ~RecordedListView() = default;

    // Items have come, gone or changed places.
    virtual void recordedListDidChange() {}
    virtual void updatePlayButton() {}
};

// The library: the recordings in the order in which they are shown, stored under "recordedList". Every change is on
// the disk before the call that makes it returns, or unsaved() says why not. Also deletes, one file a second, what
// could not be deleted at once. Owned by the application or a command; main thread.
class RecordedList {
public:
    // stateFolder: for the journal of changes and for copies of damaged lists.
    RecordedList(const QString &stateFolder, foundation::Clock &clock);
    ~RecordedList();

    RecordedListView *view = nullptr; // outlives the list, or is taken away before
    // Called before a listed file may be replaced by another, and once the list holds the result.
    std::function<void(const QString &file)> willConvert, didConvert;

    // Reads the stored list, leaving out what is no longer on disk, and starts the sweeper.
    void initRecordedList();
    // The same on a separate thread; calls back from the event loop when the items are loaded. Until then the list is
    // empty, and a change to it waits.
    void initRecordedListBehind(std::function<void()> loaded);
    bool isLoading() const { return mLoading.valid(); }
    // Stores the whole list again.
    void saveRecordedList();
    // One sentence on why the disk lacks the latest changes; empty if it has them. What is missing is stored with the
    // next change.
    const foundation::Sentence &unsaved() const { return mStore.unsaved(); }
    // Tries again to store what is missing, and returns unsaved().
    foundation::Sentence storedAtLast();

    using Items = ListStore::Items;
    const Items &items() const { return mItems; }
    // Null when there is none.
    RecordedAudioInfo *itemWithFile(const QString &path) const;
    // The folders that the files of the list lie in, each once.
    QStringList folders() const;
    // items().size() for one that is not in the list.
    std::size_t indexOf(const RecordedAudioInfo &item) const;

    RecordedAudioInfo &addRecordedFile(const QString &path, const QString &recordDuration,
                                       const QString &recordFileSize);
    // Recordings that exist already, added now; those that are listed are left out. The files that were added.
    QStringList append(std::vector<RecordedAudioFields> recordings);
    // A recording that was in the list before, back at its place, or at the end where the list is shorter now.
    void insert(std::size_t at, RecordedAudioFields fields);
    // The item is destroyed; its file stays.
    void remove(RecordedAudioInfo &item);
    // The same for all items with these files that are not in use.
    void removeFiles(const QStringList &files);
    // Stores what has changed in the item.
    void save(const RecordedAudioInfo &item);
    // Takes album, artist, year, cover and size of these files into their items, after their tags were written.
    void takeTags(const QStringList &files);
    // The same, where the files are read beside the main thread.
    void takeTagsBehind(const QStringList &files);
    // Renames the file beside itself, keeping its extension; nothing is overwritten, and nothing has changed where it
    // fails.
    foundation::Result<void> rename(RecordedAudioInfo &item, const QString &name);
    void move(std::size_t from, std::size_t to);

    // Adds a file that the sweeper deletes as soon as it exists, and takes one back.
    void addInvalidFile(const QString &path) { mInvalidFiles.insert(path); }
    void removeInvalidFile(const QString &path) { mInvalidFiles.remove(path); }

private:
    // What the store holds, items of the main thread. Changes nothing there.
    Items load();
    void take(Items items);
    void finishLoading();
    void _deleteInvalidRecordedFiles();
    void changed();
    // What is read of a file whose tags were written; the item may go, or be renamed, meanwhile.
    struct Tagged;
    std::vector<Tagged> tagged(const QStringList &files) const;
    static void read(std::vector<Tagged> &tagged);
    void take(const std::vector<Tagged> &tagged);

    const QString mStateFolder;
    foundation::Clock &mClock;
    ListStore mStore;
    Items mItems;
    QSet<QString> mInvalidFiles;
    std::unique_ptr<foundation::Timer> mTimerInvalid;
    QObject mTold;
    QObject mLoaded; // told that the list is there; not by one that ends
    foundation::SerialWorker mReader;
    std::future<Items> mLoading; // while it runs, the store is its own
};

} // namespace cantorel
