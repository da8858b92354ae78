#pragma once

#include "platform/foundation/Result.h"
#include "recording/session/RecordingJournal.h"

#include <QObject>

#include <functional>
#include <thread>

namespace cantorel {

class RecordedList;
class RecordingSessionView;

// What a crash left of recordings: tells of it, and repairs it or throws it away. Until one of the two is asked for,
// nothing is touched, whatever is recorded meanwhile. Owned by RecordingSession; main thread.
class CrashLeftovers : public QObject {
public:
    using Recovered = std::vector<RecordingJournal::Recovered>;

    // All outlive it.
    CrashLeftovers(RecordingSessionView &view, RecordedList &list, RecordingJournal &journal);
    // Waits for a repair under way.
    ~CrashLeftovers() override;

    // The leftovers that the person has to decide about, nearly always none. Their list items stay unchanged until
    // then. What holds nothing at all, and the hidden files of a program that was ended, are removed without a word,
    // here or in recover().
    std::vector<RecordingJournal::Leftover> pending();

    // Repairs all of it, puts it into the list and tells the view of each.
    void recover();
    // The same on a worker thread. done: called on the main thread with the result; not called if there is nothing to
    // repair.
    void recoverBehind(std::function<void(const Recovered &)> done);
    bool isRecovering() const { return mIsRecovering; }
    // Takes the pending ones out of the list and moves their files into the wastebasket. Fails with the first one that
    // can't be moved; it stays pending.
    foundation::Result<void> discard();

private:
    void sweep();
    // Has it in the list, and tells the view; false where the list has it already.
    bool take(const RecordingJournal::Recovered &recovered);
    // The same for all that was left of a file, which leaves the journal unless the next start shall try again. Answers
    // what the list did not have.
    Recovered take(const QString &file, const Recovered &recovered);

    RecordingSessionView &mView;
    RecordedList &mList;
    RecordingJournal &mJournal;
    bool mIsRecovering = false;
    std::jthread mSweeper; // from the first sweep on
    std::jthread mWorker;  // last: it uses the above
};

// The leftovers that a person is asked about: each one's name, time, length and size.
QString leftoversText(const std::vector<RecordingJournal::Leftover> &leftovers);
// One sentence on what has become of them; empty when there were none.
QString recoveredText(const CrashLeftovers::Recovered &recovered);

} // namespace cantorel
