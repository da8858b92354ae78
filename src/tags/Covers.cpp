#include "tags/Covers.h"

#include "tags/TagFormats.h"

namespace cantorel {

QByteArray coverOf(const QString &path) {
    const TagFormats *formats = tagFormats();
    return formats ? formats->cover(path) : QByteArray();
}

bool giveCover(const QString &path, const QByteArray &cover) {
    const TagFormats *formats = tagFormats();
    return formats && formats->giveCover(path, cover);
}

} // namespace cantorel
