#pragma once

#include "platform/foundation/Guarded.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string_view>
#include <utility>

namespace cantorel::foundation {

// The name of a notification and what is posted with it. Stands as an inline constexpr beside its poster.
template <class Payload> struct NotificationName { const char *text; };

// Posts notifications to whoever subscribed to their name. A subscriber is called on the posting thread, so posters
// post on the main thread. Owned by nobody but the process: one default centre, as the platform has it.
class NotificationCenter {
    using Call = std::function<void(const void *)>;
    struct Entry {
        std::string_view name;
        std::shared_ptr<const Call> call;
    };
    using Entries = std::map<std::uint64_t, Entry>;
    struct Book {
        std::uint64_t last = 0;
        Entries entries;
    };

public:
    // Ends with its holder, also in the middle of a notification.
    class [[nodiscard]] Subscription {
    public:
        Subscription() = default;
        Subscription(Subscription &&other) noexcept { *this = std::move(other); }
        Subscription &operator=(Subscription &&other) noexcept {
            std::swap(mBook, other.mBook);
            std::swap(mNumber, other.mNumber);
            return *this;
        }
        ~Subscription() { cancel(); }
        void cancel();

    private:
        friend class NotificationCenter;
        std::weak_ptr<Guarded<Book>> mBook;
        std::uint64_t mNumber = 0;
    };

    static NotificationCenter &defaultCenter();

    template <class Payload>
    Subscription subscribe(NotificationName<Payload> name, std::function<void(const Payload &)> receiver) {
        return add(name.text, [receiver = std::move(receiver)](const void *payload) {
            receiver(*static_cast<const Payload *>(payload));
        });
    }

    template <class Payload> void post(NotificationName<Payload> name, const Payload &payload) const {
        deliver(name.text, &payload);
    }

private:
    Subscription add(std::string_view name, Call call);
    void deliver(std::string_view name, const void *payload) const;

    std::shared_ptr<Guarded<Book>> mBook = std::make_shared<Guarded<Book>>();
};

} // namespace cantorel::foundation
