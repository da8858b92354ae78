#pragma once

#include "platform/hal/AudioHardwareTypes.h"
#include "platform/hal/HardwareBackend.h"

#include <memory>

namespace cantorel::hal {

class ObjectTable;

// What was found at the start of the system of a default device that another program of ours had displaced.
enum class LeftDefault {
    Nothing,
    GivenBack, // the program had ended without it
    Pending,   // the same, but the server does not let it be given back for now
    InUse      // the program lives
};

// Makes the functions of AudioHardware.h answer from a backend while it lives. One at a time, made by the composition
// root on the thread whose event loop calls the listeners.
class HardwareSystem {
public:
    // stateFolder: where the descriptions of aggregate devices and displaced choices of default devices outlive the
    // process; made when needed. A choice that a program left displaced is given back.
    HardwareSystem(std::unique_ptr<HardwareBackend> backend, const QString &stateFolder);
    ~HardwareSystem();
    HardwareSystem(const HardwareSystem &) = delete;
    HardwareSystem &operator=(const HardwareSystem &) = delete;

    // The backend and clock of the living system; null and the wall clock when there is none.
    static HardwareBackend *backend();
    static foundation::Clock &clock();

    // See HardwareBackend. Without a living system there is nothing to complain of.
    static foundation::Result<void> reach(foundation::Clock::Duration patience = {});

    // Makes the device the default of a direction until it is given back, or this program ends in whatever way. What
    // was chosen before then comes back, absence included, unless somebody has chosen yet another device meanwhile.
    static OSStatus borrowDefault(Direction direction, AudioObjectID device);
    // otherwise: the new default if the former one is gone; 0 leaves the choice to the server.
    static void giveBackDefault(Direction direction, AudioObjectID otherwise = kAudioObjectUnknown);
    // The device that the person chose, while a device of ours is the default in its place; 0 if none is, or if the
    // chosen device is gone.
    static AudioObjectID displacedDefault(Direction direction);
    static LeftDefault leftDefault(Direction direction);

    // Calls the listeners for pending changes, and takes up again the streams whose device has come back; the
    // event loop does the same by itself. On the thread that made the system.
    void deliverChanges();

private:
    std::unique_ptr<HardwareBackend> mBackend;
    std::unique_ptr<ObjectTable> mObjects;
};

} // namespace cantorel::hal
