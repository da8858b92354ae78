#pragma once

#include "platform/foundation/FileDescriptor.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <vector>

namespace cantorel {

// The changes that a stored list has seen since its archive was written: a file of one JSON object a line, whose first
// line names the archive by its digest. A line that a crash cut short, and all behind it, never happened. Owned by the
// list; one process at a time.
class ListJournal {
public:
    explicit ListJournal(const QString &file) : mFile(file) {}

    // The changes to this archive, in order. A journal of another archive is stale and has none. Only reads.
    std::vector<QJsonObject> changesTo(const QByteArray &archive) const;

    // Starts the journal of this archive; the first append() replaces the file.
    void begin(const QByteArray &archive);
    // Removes the journal once the archive on the disk holds its changes.
    void remove();
    // All of them are on the disk before this returns; false when they could not be brought there.
    bool append(const std::vector<QJsonObject> &changes);
    qint64 size() const { return mSize; } // bytes since begin()

private:
    bool create();

    const QString mFile;
    QByteArray mDigest;
    foundation::FileDescriptor mDescriptor;
    qint64 mSize = 0;
};

} // namespace cantorel
