#pragma once

#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/WeakDelegate.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QVariant>

#include <memory>
#include <optional>

namespace cantorel {

class RecordedAudioInfo;

// Posted without a payload whenever the status of an item changes, on the thread that changes it.
struct RecordedStatusChange {};
inline constexpr foundation::NotificationName<RecordedStatusChange> kNotificationRecordedAudioInfoStatusDidChange{
    "audioRecorder.notification.recordedAudioInfoStatusDidChange"};

// What is stored of a recording, under the names of its fields.
struct RecordedAudioFields {
    QString _fileName; // full path
    QString _duration; // as shown
    QString _size;     // as shown
    QString _dateAdded;
    QString _artist;
    QString _album;
    QString _year;
    bool operator==(const RecordedAudioFields &) const = default;
};
// The item of a keyed archive, and back; nothing for what is no recording. Fields of another type are empty.
QVariant archivedItem(const RecordedAudioFields &fields);
std::optional<RecordedAudioFields> recordedAudioFields(const QVariant &archivedItem);

// Shows an item in the recording panel. All optional.
class CurrentRecordedItem {
public:
    virtual ~CurrentRecordedItem() = default;

    virtual void updateInfo() {}
    virtual void setDuration(const QString & /*text*/) {}
};

// Receives the wish to shut the computer down once an item's recording has ended. Optional.
class ShutdownMonitor {
public:
    virtual ~ShutdownMonitor() = default;

    virtual void shutdownRequestedBy(RecordedAudioInfo &) {}
};

class RecordedItemPointer;

// Whether a recording holds pictures: it is not converted, filtered or identified by itself.
inline bool isMovieFile(const QString &path) { return path.endsWith(QLatin1String(".mp4"), Qt::CaseInsensitive); }

// One recording of the library. A library holds a hundred thousand of them: what is stored lies in one piece of
// memory, and what few of them have in another, made when it is first needed. Owned by RecordedList; main thread.
class RecordedAudioInfo {
public:
    explicit RecordedAudioInfo(const QString &fileName);
    explicit RecordedAudioInfo(const RecordedAudioFields &fields);
    ~RecordedAudioInfo();
    RecordedAudioInfo(const RecordedAudioInfo &) = delete;
    RecordedAudioInfo &operator=(const RecordedAudioInfo &) = delete;

    foundation::WeakDelegate<CurrentRecordedItem> &CurrentRecordedItemDelegate() { return rare().current; }
    foundation::WeakDelegate<ShutdownMonitor> &ShutdownMonitorDelegate() { return rare().monitor; }

    RecordedAudioFields fields() const;
    QString getFileName() const { return field(FileNameField); }
    QString FileName() const { return getFileName(); }
    // Whether it is this file; quicker than its name.
    bool hasFile(const QByteArray &utf8Path) const { return piece(FileNameField) == utf8Path; }
    // Whether its file is there; quicker than by its name.
    bool fileExists() const;
    // The path of its folder, as UTF-8.
    QByteArrayView folder() const;
    // The path as first created.
    QString originalFileName() const;
    // The item's view hears of it from the event loop.
    void setFileName(const QString &path);
    void updateInfo();

    // The last component; while the item is processed, without its extension.
    QString getTitle() const;

    QString duration() const { return field(DurationField); }
    void setDuration(const QString &text);
    QString size() const { return field(SizeField); }
    void setSize(const QString &text) { setField(SizeField, text); }
    QString dateAdded() const { return field(DateAddedField); }
    void setDateAdded(const QString &text) { setField(DateAddedField, text); }
    QString artist() const { return field(ArtistField); }
    void setArtist(const QString &text) { setField(ArtistField, text); }
    QString album() const { return field(AlbumField); }
    void setAlbum(const QString &text) { setField(AlbumField, text); }
    QString year() const { return field(YearField); }
    void setYear(const QString &text) { setField(YearField, text); }

    // Name, artist and album, case-folded, on a line each; made when it is first wanted.
    const QByteArray &searchKey() const;

    QString status() const { return mRare ? mRare->status : QString(); }
    // Posts kNotificationRecordedAudioInfoStatusDidChange.
    void setStatus(const QString &status);

    // An encoded picture.
    QByteArray cover() const { return mRare ? mRare->cover : QByteArray(); }
    void setCover(const QByteArray &picture) { rare().cover = picture; }

    // Neither played, renamed nor removed for now.
    bool isInUse() const { return isRecording || isProcessing || isInterrupted; }

    bool isRecording = false;    // this is the file being recorded
    bool shutdownEnable = false; // shut the computer down when this recording has ended
    bool isIdentifying = false;
    bool isProcessing = false;
    bool isInterrupted = false; // left by a crash, while the person has not decided what to do
    double Seconds = 0;         // exact length, as far as it is known

private:
    friend class RecordedItemPointer;
    enum Field { FileNameField, DurationField, SizeField, DateAddedField, ArtistField, AlbumField, YearField };
    struct Rare {
        foundation::WeakDelegate<CurrentRecordedItem> current;
        foundation::WeakDelegate<ShutdownMonitor> monitor;
        QString originalFileName, status;
        QByteArray cover;
        std::shared_ptr<RecordedAudioInfo *> place; // told to those that point here
    };

    Rare &rare();
    QByteArrayView piece(Field field) const;
    QString field(Field field) const { return QString::fromUtf8(piece(field)); }
    void setField(Field field, const QString &text);

    QByteArray mStored; // the fields in their order as UTF-8, parted by a byte that no text has
    mutable QByteArray mSearchKey;
    std::unique_ptr<Rare> mRare;
};

// Points to an item without owning it; null once the item is gone. Followed on the main thread, held by any.
class RecordedItemPointer {
public:
    RecordedItemPointer() = default;
    RecordedItemPointer(RecordedAudioInfo *item); // deliberately from any item

    operator RecordedAudioInfo *() const { return mPlace ? *mPlace : nullptr; }
    RecordedAudioInfo *operator->() const { return *this; }
    void clear() { mPlace.reset(); }

private:
    std::shared_ptr<RecordedAudioInfo *> mPlace;
};

} // namespace cantorel
