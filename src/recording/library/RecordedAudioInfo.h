#pragma once

#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/WeakDelegate.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QVariant>

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

// One recording of the library. Owned by RecordedList; main thread.
class RecordedAudioInfo : public QObject {
public:
    explicit RecordedAudioInfo(const QString &fileName);
    explicit RecordedAudioInfo(RecordedAudioFields fields);

    foundation::WeakDelegate<CurrentRecordedItem> CurrentRecordedItemDelegate;
    foundation::WeakDelegate<ShutdownMonitor> ShutdownMonitorDelegate;

    const RecordedAudioFields &fields() const { return mFields; }
    QString getFileName() const { return mFields._fileName; }
    QString FileName() const { return mFields._fileName; }
    // The path as first created.
    QString originalFileName() const { return _originalFileName; }
    // The item's view hears of it from the event loop.
    void setFileName(const QString &path);
    void updateInfo();

    // The last component; while the item is processed, without its extension.
    QString getTitle() const;

    QString duration() const { return mFields._duration; }
    void setDuration(const QString &text);
    QString size() const { return mFields._size; }
    void setSize(const QString &text) { mFields._size = text; }
    QString dateAdded() const { return mFields._dateAdded; }
    void setDateAdded(const QString &text) { mFields._dateAdded = text; }
    QString artist() const { return mFields._artist; }
    void setArtist(const QString &text) {
        mFields._artist = text;
        mSearchKey.clear();
    }
    QString album() const { return mFields._album; }
    void setAlbum(const QString &text) {
        mFields._album = text;
        mSearchKey.clear();
    }
    QString year() const { return mFields._year; }
    void setYear(const QString &text) { mFields._year = text; }

    // Name, artist and album, case-folded, on a line each; made when it is first wanted.
    const QByteArray &searchKey() const;

    QString status() const { return _status; }
    // Posts kNotificationRecordedAudioInfoStatusDidChange.
    void setStatus(const QString &status);

    // Neither played, renamed nor removed for now.
    bool isInUse() const { return isRecording || isProcessing || isInterrupted; }

    bool isRecording = false;    // this is the file being recorded
    bool shutdownEnable = false; // shut the computer down when this recording has ended
    bool isIdentifying = false;
    bool isProcessing = false;
    bool isInterrupted = false; // left by a crash, while the person has not decided what to do
    double Seconds = 0;         // exact length, as far as it is known
    QByteArray cover;           // an encoded picture

private:
    RecordedAudioFields mFields;
    QString _originalFileName;
    QString _title;
    QString _status;
    mutable QByteArray mSearchKey;
};

} // namespace cantorel
