#pragma once

#include "cli/CommandSession.h"
#include "tags/id3Tag.h"

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace cantorel {

// The options by which a command is told of tags.
struct TagOptions {
    std::optional<std::string> title, artist, album, genre, year, cover;

    // Of a command that outlives this.
    void addTo(CLI::App &command, const char *aboutCover);
    bool isEmpty() const { return !title && !artist && !album && !genre && !year && !cover; }
    // Says so of what is no year, which then changes nothing. Fails for a cover that is no picture.
    Outcome read(id3TagEdit &edit) const;
};

} // namespace cantorel
