#include "platform/foundation/NotificationCenter.h"

#include <vector>

namespace cantorel::foundation {

NotificationCenter &NotificationCenter::defaultCenter() {
    static NotificationCenter center;
    return center;
}

void NotificationCenter::Subscription::cancel() {
    if (const auto book = std::exchange(mBook, {}).lock())
        book->with([&](Book &current) { current.entries.erase(mNumber); });
}

NotificationCenter::Subscription NotificationCenter::add(std::string_view name, Call call) {
    Subscription subscription;
    subscription.mBook = mBook;
    subscription.mNumber = mBook->with([&](Book &book) {
        book.entries.emplace(++book.last, Entry{name, std::make_shared<const Call>(std::move(call))});
        return book.last;
    });
    return subscription;
}

void NotificationCenter::deliver(std::string_view name, const void *payload) const {
    // A receiver may subscribe and cancel: the list is walked outside the lock, and who cancelled meanwhile is passed.
    const auto numbers = mBook->with([&](Book &book) {
        std::vector<std::uint64_t> result;
        for (const auto &[number, entry] : book.entries)
            if (entry.name == name)
                result.push_back(number);
        return result;
    });
    for (const std::uint64_t number : numbers) {
        const auto call = mBook->with([&](Book &book) -> std::shared_ptr<const Call> {
            const auto found = book.entries.find(number);
            return found == book.entries.end() ? nullptr : found->second.call;
        });
        if (call)
            (*call)(payload);
    }
}

} // namespace cantorel::foundation
