#include "app/CommonUtils.h"

#include "log/GuardedAction.h"

namespace cantorel {

CommonUtils::CommonUtils(UpdateCheck &updates, BackgroundTasks &background)
    : mUpdates(updates), mBackground(background) {}

CommonUtils::~CommonUtils() {
    mStop.request_stop();
    mBackground.finish();
}

void CommonUtils::initWithCommAppInfo(const CommAppInfo &info, MainWindowFace &) { mInfo = info; }

void CommonUtils::checkSilent() {
    mBackground.run([this, stop = mStop.get_token()] {
        const auto description = mUpdates.run(stop);
        if (!description || !description->isOffered() || stop.stop_requested())
            return;
        QMetaObject::invokeMethod(
            this,
            [this, offered = *description] {
                if (updateIsOffered)
                    (void)guarded("offer an update", [&] { updateIsOffered(offered); }); // logged there
            },
            Qt::QueuedConnection);
    });
}

} // namespace cantorel
