#pragma once

#include "tags/id3Tag.h"

#include <QString>

namespace cantorel {

// What the tags of a song of any kind say; blank for what has none. Only read here. Any thread.
id3Tag songTags(const QString &path);

} // namespace cantorel
