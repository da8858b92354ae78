#pragma once

#include "tags/id3Tag.h"

#include <QString>

#include <optional>

namespace cantorel {

class SplicedFile;

// An M4A by the file's name; every other one is looked into as MPEG. Any thread.
bool isMovieName(const QString &path);
// Nothing for what is neither; see AudioIdentify::getID3TagFromFile.
std::optional<id3Tag> readTags(const QString &path);
std::optional<id3Tag> readTags(SplicedFile &file, bool isMovie);
// Of a song of any kind, those that are only read among them; blank for what has none.
id3Tag songTags(const QString &path);

} // namespace cantorel
