#pragma once

#include <QByteArray>
#include <QString>

// The pictures in tags of any kind.
namespace cantorel {

// See coverOf() and giveCover().
QByteArray readCover(const QString &path);
bool writeCover(const QString &path, const QByteArray &cover);

} // namespace cantorel
