#include "tags/index/SongSearch.h"

#include <algorithm>
#include <bit>
#include <unordered_set>

namespace cantorel {

namespace {

constexpr std::size_t kLooksUp = 256;  // items of a piece at most, spread over it
constexpr std::size_t kMostAlike = 64; // An item that occurs oftener among some songs tells none of them.
constexpr int kLeastVotes = 2;         // that are no chance
constexpr std::size_t kMostCandidates = 8;
constexpr std::size_t kStretch = 32; // items that are held against each other at once, four seconds
constexpr double kAlike = 0.3;       // of the bits of a stretch may differ

} // namespace

std::vector<SongSearch::Candidate> SongSearch::candidates(std::span<const ItemPlace> places, Accuracy accuracy) const {
    std::vector<std::pair<std::uint16_t, int>> votes; // song and shift
    const auto vote = [&](std::uint32_t item, int at) {
        const auto found = std::ranges::equal_range(places, item, {}, &ItemPlace::item);
        if (found.size() <= kMostAlike)
            for (const ItemPlace &place : found)
                votes.emplace_back(place.song, int{place.place} - at);
    };
    const std::size_t step = std::max<std::size_t>(1, mPiece.size() / kLooksUp);
    for (std::size_t i = 0; i < mPiece.size(); i += step) {
        if (i > 0 && mPiece[i] == mPiece[i - step])
            continue;
        vote(mPiece[i], static_cast<int>(i));
        if (accuracy == Accuracy::OneBitOff)
            for (int bit = 0; bit < 32; ++bit)
                vote(mPiece[i] ^ (std::uint32_t{1} << bit), static_cast<int>(i));
    }
    std::ranges::sort(votes);
    std::vector<Candidate> all;
    for (std::size_t i = 0; i < votes.size();) {
        const auto [song, shift] = votes[i];
        // A piece seldom begins just where an item of the song does, so that votes stand on two shifts.
        std::size_t end = i, next = i;
        while (end < votes.size() && votes[end].first == song && votes[end].second <= shift + 1)
            next += votes[end++].second == shift ? 1 : 0;
        const int count = static_cast<int>(end - i);
        if (count >= kLeastVotes)
            all.push_back({song, shift, count});
        i = next;
    }
    const auto more = [](const Candidate &one, const Candidate &other) { return one.votes > other.votes; };
    const std::size_t kept = std::min(all.size(), kMostCandidates);
    std::ranges::partial_sort(all, all.begin() + static_cast<std::ptrdiff_t>(kept), more);
    all.resize(kept);
    return all;
}

SongSearch::Likeness SongSearch::likenessAt(std::span<const std::uint32_t> song, int shift) const {
    Likeness likeness;
    std::size_t wrong = 0;
    std::unordered_set<std::uint32_t> met;
    for (std::size_t first = 0; first < mPiece.size(); first += kStretch) {
        std::size_t count = 0, bits = 0;
        const std::size_t last = std::min(first + kStretch, mPiece.size());
        for (std::size_t i = first; i < last; ++i) {
            const auto at = static_cast<std::ptrdiff_t>(i) + shift;
            if (at < 0 || at >= std::ssize(song))
                continue;
            bits += static_cast<std::size_t>(std::popcount(mPiece[i] ^ song[static_cast<std::size_t>(at)]));
            ++count;
        }
        if (static_cast<double>(bits) > kAlike * 32 * static_cast<double>(count))
            continue;
        wrong += bits;
        likeness.like += count;
        met.insert(mPiece.begin() + static_cast<std::ptrdiff_t>(first),
                   mPiece.begin() + static_cast<std::ptrdiff_t>(last));
    }
    if (likeness.like > 0)
        likeness.errors = static_cast<double>(wrong) / (32 * static_cast<double>(likeness.like));
    likeness.different = std::min(met.size(), likeness.like);
    return likeness;
}

SongSearch::Likeness SongSearch::likeness(std::span<const std::uint32_t> song, int shift) const {
    const Likeness there = likenessAt(song, shift), beside = likenessAt(song, shift + 1);
    const auto worth = [](const Likeness &one) { return static_cast<double>(one.like) * (0.5 - one.errors); };
    return worth(beside) > worth(there) ? beside : there;
}

} // namespace cantorel
