#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace cantorel {

// What is known of a piece of music: one set of tag values.
struct id3Tag {
    QString id3Title = QStringLiteral("");
    QString id3Artist = QStringLiteral("");
    QString id3Album = QStringLiteral("");
    QString id3Genre = QStringLiteral("");
    QString id3Year = QStringLiteral("");
    QByteArray id3Image;                       // an encoded picture of any kind that is known; empty for none
    QString id3ImagePath = QStringLiteral(""); // carried, never looked at

    bool operator==(const id3Tag &) const = default;

    QString description() const;

    // The genres that every player knows, in their usual order.
    static QStringList getAllGenreList();
};

// The year to be written; nothing for a text that is no number, and for a number that a tag can't hold.
std::optional<unsigned> yearToWrite(const QString &text);

// What somebody changes of the tags of one or of several files: the fields that were touched.
struct id3TagEdit {
    std::optional<QString> title, artist, album, genre, year;
    std::optional<QByteArray> image;

    id3Tag applied(id3Tag tag) const;
};

} // namespace cantorel
