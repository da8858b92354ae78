#include "tags/AudioIdentify.h"
#include "tags/TagReading.h"
#include "tags/TagWriting.h"
#include "tests/fuzz/FuzzFolder.h"

#include <cstdlib>

// The first byte tells the kind of the file, and whether sound of MPEG stands behind the rest.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    using namespace cantorel;
    static const fuzz::FuzzFolder folder;
    if (size == 0)
        return 0;
    const char *const name = data[0] % 2 ? "sound.m4a" : "sound.mp3";
    QByteArray bytes = fuzz::bytesOf(data + 1, size - 1);
    if (data[0] & 2)
        bytes += (QByteArray("\xFF\xFB\x10\x64") + QByteArray(100, '\0')).repeated(4);
    folder.put(name, reinterpret_cast<const std::uint8_t *>(bytes.constData()), static_cast<std::size_t>(bytes.size()));
    const QString path = folder.path() + QLatin1Char('/') + QLatin1String(name);
    auto tag = AudioIdentify::getID3TagFromFile(path).value_or(id3Tag());
    tag.id3Title = QStringLiteral("A title");
    tag.id3Year = QStringLiteral("1999");
    tag.id3Image.clear(); // The readers of pictures are other people's.
    const TagsWritten written = writeTags({{path, tag}});
    // What was written is read back, and what undoes it gives every byte back.
    const auto read = AudioIdentify::getID3TagFromFile(path);
    if (written.failures.empty() && (!read || read->id3Title != tag.id3Title))
        std::abort();
    if (!undoTags(written.undo).empty())
        std::abort();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.readAll() != bytes)
        std::abort();
    return 0;
}
