#pragma once

#include "platform/desktop/HotKeyBook.h"
#include "platform/desktop/recorded/RecordedServices.h"

#include <memory>

namespace cantorel::desktop {

// Hot keys in software: notes "register CODE MODIFIERS" and "unregister CODE MODIFIERS", and is pressed by a test.
class RecordedHotKeys : public HotKeys {
public:
    explicit RecordedHotKeys(std::shared_ptr<CallRecord> record) : mRecord(std::move(record)) {}

    EventHotKeyRef RegisterEventHotKey(const HotKeyCombination &combination, const EventHotKeyID &identity,
                                       HotKeyTarget &target) override;
    void UnregisterEventHotKey(EventHotKeyRef reference) override;
    QString triggerOf(EventHotKeyRef) const override { return {}; }

    void press(const HotKeyCombination &combination);

private:
    const std::shared_ptr<CallRecord> mRecord;
    HotKeyBook mBook;
};

} // namespace cantorel::desktop
