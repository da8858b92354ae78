#include "platform/hal/core/DefaultChoice.h"

namespace cantorel::hal {

bool DefaultChoice::set(const QString &uid, bool standIn) {
    const std::optional<QString> configured = mBackend.configuredDefault(mDirection);
    // Someone has chosen another device meanwhile: that choice is the person's, and what we remembered is past.
    if (mDisplaced && configured != mDisplaced->standIn)
        mDisplaced.reset();

    if (standIn) {
        if (configured == uid && mBackend.defaultDevice(mDirection) == uid)
            return true;
        const Displaced displaced =
            mDisplaced ? *mDisplaced : Displaced{configured, mBackend.defaultDevice(mDirection), {}};
        if (!mBackend.setConfiguredDefault(mDirection, uid, DefaultSetting(displaced.choice, displaced.device)))
            return false;
        mDisplaced = displaced;
        mDisplaced->standIn = uid;
        return true;
    }
    if (mDisplaced && mDisplaced->device == uid) {
        const DefaultSetting before(mDisplaced->choice, mDisplaced->device);
        mDisplaced.reset();
        return mBackend.setConfiguredDefault(mDirection, before, std::nullopt);
    }
    mDisplaced.reset();
    if (configured == uid && mBackend.defaultDevice(mDirection) == uid)
        return true;
    // Where nothing was chosen and the device is the default anyway, it stays so without a choice.
    if (!configured && mBackend.defaultDevice(mDirection) == uid)
        return true;
    return mBackend.setConfiguredDefault(mDirection, uid, std::nullopt);
}

} // namespace cantorel::hal
