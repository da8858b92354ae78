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

// The record to write into a file with those tags: what was recognised, and of the rest what it has.
id3Tag recognisedTags(id3Tag tags, const RecognisedMusic &music);

} // namespace cantorel
