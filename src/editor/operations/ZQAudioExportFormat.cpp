#include "editor/operations/ZQAudioExportFormat.h"

#include "tags/Pictures.h"
#include "util/ToolFile.h"

#include <QFile>
#include <QSet>

#include <algorithm>

namespace cantorel {

namespace {

constexpr foundation::SentenceKey kNoName("TaskName", "Name"), kNameTaken("NameTaken", "Name");

} // namespace

foundation::Sentence ZQAudioExportFormat::namesTrouble() const {
    QSet<QString> names;
    for (const ZQAudioExportFormat &part : parts) {
        const QString &name = part.fileName;
        if (name.isEmpty())
            continue;
        if (name.startsWith(QLatin1Char('.')) || ToolFile::cleanFileName(name) != name)
            return kNoName(name);
        if (names.contains(name))
            return kNameTaken(name);
        names.insert(name);
    }
    return {};
}

bool ZQAudioExportFormat::namesAllParts() const {
    return !parts.empty() && std::none_of(parts.begin(), parts.end(), [](const ZQAudioExportFormat &part) {
        return part.fileName.isEmpty();
    });
}

QString ZQAudioExportFormat::withoutExtension(const QString &name) const {
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    const QString extension = name.mid(dot + 1).toLower();
    return dot > 0 && (extension == fileType || extension == QLatin1String("m4a")) ? name.first(dot) : name;
}

QByteArray ZQAudioExportFormat::artwork() const {
    QFile file(ID3ArtworkURL.toLocalFile());
    if (!ID3ArtworkURL.isLocalFile() || !file.open(QIODevice::ReadOnly))
        return ID3ArtworkData;
    const QByteArray bytes = file.read(kLargestPicture + 1);
    return bytes.isEmpty() || bytes.size() > kLargestPicture ? ID3ArtworkData : bytes;
}

} // namespace cantorel
