#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

namespace cantorel {

// What an export is asked to make: the type, which is the extension of its files, and the tags.
struct ZQAudioExportFormat {
    QString fileType = QStringLiteral("mp3"); // in lower case; "aac": an M4A
    bool isMerger = true;                     // the selections joined in one file; the writer obeys the setting
    QString ID3Title, ID3Artist, ID3Album, ID3Year, ID3Genre;
    QByteArray ID3ArtworkData; // a picture
    QUrl ID3ArtworkURL;        // where it comes from; goes before the data where it can be read

    bool isAac() const { return fileType == QLatin1String("aac"); }
    QByteArray artwork() const;
};

} // namespace cantorel
