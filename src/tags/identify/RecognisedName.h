#pragma once

#include "tags/id3Tag.h"
#include "tags/identify/CommAudioIdentify.h"

#include <QString>

#include <functional>

namespace cantorel {

// What the file is to be called after its music, without folder and extension; empty where it keeps its name, since
// that holds the title, or since no file can be called so.
QString recognisedName(const QString &filePath, const RecognisedMusic &music);

// Has the file renamed to the first name that nothing beside it has: the base, then that with "(1)", "(2)" and so on.
// rename: answers false where the name was not taken. The path by then, which stays where the folder takes no other.
QString renamedFreely(const QString &filePath, const QString &base, const std::function<bool(const QString &)> &rename);

// What of a file's tags is to change: all that is known of the music.
id3TagEdit recognisedTags(const RecognisedMusic &music);

} // namespace cantorel
