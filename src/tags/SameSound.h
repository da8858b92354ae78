#pragma once

namespace cantorel {

class SplicedFile;

// Whether all tracks have the same description and the same sound, wherever in the file it stands.
bool haveSameMovieSound(const SplicedFile &one, const SplicedFile &other);

// Whether all that is no tag is the same.
bool haveSameMpegSound(const SplicedFile &one, const SplicedFile &other);

} // namespace cantorel
