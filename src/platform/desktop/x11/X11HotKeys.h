#pragma once

#include "platform/desktop/HotKeyBook.h"
#include "platform/desktop/HotKeys.h"
#include "platform/foundation/Sentence.h"

#include <memory>

namespace cantorel::desktop {

// Grabs keys of an X server, with the lock modifiers in every state, and again whenever the keyboard changes. A key
// that repeats while it is held is one press. Has a connection of its own; main thread.
class X11HotKeys : public HotKeys {
public:
    // displayName: empty for that of the environment. Fails when no server answers.
    static foundation::Result<std::unique_ptr<X11HotKeys>> open(const QString &displayName = {});
    ~X11HotKeys() override;

    EventHotKeyRef RegisterEventHotKey(const HotKeyCombination &combination, const EventHotKeyID &identity,
                                       HotKeyTarget &target) override;
    void UnregisterEventHotKey(EventHotKeyRef reference) override;
    // The combination itself, once it is grabbed.
    QString triggerOf(EventHotKeyRef reference) const override;

private:
    class Server;
    explicit X11HotKeys(std::unique_ptr<Server> server);

    void grab(const HotKeyCombination &combination);
    void grabAllAnew();
    void pressed(const HotKeyCombination &combination);
    void tell(const foundation::Sentence &sentence, const QString &detail);

    HotKeyBook mBook;
    std::unique_ptr<Server> mServer;
    std::vector<HotKeyCombination> mHeldElsewhere; // told already
};

} // namespace cantorel::desktop
