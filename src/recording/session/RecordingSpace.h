#pragma once

#include <QString>

#include <optional>

namespace cantorel {

// How much can still be recorded to the folder before its disk is full, in seconds; the converted copy of it all and a
// reserve that lets the file be closed are counted. 0 when the reserve is reached; nothing where the disk does not
// tell. format: index of the output format. seconds, bytes: of the recording under way.
std::optional<qint64> recordingSecondsLeft(const QString &folder, int format, double seconds, qint64 bytes);

// "12:34:56", or "128 h" where hours have more than two digits.
QString timeLeftText(qint64 seconds);

} // namespace cantorel
