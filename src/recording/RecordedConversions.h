#pragma once

#include "platform/foundation/Result.h"
#include "recording/RecordedAudioInfo.h"

#include <QObject>
#include <QPointer>
#include <QThreadPool>

#include <functional>
#include <stop_token>

namespace cantorel {

class RecordedList;

// Has finished recordings converted to the chosen format, one after the other on a worker, and completes their items.
// Owned by RecordingSession; main thread.
class RecordedConversions : public QObject {
public:
    // The path of the converted file, or why there is none.
    using Completion = std::function<void(const foundation::Result<QString> &)>;

    explicit RecordedConversions(RecordedList &list);
    // Ends a conversion under way; its recording stays as it is.
    ~RecordedConversions() override;

    // The completion is called once the item and the list are up to date.
    void convertRecordedfileFormat(RecordedAudioInfo &item, Completion completion);
    int pending() const { return mPending; }

private:
    void finish(const QPointer<RecordedAudioInfo> &item, const QString &file, foundation::Result<QString> result,
                const Completion &completion);

    RecordedList &mList;
    int mPending = 0;
    std::stop_source mStop;
    QThreadPool mWorker;
};

} // namespace cantorel
