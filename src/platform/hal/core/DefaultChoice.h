#pragma once

#include "platform/hal/HardwareBackend.h"
#include "platform/hal/HardwareSystem.h"
#include "platform/hal/core/DisplacedDefault.h"

namespace cantorel::hal {

// The default device of one direction: switches it, and while a device of the program's own stands in for the person's
// choice remembers that choice, absence included, so that going back restores exactly it, as soon as the server lets
// it. Owned and locked by ObjectTable.
class DefaultChoice {
public:
    // file: where what is displaced outlives the program.
    DefaultChoice(HardwareBackend &backend, Direction direction, const QString &file)
        : mBackend(backend), mDirection(direction), mFile(file) {}

    // Makes the device the default. standIn: only for as long as the program wants it. Then the choice before comes
    // back with giveBack(), and also should the program end without it.
    bool set(const QString &uid, bool standIn);
    // Ends the standing in, unless somebody has chosen yet another device meanwhile: that choice stays. otherwise: what
    // shall be in force where the device that was is gone.
    void giveBack(const QString &otherwise);
    // Takes up what a program left that ended without giving back.
    void recover();
    // Gives back what could not be given back before; called when something has changed.
    void settle();
    LeftDefault left() const;
    // UID of the device that the person chose, while another device is the default in its place; else empty.
    QString displaced() const { return mState == State::StandsIn ? mDisplaced.device : QString(); }

private:
    enum class State {
        Plain,    // nothing is remembered
        Chosen,   // another device was chosen to stay
        StandsIn, // for a while only
        GoesBack  // given back, and not yet seen to be back
    };
    void forget();

    HardwareBackend &mBackend;
    const Direction mDirection;
    DisplacedDefaultFile mFile;
    State mState = State::Plain;
    DisplacedDefault mDisplaced; // unless plain
    LeftDefault mLeft = LeftDefault::Nothing;
};

} // namespace cantorel::hal
