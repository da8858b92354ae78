#pragma once

#include <QString>

namespace cantorel {

// A name beside the chosen one that neither a recording has nor what it will be converted to: it must still be free
// when that has ended. Any thread.
QString freeRecordingPath(const QString &chosen);

// Where a recording goes whose folder was removed meanwhile: a free name in the folder that recordings go to without
// it, which is made. Any thread.
QString rescuePath(const QString &lost);

} // namespace cantorel
