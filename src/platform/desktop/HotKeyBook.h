#pragma once

#include "platform/desktop/HotKeys.h"

#include <vector>

namespace cantorel::desktop {

// The registrations of one implementation of HotKeys, oldest first. Main thread.
class HotKeyBook {
public:
    struct Registration {
        EventHotKeyRef reference;
        HotKeyCombination combination;
        EventHotKeyID identity;
        HotKeyTarget *target;
    };

    EventHotKeyRef add(const HotKeyCombination &combination, const EventHotKeyID &identity, HotKeyTarget &target) {
        mRegistrations.push_back({++mLast, combination, identity, &target});
        return mLast;
    }
    void remove(EventHotKeyRef reference) {
        std::erase_if(mRegistrations, [&](const auto &registration) { return registration.reference == reference; });
    }
    const Registration *find(EventHotKeyRef reference) const {
        return newest([&](const Registration &registration) { return registration.reference == reference; });
    }
    // The newest that the condition holds for, or null.
    template <class Condition> const Registration *newest(Condition condition) const {
        for (auto registration = mRegistrations.rbegin(); registration != mRegistrations.rend(); ++registration)
            if (condition(*registration))
                return &*registration;
        return nullptr;
    }
    bool has(const HotKeyCombination &combination) const {
        return newest([&](const Registration &other) { return other.combination == combination; }) != nullptr;
    }
    const std::vector<Registration> &all() const { return mRegistrations; }

    // Delivers a press to the newest that the condition holds for; its target may end or make registrations.
    template <class Condition> void press(Condition condition) const {
        if (const Registration *registration = newest(condition)) {
            const Registration copy = *registration;
            copy.target->hotKeyPressed(copy.identity);
        }
    }

private:
    std::vector<Registration> mRegistrations;
    EventHotKeyRef mLast = 0;
};

} // namespace cantorel::desktop
