#pragma once

#include "platform/hal/HardwareBackend.h"

namespace cantorel::hal {

// The default device of one direction: switches it, and while a device of the program's own stands in for the person's
// choice remembers that choice, absence included, so that going back restores exactly it. Owned and locked by
// ObjectTable.
class DefaultChoice {
public:
    DefaultChoice(HardwareBackend &backend, Direction direction) : mBackend(backend), mDirection(direction) {}

    // Makes the device the default. standIn: only for as long as the program wants it. Then the choice before comes
    // back with giveBack(), and also should the program end without it.
    bool set(const QString &uid, bool standIn);
    // Ends the standing in, unless somebody has chosen yet another device meanwhile: that choice stays. otherwise: what
    // shall be in force where the device that was is gone.
    void giveBack(const QString &otherwise);
    // UID of what the person's choice amounted to while another device stands in for it; else empty.
    QString displaced() const { return mDisplaced && mDisplaced->standIn ? mDisplaced->device : QString(); }

private:
    struct Displaced {
        std::optional<QString> choice; // what the person had chosen
        QString device;                // what that choice amounted to
        QString instead;               // what we chose
        bool standIn = false;          // for a while only
    };
    bool restore();

    HardwareBackend &mBackend;
    const Direction mDirection;
    std::optional<Displaced> mDisplaced;
};

} // namespace cantorel::hal
