#pragma once

#include <QObject>
#include <QPointer>

#include <type_traits>

namespace cantorel::foundation {

// Holds a delegate without owning it: a receiver that is gone, or was never set, silently receives nothing. The
// protocol's own default bodies answer then, so every message of a Protocol held this way needs one. Main thread only.
template <class Protocol> class WeakDelegate {
public:
    template <class Receiver> void operator=(Receiver *receiver) {
        static_assert(std::is_base_of_v<QObject, Receiver>, "a delegate is a QObject, so that its end is noticed");
        static_assert(std::is_base_of_v<Protocol, Receiver>, "a delegate implements the protocol");
        mOwner = receiver;
        mTarget = receiver;
    }
    void operator=(std::nullptr_t) { mOwner.clear(); }

    explicit operator bool() const { return !mOwner.isNull(); }
    Protocol *operator->() const { return mOwner ? mTarget : &silent(); }

private:
    static Protocol &silent() {
        static Protocol nobody;
        return nobody;
    }

    QPointer<QObject> mOwner;
    Protocol *mTarget = nullptr;
};

} // namespace cantorel::foundation
