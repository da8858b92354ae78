#pragma once

#include "platform/foundation/Result.h"

#include <QDateTime>
#include <QLockFile>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

namespace cantorel {

// Remembers in the state folder which file is being recorded, so that the next start finds what a crash left
// unfinished; and lets only one recorder run at a time. Owned by RecordingSession; main thread.
class RecordingJournal {
public:
    // folder: made when needed.
    explicit RecordingJournal(const QString &folder);

    // Makes this process the recorder. False when another one is; in a folder that can't be written to nobody is, and
    // begin() fails.
    bool claim();

    // The recording, or the conversion of one, that is begun now; written down before this returns. Ended once its file
    // is whole, or given up where it could not be made whole: then it is a leftover as after a crash.
    bool begin(const QString &file);
    void end(const QString &file);
    void giveUp(const QString &file);
    // Whether the list on the disk has what has been ended; until it does, that stays written down. Without one it
    // does.
    std::function<bool()> listIsStored;

    // What a crash has left of a recording, and nobody has decided about.
    struct Leftover {
        QString file;
        qint64 bytes = 0;
        double seconds = 0; // about
        QDateTime written;  // for the last time
    };
    // The unfinished ones; nothing is changed. What this process writes is none.
    std::vector<Leftover> leftovers() const;
    // All that was begun and never ended, whole ones and missing ones too.
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
    // Repairs what was left of a recording, on a copy that takes the file's place once it is whole; what was whole
    // already is named as well, and what it was converted to. What holds no sound that could be repaired is kept under
    // a name that says so and not tried again. Any thread; its end is left to the caller. Nothing for what is no
    // recording.
    static std::vector<Recovered> recover(const QString &file);
    // Removes the recordings whose program ended before their first sound, and answers which.
    QStringList dropEmpty();
    // Whether nothing can be said of the file, since its folder is not there, as one on a disk that is not plugged in.
    static bool isOutOfReach(const QString &file);

private:
    QStringList read() const;
    bool write(const QStringList &files) const;

    QString mFolder;
    QStringList mOwn;   // begun here, and not ended yet
    QStringList mEnded; // and not yet in the stored list
    std::unique_ptr<QLockFile> mLock;
};

} // namespace cantorel
