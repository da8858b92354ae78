#include "tags/AudioIdentify.h"

#include "log/CommLog.h"
#include "log/GuardedAction.h"
#include "tags/Pictures.h"
#include "tags/TagReading.h"
#include "tags/TagWriting.h"

namespace cantorel {

std::optional<id3Tag> AudioIdentify::getID3TagFromFile(const QString &path) {
    std::optional<id3Tag> tag;
    (void)guarded("getID3TagFromFile", [&] { tag = readTags(path); }); // logged there
    return tag;
}

bool AudioIdentify::saveID3ToFile(const id3Tag &tag, const QString &toFile) {
    return writeTags({{toFile, tag}}).failures.empty();
}

QByteArray AudioIdentify::correctMusicCoverImage(const QByteArray &image) {
    const auto pictures = loadPictures();
    if (pictures)
        return pictures.value()->bounded(image);
    CommLog::E(pictures.failure().detail);
    return {};
}

} // namespace cantorel
