#include "tags/index/SongIndex.h"

#include "platform/foundation/LoadedModule.h"
#include "platform/foundation/SearchPaths.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace cantorel {

using foundation::Result;

namespace {

constexpr std::size_t kShortest = 32;  // items that have to be alike, of some six seconds of sound
constexpr std::size_t kDifferent = 12; // of them, since one tone sounds like any other one
constexpr double kSure = 0.2;          // so many wrong bits leave no doubt; other songs have about a third
constexpr double kPerhaps = 0.27;
constexpr double kEqual = 0.03; // that don't tell two songs apart
constexpr std::size_t kLookedAt = 16;

struct Candidate {
    qint64 id = 0;
    int shift = 0, votes = 0;
};

Result<std::vector<Candidate>> candidates(SongStore &store, const SongSearch &search, SongSearch::Accuracy accuracy) {
    std::vector<Candidate> all;
    const auto looked = store.each([&](qint64 from, std::span<const ItemPlace> places) -> Result<void> {
        for (const auto &[song, shift, votes] : search.candidates(places, accuracy))
            all.push_back({from + song, shift, votes});
        return {};
    });
    if (!looked)
        return looked.failure();
    std::ranges::stable_sort(all, std::ranges::greater(), &Candidate::votes);
    all.resize(std::min(all.size(), kLookedAt));
    return all;
}

bool isSameName(const Song &one, const Song &other) {
    return one.title.compare(other.title, Qt::CaseInsensitive) == 0
           && one.artist.compare(other.artist, Qt::CaseInsensitive) == 0;
}

Result<std::optional<FoundSong>> best(SongStore &store, const SongSearch &search, SongSearch::Accuracy accuracy) {
    const auto likely = candidates(store, search, accuracy);
    if (!likely)
        return likely.failure();
    std::optional<FoundSong> found;
    std::size_t length = 0; // of what it has in common
    bool isAlone = true;
    for (const auto &[id, shift, votes] : likely.value()) {
        auto song = store.song(id);
        if (!song)
            return song.failure();
        if (!song.value()) // removed
            continue;
        const auto likeness = search.likeness(song.value()->items, shift);
        if (likeness.like < kShortest || likeness.different < kDifferent || likeness.errors > kPerhaps
            || 2 * likeness.like < search.length())
            continue;
        const bool isEqual = found && std::abs(likeness.errors - found->errors) < kEqual;
        const bool isBetter = !found || (isEqual ? likeness.like > length : likeness.errors < found->errors);
        if (isEqual)
            isAlone = isAlone && isSameName(*song.value(), found->song);
        else if (isBetter)
            isAlone = true;
        if (isBetter) {
            length = likeness.like;
            found = FoundSong{*std::move(song.value()), likeness.errors, likeness.errors <= kSure};
        }
    }
    if (found)
        found->isSure = found->isSure && isAlone;
    return found;
}

} // namespace

QString songStorePath() { return foundation::stateFolder() + QStringLiteral("/cantorel/songs.db"); }

Result<std::unique_ptr<SongStore>> openSongStore(const QString &path, SongStore::Opening opening) {
    static const auto entry = foundation::loadFunction<SongStoreEntryPoint>("cantorel-songs.so", kSongStoreEntryPoint);
    if (!entry)
        return entry.failure();
    return entry.value()(path, opening);
}

Result<std::optional<FoundSong>> findSong(SongStore &store, FingerprintItems piece) {
    if (piece.size() < kShortest)
        return std::optional<FoundSong>();
    const SongSearch search(std::move(piece));
    auto found = best(store, search, SongSearch::Accuracy::Equal);
    // Noise leaves few items as they were.
    if (found && (!found.value() || !found.value()->isSure))
        found = best(store, search, SongSearch::Accuracy::OneBitOff);
    return found;
}

} // namespace cantorel
