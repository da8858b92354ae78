#include "platform/hal/core/DefaultChoice.h"

#include <algorithm>

namespace cantorel::hal {

bool DefaultChoice::set(const QString &uid, bool standIn) {
    const std::optional<QString> configured = mBackend.configuredDefault(mDirection);
    const QString inForce = mBackend.defaultDevice(mDirection);
    // Someone has chosen another device meanwhile: that choice is the person's, and what we remembered is past.
    if (mDisplaced && configured != mDisplaced->instead)
        mDisplaced.reset();

    if (!standIn && mDisplaced && mDisplaced->device == uid)
        return restore();
    // Where nothing was chosen and the device is the default anyway, it stays so without a choice.
    if (inForce == uid && (configured == uid || (!standIn && !configured)))
        return true;
    // One stand-in after another still stands in for the choice before the first.
    Displaced displaced =
        standIn && mDisplaced && mDisplaced->standIn ? *mDisplaced : Displaced{configured, inForce, {}, false};
    displaced.instead = uid;
    displaced.standIn = standIn;
    const auto guard = standIn ? std::optional(DefaultSetting(displaced.choice, displaced.device)) : std::nullopt;
    const bool done = mBackend.setConfiguredDefault(mDirection, uid, guard);
    // A choice that was made but is not in force yet is still one to take back.
    if (done || mBackend.configuredDefault(mDirection) == uid)
        mDisplaced = displaced;
    return done;
}

bool DefaultChoice::restore() {
    const DefaultSetting before(mDisplaced->choice, mDisplaced->device);
    mDisplaced.reset();
    return mBackend.setConfiguredDefault(mDirection, before, std::nullopt);
}

void DefaultChoice::giveBack(const QString &otherwise) {
    if (!mDisplaced || !mDisplaced->standIn)
        return;
    const auto devices = mBackend.devices();
    const auto isDevice = [this](const DeviceRecord &record) { return record.uid == mDisplaced->device; };
    if (!otherwise.isEmpty() && std::none_of(devices.begin(), devices.end(), isDevice))
        mDisplaced->device = otherwise;
    if (mBackend.configuredDefault(mDirection) == mDisplaced->instead)
        (void)restore();
    else
        mDisplaced.reset();
}

} // namespace cantorel::hal
