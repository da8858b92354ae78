#pragma once

#include "platform/hal/HardwareBackend.h"

namespace cantorel::hal {

// The default device of one direction: switches it, and while a device of the program's own stands in for the person's
// choice remembers that choice, absence included, so that going back restores exactly it. Owned and locked by
// ObjectTable.
class DefaultChoice {
public:
    DefaultChoice(HardwareBackend &backend, Direction direction) : mBackend(backend), mDirection(direction) {}

    // Makes the device the default. standIn: it is the program's own (a loopback or an aggregate).
    bool set(const QString &uid, bool standIn);

private:
    struct Displaced {
        std::optional<QString> choice; // what the person had chosen
        QString device;                // what that choice amounted to
        QString instead;               // what we chose
        bool standIn = false;          // a device of the program's own
    };

    HardwareBackend &mBackend;
    const Direction mDirection;
    std::optional<Displaced> mDisplaced;
};

} // namespace cantorel::hal
