#pragma once

#include "platform/foundation/Result.h"
#include "tags/id3Tag.h"

#include <optional>

// The tags of everything that is no M4A: ID3 in front of MPEG sound, and what older programs have put behind it.
namespace cantorel {

class SplicedFile;

// Nothing for what holds no such sound. Of the tag in front only that is left in `file` which is read.
std::optional<id3Tag> readMpegTags(SplicedFile &file);

// Changes what differs from what reading gives, in the version that the tag has (version 2 becomes 3); other frames
// stay byte for byte. Pictures are all replaced by the record's, as a TIFF under "image/jpeg". False when nothing
// differs; the path is for sentences.
foundation::Result<std::optional<id3Tag>> editMpegTags(SplicedFile &file, const id3TagEdit &edit, const QString &path);

} // namespace cantorel
