#pragma once

#include <QString>
#include <QUrl>

namespace cantorel {

// The table of named links that the user interface offers, read from a resource. Class operations; any thread.
class Link {
public:
    Link() = delete;

    // Where the resource "Link.xml" is; it may be missing.
    static QString resource();

    // Replaces the table with what elements <link name="..." url="..."/> of the file name; only addresses of the web
    // are taken. False, with the table as it was, when the file can't be read.
    static bool parseLinkWithFilePath(const QString &path);

    // The address of a link; empty when there is none of that name.
    static QUrl address(const QString &name);
};

} // namespace cantorel
