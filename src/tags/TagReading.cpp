#include "tags/TagReading.h"

#include "platform/foundation/FileDescriptor.h"
#include "tags/SplicedFile.h"
#include "tags/TagFormats.h"
#include "util/ToolFile.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>

namespace cantorel {

bool isMovieName(const QString &path) { return ToolFile::fileExtensionAtPath(path).toLower() == QLatin1String("m4a"); }

std::optional<id3Tag> readTags(SplicedFile &file, bool isMovie) {
    const TagFormats *formats = tagFormats();
    return formats ? formats->read(file, isMovie) : std::nullopt;
}

std::optional<id3Tag> readTags(const QString &path) {
    const foundation::FileDescriptor file(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return {};
    SplicedFile content(file);
    return readTags(content, isMovieName(path));
}

id3Tag songTags(const QString &path) {
    if (auto tags = readTags(path); tags && !tags->id3Title.isEmpty())
        return *tags;
    const TagFormats *formats = tagFormats();
    return formats ? formats->ofSong(path) : id3Tag();
}

} // namespace cantorel
