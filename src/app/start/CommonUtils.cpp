#include "app/start/CommonUtils.h"

#include "log/GuardedAction.h"

namespace cantorel {

CommonUtils::CommonUtils(UpdateCheck &updates, BackgroundTasks &background)
    : mUpdates(updates), mBackground(background) {}

CommonUtils::~CommonUtils() {
    mStop.request_stop();
    mBackground.finish();
}

void CommonUtils::initWithCommAppInfo(const CommAppInfo &info, MainWindowFace &) { mInfo = info; }

void CommonUtils::check(UpdateCheck::Asked asked) {
    mBackground.run([this, asked, stop = mStop.get_token()] {
        const auto description = mUpdates.run(asked, stop);
        if (!stop.stop_requested())
            QMetaObject::invokeMethod(
                this, [this, asked, description] { tell(asked, description); }, Qt::QueuedConnection);
    });
}

void CommonUtils::tell(UpdateCheck::Asked asked, const std::optional<UpdateDescription> &description) const {
    (void)guarded("tell of updates", [&] { // logged there
        if (description && description->isOffered()) {
            if (updateIsOffered)
                updateIsOffered(*description);
        } else if (asked == UpdateCheck::Asked::ByHand && nothingIsOffered) {
            nothingIsOffered(description);
        }
    });
}

} // namespace cantorel
