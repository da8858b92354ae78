#pragma once

#include <algorithm>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <utility>
#include <vector>

namespace cantorel {

// A fingerprint is a list of items of 32 bits, some eight for each second of sound. Sound that is heard again gives
// items of which few bits differ; items of other sound differ in about half of them.
using FingerprintItems = std::vector<std::uint32_t>;

// Where items of several songs stand, in their order: the item, the number of the song among them, and its place there.
struct ItemPlace {
    std::uint32_t item = 0;
    std::uint16_t song = 0, place = 0;

    auto operator<=>(const ItemPlace &) const = default;
};

// Adds every other item of a song, since neighbours are much alike, but for those of sound that stands still.
inline void addPlaces(std::vector<ItemPlace> &places, std::uint16_t song, std::span<const std::uint32_t> items) {
    constexpr std::size_t kEvery = 2;
    const std::size_t end = std::min<std::size_t>(items.size(), std::numeric_limits<std::uint16_t>::max());
    for (std::size_t i = 0; i < end; i += kEvery)
        if (i == 0 || items[i] != items[i - kEvery])
            places.push_back({items[i], song, static_cast<std::uint16_t>(i)});
}

// Looks for a piece of sound in songs, wherever in them it begins.
class SongSearch {
public:
    // A song that may hold the piece: its item `shift` stands where the piece begins; below 0 when the piece begins
    // earlier.
    struct Candidate {
        std::uint16_t song = 0;
        int shift = 0;
        int votes = 0; // items that they have in common there
    };
    enum class Accuracy { Equal, OneBitOff };

    // What a piece and a song have in common, laid upon each other at a shift.
    struct Likeness {
        double errors = 1;         // of the bits that are alike, how many differ: 0 to 1
        std::size_t like = 0;      // items of the piece that stand in stretches that sound alike
        std::size_t different = 0; // items among them that occur once
    };

    explicit SongSearch(FingerprintItems piece) : mPiece(std::move(piece)) {}

    std::size_t length() const { return mPiece.size(); }
    // The likeliest among some songs, best first; places are in their order.
    std::vector<Candidate> candidates(std::span<const ItemPlace> places, Accuracy accuracy) const;
    // At that shift or the one beside it.
    Likeness likeness(std::span<const std::uint32_t> song, int shift) const;

private:
    Likeness likenessAt(std::span<const std::uint32_t> song, int shift) const;

    FingerprintItems mPiece;
};

} // namespace cantorel
