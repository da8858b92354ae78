#pragma once

#include "platform/hal/AudioHardwareTypes.h"

#include <vector>

namespace cantorel::hal {

// The listeners of property changes, and the changes that they have not been called for yet. Owned and locked by
// ObjectTable.
class ListenerList {
public:
    struct Listener {
        AudioObjectID object;
        AudioObjectPropertyAddress address;
        AudioObjectPropertyListenerProc proc;
        void *clientData;

        bool operator==(const Listener &) const = default;
    };
    struct Change {
        AudioObjectID object;
        AudioObjectPropertyAddress address;

        bool operator==(const Change &) const = default;
    };

    // Adding the same listener twice keeps one.
    void add(const Listener &listener);
    // False when it was not there.
    bool remove(const Listener &listener);
    bool contains(const Listener &listener) const;

    // Remembers a change; several before the next delivery count as one.
    void changed(const Change &change);
    bool hasChanges() const { return !mChanges.empty(); }
    // One call that is due: a listener and all its addresses that changed, in order. Forgets the changes.
    struct Call {
        Listener listener;
        std::vector<AudioObjectPropertyAddress> addresses;
    };
    std::vector<Call> takeCalls();

private:
    std::vector<Listener> mListeners;
    std::vector<Change> mChanges;
};

} // namespace cantorel::hal
