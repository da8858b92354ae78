#pragma once

#include "platform/foundation/Sentence.h"
#include "platform/foundation/SerialWorker.h"
#include "recording/library/RecordedAudioInfo.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <stop_token>
#include <vector>

namespace cantorel {

class RecordedList;

// What is taken out of a folder, where much else may lie.
const QStringList &soundFilePatterns();

// Has sound files that lie anywhere join the list: they are neither moved nor copied. Owned by the window or a command;
// main thread.
class RecordingsAdding : public QObject {
public:
    // The list outlives it.
    explicit RecordingsAdding(RecordedList &list);
    // Ends what is being looked into; nothing of that joins.
    ~RecordingsAdding() override;

    // What is worth listing of some paths, and what holds no sound.
    struct Found {
        std::vector<RecordedAudioFields> sounds;
        QStringList unreadable;
    };
    // Reads the headers of the files; of a folder those of its sound files, not of folders in it. Any thread.
    static Found lookInto(const QStringList &paths, const std::stop_token &stop = {});

    struct Added {
        QStringList files;
        foundation::Sentence trouble; // on what could not be added, or stored
    };
    // Leaves out what is listed already.
    Added join(Found found);
    // The same for paths that are looked into on a worker, one call after the other.
    void add(const QStringList &paths, std::function<void(const Added &)> done);

    // Takes out of the list what the last call has added; the files stay.
    void undo();

private:
    RecordedList &mList;
    QStringList mAdded;
    std::stop_source mStop;
    foundation::SerialWorker mWorker;
};

} // namespace cantorel
