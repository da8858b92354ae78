#include "recording/session/Restarts.h"

#include <QFileInfo>

#include <algorithm>

namespace cantorel {

namespace {

constexpr std::chrono::seconds kInterval(1);
constexpr int kMostFailuresInARow = 3;
constexpr double kShortestSuccess = 1; // seconds

} // namespace

bool Restarts::mayFollow(double seconds, const QString &file) {
    if (QFileInfo(file).size() > 0)
        mKept = file;
    mFailuresInARow = seconds >= kShortestSuccess ? 0 : mFailuresInARow + 1;
    return mFailuresInARow < kMostFailuresInARow;
}

Restarts::Duration Restarts::wait(Duration now) const { return std::max(mLastStart + kInterval - now, Duration(0)); }

Restarts::Duration Restarts::interval() { return kInterval; }

} // namespace cantorel
