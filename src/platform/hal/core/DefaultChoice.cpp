#include "platform/hal/core/DefaultChoice.h"

#include <algorithm>

namespace cantorel::hal {

bool DefaultChoice::set(const QString &uid, bool standIn) {
    const std::optional<QString> configured = mBackend.configuredDefault(mDirection);
    const QString inForce = mBackend.defaultDevice(mDirection);
    // Someone has chosen another device meanwhile: that choice is the person's, and what we remembered is past.
    if (mState != State::Plain && mBackend.keepsDefaults() && configured != mDisplaced.instead)
        forget();

    if (!standIn && mState != State::Plain && mDisplaced.device == uid) {
        mState = State::GoesBack;
        settle();
        return mState == State::Plain;
    }
    const bool stoodIn = mState == State::StandsIn || mState == State::GoesBack;
    // Where nothing was chosen and the device is the default anyway, it stays so without a choice. What stands in only
    // for a while is chosen to stay below.
    if (inForce == uid && (configured == uid || (!standIn && !configured)) && (standIn || !stoodIn)) {
        if (standIn && mState == State::GoesBack)
            mState = State::StandsIn;
        return true;
    }
    // If one replacement follows another, the choice before the first is what is remembered.
    const DisplacedDefault before = mDisplaced;
    DisplacedDefault displaced = standIn && stoodIn ? mDisplaced : DisplacedDefault{configured, inForce, {}};
    displaced.instead = uid;
    if (standIn)
        (void)mFile.write(displaced); // Unwritable: it holds while the program runs, or its guard.
    const auto guard = standIn ? std::optional(DefaultSetting(displaced.choice, displaced.device)) : std::nullopt;
    const bool done = mBackend.setConfiguredDefault(mDirection, uid, guard);
    // A choice that was made but is not in force yet is still one to take back.
    if (done || mBackend.configuredDefault(mDirection) == uid) {
        if (!standIn)
            mFile.remove();
        mDisplaced = displaced;
        mState = standIn ? State::StandsIn : State::Chosen;
    } else if (standIn && stoodIn) {
        (void)mFile.write(before);
    } else if (standIn) {
        mFile.remove();
    }
    return done;
}

void DefaultChoice::forget() {
    mState = State::Plain;
    mFile.remove();
}

void DefaultChoice::giveBack(const QString &otherwise) {
    if (mState != State::StandsIn)
        return;
    const auto devices = mBackend.devices();
    const auto isDevice = [this](const DeviceRecord &record) { return record.uid == mDisplaced.device; };
    if (!otherwise.isEmpty() && std::none_of(devices.begin(), devices.end(), isDevice))
        mDisplaced.device = otherwise;
    mState = State::GoesBack;
    settle();
}

void DefaultChoice::settle() {
    if (mState != State::GoesBack || !mBackend.keepsDefaults())
        return;
    if (mBackend.configuredDefault(mDirection) != mDisplaced.instead) {
        forget(); // Somebody has chosen another one, or the server itself went back.
        return;
    }
    // A server would stay with a device of ours where the one that was is gone.
    const auto devices = mBackend.devices();
    DefaultSetting before(mDisplaced.choice, mDisplaced.device);
    if (std::none_of(devices.begin(), devices.end(), [&](const auto &record) { return record.uid == before.device; })) {
        const auto real = std::find_if(devices.begin(), devices.end(), [this](const DeviceRecord &record) {
            return !record.isLoopback && mDirection == Direction::Output && record.output.channels > 0;
        });
        before.device = real == devices.end() ? QString() : real->uid;
    }
    if (!mBackend.setConfiguredDefault(mDirection, before, std::nullopt))
        return;
    if (mLeft == LeftDefault::Pending)
        mLeft = LeftDefault::GivenBack;
    forget();
}

void DefaultChoice::recover() {
    switch (mFile.claim(mDisplaced)) {
    case DisplacedDefaultFile::Found::Nothing:
        return;
    case DisplacedDefaultFile::Found::InUse:
        mLeft = LeftDefault::InUse;
        return;
    case DisplacedDefaultFile::Found::Left:
        mLeft = LeftDefault::Pending;
        mState = State::GoesBack;
        settle();
    }
}

LeftDefault DefaultChoice::left() const {
    return mLeft == LeftDefault::Pending && mState != State::GoesBack ? LeftDefault::Nothing : mLeft;
}

} // namespace cantorel::hal
