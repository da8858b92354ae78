#pragma once

#include "platform/foundation/Result.h"

#include <QLockFile>
#include <QString>

#include <memory>
#include <vector>

namespace cantorel {

// Remembers in the state folder which file is being recorded, so that the next start finds what a crash left
// unfinished; and lets only one recorder run at a time. Owned by RecordingSession; main thread.
class RecordingJournal {
public:
    // folder: made when needed.
    explicit RecordingJournal(const QString &folder);

    // Makes this process the recorder. False when another one is.
    bool claim();

    // The recording that is begun now; written down before this returns. Ended once its file is whole.
    bool begin(const QString &file);
    void end(const QString &file);

    // A recording that a crash left behind, and what became of it.
    struct Recovered {
        QString original; // as it was named
        QString file;     // as it is named now
        double durationSeconds = 0;
        QString failure; // one sentence; empty when the file is whole
    };
    // Repairs what was left unfinished, each on a copy that takes the file's place once it is whole; a file that was
    // whole already is named as well. What can't be repaired is kept under a name that says so and not tried again.
    // Only after claim().
    std::vector<Recovered> recover();

private:
    QStringList read() const;
    bool write(const QStringList &files) const;

    QString mFolder;
    std::unique_ptr<QLockFile> mLock;
};

} // namespace cantorel
