#include "recording/RecordedConversions.h"

#include "convert/AudioConverter.h"
#include "lang/Lang.h"
#include "log/GuardedAction.h"
#include "recording/RecordedList.h"
#include "settings/AppSettings.h"
#include "util/ToolFile.h"

#include <QFile>
#include <QFileInfo>

namespace cantorel {

using foundation::Failure;
using foundation::Result;

RecordedConversions::RecordedConversions(RecordedList &list) : mList(list) { mWorker.setMaxThreadCount(1); }

RecordedConversions::~RecordedConversions() {
    mStop.request_stop();
    mWorker.clear();
    mWorker.waitForDone();
}

void RecordedConversions::convertRecordedfileFormat(RecordedAudioInfo &item, Completion completion) {
    ++mPending;
    item.isProcessing = true;
    item.setStatus(Lang::commProcessing() + QStringLiteral("..."));
    const QString file = item.getFileName();
    const int format = AppSettings::getAudioFormat();
    const QString converter = AppSettings::TessolarConverterPath();
    mWorker.start([this, file, format, converter, item = QPointer(&item), completion = std::move(completion)] {
        Result<QString> result =
            Failure{QStringLiteral("The conversion ended unexpectedly; the log says why."), QString()};
        (void)guarded("convert", [&] {
            foundation::WallClock clock;
            result = AudioConverter::convertRecording(format, file, {converter, clock, {}, mStop.get_token()});
        });
        // Waits for the worker when it goes, so this is there; the call is not made then.
        QMetaObject::invokeMethod(this, [this, item, file, result, completion] {
            (void)guarded("converted", [&] { finish(item, file, result, completion); });
        });
    });
}

void RecordedConversions::finish(const QPointer<RecordedAudioInfo> &item, const QString &file, Result<QString> result,
                                 const Completion &completion) {
    --mPending;
    if (result && QFileInfo(result.value()).size() == 0)
        result = Failure{QStringLiteral("The converted file is empty."), QString()};
    // The recording goes only now that its successor is whole.
    if (result && QFileInfo(file).absoluteFilePath() != QFileInfo(result.value()).absoluteFilePath())
        QFile::remove(file);
    if (item) { // It may have been removed from the list meanwhile.
        item->isProcessing = false;
        if (result) {
            item->setFileName(result.value());
            item->setSize(ToolFile::fileSizeFormatterToString(QFileInfo(result.value()).size()));
            item->setStatus({});
            mList.save(*item);
        } else {
            item->setStatus(QStringLiteral("Error"));
        }
    }
    completion(result);
}

} // namespace cantorel
