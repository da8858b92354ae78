#pragma once

#include <deque>
#include <future>
#include <utility>

namespace cantorel {

// More than there are cores most often, so that none stands idle beside the last part or behind a long one.
inline constexpr int kPartsAtOnce = 4;

// Does the work of each index from first to below last, `atOnce` of them at a time on threads of their own, and hands
// the results over one after the other, in order, on the calling thread. What either throws reaches the caller.
template <class Work, class Take> void inOrder(int first, int last, int atOnce, const Work &work, const Take &take) {
    std::deque<decltype(std::async(std::launch::async, work, first))> running;
    for (int next = first, index = first; index < last; ++index) {
        for (; next < last && next < index + atOnce; ++next)
            running.push_back(std::async(std::launch::async, work, next));
        auto result = running.front().get();
        running.pop_front();
        take(index, std::move(result));
    }
}

} // namespace cantorel
