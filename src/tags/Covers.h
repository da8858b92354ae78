#pragma once

#include <QByteArray>
#include <QString>

namespace cantorel {

// The picture that players show for a sound file, as its bytes lie in the file's tags; empty where there is none, or
// one of no kind that is known. Any kind of tag. Any thread.
QByteArray coverOf(const QString &path);

// Gives a file that has no picture that one, in the form that its own kind of tag has, beside what it has already.
// False for a kind of file that holds none, or when it could not be written; it may be broken then, so that this is
// for files that are looked at before anybody gets them.
bool giveCover(const QString &path, const QByteArray &cover);

} // namespace cantorel
