#pragma once

#include <QString>

// A movie grows under a hidden name beside the one that it gets at its end, so that a file which has that one stays
// until then. Any thread.
namespace cantorel::media {

// A hidden name beside the path that is free now.
QString unfinishedName(const QString &path);
// The path that such a name stands for; empty for any other name.
QString finishedName(const QString &unfinished);

} // namespace cantorel::media
