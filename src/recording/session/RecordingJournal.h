#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Result.h"

#include <QDateTime>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

namespace cantorel {

// Remembers in the state folder which file is being recorded, so that the next start finds what a crash left
// unfinished; and lets only one recorder run at a time. Main thread.
class RecordingJournal {
public:
    // folder: made when needed.
    explicit RecordingJournal(const QString &folder);

    // Makes this process the recorder; false if another process is. In a folder that can't be written to no process is
    // the recorder: this returns true, and begin() fails.
    bool claim();

    // A recording, or its conversion, begins; this is on the disk when begin() returns. Call end() once the file is
    // whole, or giveUp() if it could not be made whole: it is then a leftover, as after a crash.
    bool begin(const QString &file);
    void end(const QString &file);
    void giveUp(const QString &file);
    // One of the two, as the file looks: what could not be closed, on a full disk for one, is a leftover.
    void settle(const QString &file);
    // Whether the stored list holds the files that have ended. Until it does, the journal keeps them. If this is not
    // set, it counts as true.
    std::function<bool()> listIsStored;

    // A recording that a crash left unfinished, while the person has not decided what to do with it.
    struct Leftover {
        QString file;
        qint64 bytes = 0;
        double seconds = 0; // about
        QDateTime written;  // for the last time
    };
    // The unfinished recordings, without those that this process writes. Changes nothing.
    std::vector<Leftover> leftovers() const;
    // All files that were begun and never ended, also those that are whole or missing.
    QStringList abandoned() const;

    // A recording that a crash left behind, and what became of it.
    struct Recovered {
        QString original; // as it was named
        QString file;     // as it is named now
        double durationSeconds = 0;
        foundation::Sentence failure; // empty when the file is whole
        bool wasWhole = false;

        // It is as it was, and the next start tries again.
        bool isPending() const { return !failure.isEmpty() && file == original; }
    };
    // Repairs an unfinished recording on a copy, which then replaces the file. Also returns files that were whole
    // already, and what they were converted to. A file that can't be repaired is kept under a name that says so and is
    // not tried again. Empty if the file is no recording. Any thread; the caller calls end().
    static std::vector<Recovered> recover(const QString &file);
    // Removes the recordings whose program ended before their first sound, and returns which.
    QStringList dropEmpty();
    // Whether the folder of the file is missing, as on a disk that is not plugged in.
    static bool isOutOfReach(const QString &file);

private:
    QStringList read() const;
    bool write(const QStringList &files) const;

    QString mFolder;
    QStringList mOwn;                 // begun here, and not ended yet
    QStringList mEnded;               // and not yet in the stored list
    foundation::FileDescriptor mLock; // of the recorder
};

} // namespace cantorel
