#pragma once

#include "platform/foundation/FileIdentity.h"
#include "platform/foundation/Result.h"
#include "recording/library/RecordedAudioInfo.h"

#include <QObject>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <stop_token>
#include <thread>

namespace cantorel {

class RecordedList;

// Has finished recordings converted to the chosen format, one after the other on a worker, and completes their items.
// Owned by RecordingSession; main thread.
class RecordedConversions : public QObject {
public:
    // The path of the converted file, or the failure.
    using Completion = std::function<void(const foundation::Result<QString> &)>;

    explicit RecordedConversions(RecordedList &list);
    // Ends a conversion under way; its recording stays as it is.
    ~RecordedConversions() override;

    // The completion is called once the item and the list are up to date.
    void convertRecordedfileFormat(RecordedAudioInfo &item, Completion completion);
    int pending() const { return mPending; }

private:
    void run(const std::stop_token &stop);
    void finish(const RecordedItemPointer &item, const QString &file, const foundation::FileIdentity &recording,
                const foundation::Result<QString> &result, const Completion &completion);

    RecordedList &mList;
    int mPending = 0;
    std::mutex mMutex; // guards the jobs, which run in order
    std::condition_variable_any mWake;
    std::deque<std::function<void(const std::stop_token &)>> mJobs;
    std::jthread mWorker; // from the first one on; last: it uses the above
};

} // namespace cantorel
