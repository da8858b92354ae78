#pragma once

#include "app/start/BackgroundTasks.h"
#include "app/start/ZQCommonUtils.h"
#include "util/tools/UpdateCheck.h"

#include <QObject>

#include <functional>
#include <memory>
#include <stop_token>

namespace cantorel {

// The maker's services as this program has them: the record, and the update check on a worker. Main thread.
class CommonUtils : public QObject, public ZQCommonUtils {
public:
    // Both outlive the services.
    CommonUtils(UpdateCheck &updates, BackgroundTasks &background);
    ~CommonUtils() override;

    // Called with a version to offer, on the main thread; set by the code that shows it.
    std::function<void(const UpdateDescription &)> updateIsOffered;
    // Told on the main thread of a check by hand that has nothing to offer: with what the server said, or with nothing
    // when nothing came.
    std::function<void(const std::optional<UpdateDescription> &)> nothingIsOffered;

    const CommAppInfo &appInfo() const { return mInfo; }

    void initWithCommAppInfo(const CommAppInfo &info, MainWindowFace &parentWindow) override;
    void setAppInfo(const CommAppInfo &info) override { mInfo = info; }
    void checkSilent() override { check(UpdateCheck::Asked::Silently); }
    // For a person who asked: offers again what was offered before, and tells of a result that is no news.
    void checkByHand() { check(UpdateCheck::Asked::ByHand); }
    void stopWaiting() override { mStop.request_stop(); }
    void dispose() override { stopWaiting(); }

private:
    void check(UpdateCheck::Asked asked);
    void tell(UpdateCheck::Asked asked, const std::optional<UpdateDescription> &description) const;

    UpdateCheck &mUpdates;
    BackgroundTasks &mBackground;
    CommAppInfo mInfo;
    std::stop_source mStop;
};

} // namespace cantorel
