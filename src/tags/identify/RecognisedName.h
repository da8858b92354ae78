#pragma once

#include "tags/id3Tag.h"
#include "tags/identify/CommAudioIdentify.h"

#include <QString>

namespace cantorel {

// What the file is to be called after its music, without folder and extension; empty where it keeps its name, since
// that holds the title, or since no file can be called so.
QString recognisedName(const QString &filePath, const RecognisedMusic &music);

// The record to write into a file with those tags: what was recognised, and of the rest what it has.
id3Tag recognisedTags(id3Tag tags, const RecognisedMusic &music);

} // namespace cantorel
