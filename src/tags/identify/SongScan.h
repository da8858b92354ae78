#pragma once

#include "platform/foundation/Result.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <stop_token>

namespace cantorel {

// Reads the songs of some folders, and those below them, into a store: what is new or has changed, since the rest is
// known. What is gone, or lies in none of the folders, is forgotten; a folder that is not there now keeps its songs.
// Each song is kept as soon as it is read, so that a scan that was ended goes on where it was.
struct SongScan {
    enum class End { Done, Stopped, Elsewhere }; // Elsewhere: another program is at it
    struct Summary {
        End end = End::Done;
        int known = 0, read = 0, forgotten = 0; // songs, of which so many were read now; files
    };

    QString store, program; // the file; the converter
    QStringList folders;
    std::function<void(int known)> progress = {}; // for each song
    std::stop_token stop = {};

    // Blocks, behind everything else that the machine does. A failure says why songs can't be kept.
    foundation::Result<Summary> run() const;
    // Removes the store; false while a program reads songs into it.
    static bool forget(const QString &store);
};

} // namespace cantorel
