#include "recording/session/RecordingSpace.h"

#include "platform/media/DiskSpace.h"
#include "util/ToolString.h"

#include <algorithm>
#include <iterator>

namespace cantorel {

namespace {

// The session ends a recording a little before the recorder would have to.
constexpr double kReserveBytes = static_cast<double>(media::kDiskReserve) + 4 * 1024 * 1024;
// Bytes a second of the output formats by their index.
constexpr double kFormats[] = {40000, 16000, 130000, 130000, 176400, 40000, 32000, 16000, 110000, 110000};
constexpr double kTellingSeconds = 10; // before, the recording does not tell its own rate
constexpr double kUsualRate = 48000;

} // namespace

std::optional<qint64> recordingSecondsLeft(const QString &folder, int format, double seconds, qint64 bytes) {
    const auto free = media::freeBytes(folder);
    if (!free)
        return {};
    const double recorder =
        seconds >= kTellingSeconds ? static_cast<double>(bytes) / seconds : media::recordingBytesPerSecond(kUsualRate);
    const double copy = kFormats[format >= 0 && format < int(std::size(kFormats)) ? format : 1];
    const double left = static_cast<double>(*free) - kReserveBytes - seconds * copy;
    return static_cast<qint64>(std::max(0.0, left / (recorder + copy)));
}

QString timeLeftText(qint64 seconds) {
    constexpr qint64 kHour = 3600, kMostHours = 99;
    return seconds < kMostHours * kHour ? ToolString::stringFromDuration(static_cast<double>(seconds))
                                        : QStringLiteral("%1 h").arg(seconds / kHour);
}

} // namespace cantorel
