#include "util/ShortDates.h"

#include <QDateTime>

#include <unicode/dtptngen.h>
#include <unicode/smpdtfmt.h>

namespace cantorel {

struct ShortDates::Formats {
    QLocale locale;
    QString today, yesterday, time;
    std::unique_ptr<icu::DateFormat> day, dayOfYear; // null where the library has no words for dates
};

namespace {

QString text(const icu::DateFormat *format, const QDateTime &date) {
    if (format == nullptr)
        return date.date().toString(Qt::ISODate);
    icu::UnicodeString result;
    format->format(static_cast<UDate>(date.toMSecsSinceEpoch()), result);
    return QString::fromUtf16(result.getBuffer(), result.length());
}

std::unique_ptr<icu::DateFormat> formatOf(const char *parts, const icu::Locale &locale) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::DateTimePatternGenerator> patterns(
        icu::DateTimePatternGenerator::createInstance(locale, status));
    if (U_FAILURE(status))
        return nullptr;
    const icu::UnicodeString pattern = patterns->getBestPattern(icu::UnicodeString(parts), status);
    auto format = std::make_unique<icu::SimpleDateFormat>(pattern, locale, status);
    return U_FAILURE(status) ? nullptr : std::move(format);
}

} // namespace

ShortDates::ShortDates(const QLocale &locale) : mFormats(std::make_unique<Formats>()) {
    const icu::Locale spoken(locale.name().toLatin1().constData());
    mFormats->locale = locale;
    mFormats->day = formatOf("MMMd", spoken);
    mFormats->dayOfYear = formatOf("yMMMd", spoken);
    mFormats->time = locale.timeFormat(QLocale::ShortFormat);
    mFormats->time.replace(QLatin1Char('B'), QLatin1String("AP")); // which Qt would print as it stands
    const std::unique_ptr<icu::DateFormat> relative(
        icu::DateFormat::createDateInstance(icu::DateFormat::kShortRelative, spoken));
    const QDateTime now = QDateTime::currentDateTime();
    // The words stand alone, and come as within a sentence.
    const auto capital = [&](const QString &word) { return locale.toUpper(word.left(1)) + word.mid(1); };
    mFormats->today = capital(cantorel::text(relative.get(), now));
    mFormats->yesterday = capital(cantorel::text(relative.get(), now.addDays(-1)));
}

ShortDates::~ShortDates() = default;
ShortDates::ShortDates(ShortDates &&) noexcept = default;
ShortDates &ShortDates::operator=(ShortDates &&) noexcept = default;

QString ShortDates::text(const QDateTime &date, const QDate &today) const {
    const qint64 days = date.date().daysTo(today);
    if (days == 0)
        return mFormats->today + QLatin1Char(' ') + mFormats->locale.toString(date.time(), mFormats->time);
    if (days == 1)
        return mFormats->yesterday;
    return cantorel::text((date.date().year() == today.year() ? mFormats->day : mFormats->dayOfYear).get(), date);
}

} // namespace cantorel
