#pragma once

#include "platform/foundation/Result.h"
#include "tags/id3Tag.h"

// The list of items of an M4A.
namespace cantorel {

class SplicedFile;

// A blank record of what is no such file, or has no such list.
id3Tag readMovieTags(SplicedFile &file);

// Changes what differs from what reading gives; other items stay byte for byte, the cover too.
// False when nothing differs; the path is for sentences.
foundation::Result<std::optional<id3Tag>> editMovieTags(SplicedFile &file, const id3TagEdit &edit, const QString &path);

} // namespace cantorel
