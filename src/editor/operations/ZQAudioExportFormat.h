#pragma once

#include "platform/foundation/Sentence.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <cstddef>
#include <vector>

namespace cantorel {

// What an export is asked to make: the type, which is the extension of its files, and the tags.
struct ZQAudioExportFormat {
    QString fileType = QStringLiteral("mp3"); // in lower case; "aac": an M4A
    bool isMerger = true;                     // the selections joined in one file; the writer obeys the setting
    QString ID3Title, ID3Artist, ID3Album, ID3Year, ID3Genre;
    QByteArray ID3ArtworkData; // a picture
    QUrl ID3ArtworkURL;        // where it comes from; goes before the data where it can be read

    // Of one file per selection: what each asks for, in their order; those that lack ask for the same as this.
    std::vector<ZQAudioExportFormat> parts;
    QString fileName; // of such a part, without extension; empty: the next free one behind the part before

    const ZQAudioExportFormat &ofPart(std::size_t index) const { return index < parts.size() ? parts[index] : *this; }
    bool namesAllParts() const;
    // Why the parts cannot have the names that they ask for; empty when they can.
    foundation::Sentence namesTrouble() const;
    // A name as a person types it loses the extension of what is written, and no other.
    QString withoutExtension(const QString &name) const;

    bool isAac() const { return fileType == QLatin1String("aac"); }
    QByteArray artwork() const;
};

} // namespace cantorel
