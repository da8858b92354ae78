#pragma once

#include "platform/foundation/Result.h"
#include "tags/id3Tag.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace cantorel {

class SplicedFile;

// What the formats of tags hold. One implementation, over TagLib in a shared object that is loaded when a tag is first
// met: a start pays nothing for it. Any thread.
class TagFormats {
public:
    virtual ~TagFormats() = default;

    // A blank record for an M4A that is none, or has no list of items; nothing for what should be MPEG and isn't.
    virtual std::optional<id3Tag> read(SplicedFile &file, bool isMovie) const = 0;
    // Changes what differs from what reading gives; all else stays byte for byte. Answers what the file is to hold
    // then; nothing when nothing differs. The path is for sentences.
    virtual foundation::Result<std::optional<id3Tag>> edit(SplicedFile &file, bool isMovie, const id3TagEdit &edit,
                                                           const QString &path) const = 0;
    // The text as a tag gives it back.
    virtual QString kept(const QString &text) const = 0;
    // See id3Tag::getAllGenreList().
    virtual QStringList genres() const = 0;
    // See songTags().
    virtual id3Tag ofSong(const QString &path) const = 0;
    // See Covers.h.
    virtual QByteArray cover(const QString &path) const = 0;
    virtual bool giveCover(const QString &path, const QByteArray &cover) const = 0;
};

// The one function that the shared object exports, by this name and type.
inline constexpr const char *kTagFormatsEntryPoint = "cantorel_tag_formats";
using TagFormatsEntryPoint = const TagFormats *(*)();

// Loaded at the first call; lives to the end of the program. Any thread.
foundation::Result<const TagFormats *> loadTagFormats();
// The same for those who answer nothing without it: null then, and logged.
const TagFormats *tagFormats();

} // namespace cantorel
