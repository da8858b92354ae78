#include "editor/operations/ZQAudioExportFormat.h"

#include "tags/Pictures.h"

#include <QFile>

namespace cantorel {

QByteArray ZQAudioExportFormat::artwork() const {
    QFile file(ID3ArtworkURL.toLocalFile());
    if (!ID3ArtworkURL.isLocalFile() || !file.open(QIODevice::ReadOnly))
        return ID3ArtworkData;
    const QByteArray bytes = file.read(kLargestPicture + 1);
    return bytes.isEmpty() || bytes.size() > kLargestPicture ? ID3ArtworkData : bytes;
}

} // namespace cantorel
