#pragma once

#include "tags/index/SongStore.h"

#include <optional>

namespace cantorel {

// A song of one's own that a piece of sound is from.
struct FoundSong {
    Song song;
    double errors = 1;   // how many of the bits that are alike differ: 0 to 1
    bool isSure = false; // else it may be another one
};

// Looks for the song that a piece is from, wherever in it the piece begins. Nothing when none sounds like it, or when
// only a small part of the piece does. Any thread.
foundation::Result<std::optional<FoundSong>> findSong(SongStore &store, FingerprintItems piece);

} // namespace cantorel
