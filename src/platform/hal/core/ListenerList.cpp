#include "platform/hal/core/ListenerList.h"

#include <algorithm>

namespace cantorel::hal {

void ListenerList::add(const Listener &listener) {
    if (!contains(listener))
        mListeners.push_back(listener);
}

bool ListenerList::remove(const Listener &listener) { return std::erase(mListeners, listener) > 0; }

bool ListenerList::contains(const Listener &listener) const {
    return std::find(mListeners.begin(), mListeners.end(), listener) != mListeners.end();
}

void ListenerList::changed(const Change &change) {
    if (std::find(mChanges.begin(), mChanges.end(), change) == mChanges.end())
        mChanges.push_back(change);
}

std::vector<ListenerList::Call> ListenerList::takeCalls() {
    std::vector<Call> calls;
    for (const Change &change : mChanges) {
        for (const Listener &listener : mListeners) {
            if (listener.object != change.object || listener.address != change.address)
                continue;
            // One procedure registered for several properties of an object is called once with all of them.
            const auto call = std::find_if(calls.begin(), calls.end(), [&](const Call &c) {
                return c.listener.object == listener.object && c.listener.proc == listener.proc
                       && c.listener.clientData == listener.clientData;
            });
            if (call == calls.end())
                calls.push_back({listener, {change.address}});
            else
                call->addresses.push_back(change.address);
        }
    }
    mChanges.clear();
    return calls;
}

} // namespace cantorel::hal
