#include "editor/models/TimeField.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace cantorel {

namespace {

// In seconds: of each part, and how far a step of it goes. Ten milliseconds are deliberate.
constexpr double kUnits[] = {3600, 60, 1, 0.001}, kIncrements[] = {3600, 60, 1, 0.01};

} // namespace

TimeField::Parts TimeField::parseTimeFromTimeInval(double seconds) {
    const QStringList printed = QString::asprintf("%0.3f", std::max(0.0, seconds)).split(QLatin1Char('.'));
    const int whole = printed[0].toInt();
    return {whole / 3600, whole % 3600 / 60, whole % 60, printed[1].toInt()};
}

QString TimeField::stringHour(int number) { return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0')); }

QString TimeField::stringMS(int number) { return QStringLiteral("%1").arg(number, 3, 10, QLatin1Char('0')); }

QString TimeField::timeStringFormat(double seconds, const QString &format) {
    const Parts parts = parseTimeFromTimeInval(seconds);
    const QStringList named = format.split(QLatin1Char('-'));
    QString text;
    const struct { const char *name, *before; } known[] = {{"hh", ""}, {"mm", ":"}, {"ss", ":"}, {"sss", "."}};
    for (std::size_t part = 0; part < parts.size(); ++part)
        if (named.contains(QLatin1String(known[part].name)))
            text += QLatin1String(known[part].before) + stringHour(parts[part]);
    return text;
}

QString TimeField::wholeText(double seconds) {
    return timeStringFormat(seconds, QStringLiteral("hh-mm-ss")) + QLatin1Char('.')
           + stringMS(parseTimeFromTimeInval(seconds)[Millisecond]);
}

void TimeField::setTime(double seconds, double MinValue, double MaxValue) {
    mTime = seconds;
    mLeast = MinValue;
    mMost = MaxValue;
}

double TimeField::increment() const { return mFocusOnIndex == None ? 0 : kIncrements[mFocusOnIndex]; }

int TimeField::largest(Part part) { return part == Millisecond ? 999 : part == Hour ? 99 : 59; }

QString TimeField::text(Part part) const {
    const int number = parseTimeFromTimeInval(mTime)[static_cast<std::size_t>(part)];
    return part == Millisecond ? stringMS(number) : stringHour(number);
}

bool TimeField::change(double seconds) {
    const double rounded = std::round(seconds * 1000) / 1000; // Sums of milliseconds stay such.
    return std::exchange(mTime, rounded) != rounded;
}

bool TimeField::step(int direction) {
    if (mFocusOnIndex == None)
        mFocusOnIndex = Second;
    const double wanted = mTime + direction * increment();
    return wanted >= 0 && press(direction);
}

bool TimeField::press(int direction) {
    return mFocusOnIndex != None
           && change(std::clamp(mTime + direction * increment(), mLeast, std::max(mLeast, mMost)));
}

bool TimeField::type(Part part, int number) {
    const int current = parseTimeFromTimeInval(mTime)[static_cast<std::size_t>(part)];
    return change(mTime + kUnits[part] * (std::max(0, number) - current));
}

} // namespace cantorel
