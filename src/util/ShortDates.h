#pragma once

#include <QDate>
#include <QLocale>
#include <QString>

#include <memory>

class QDateTime;

namespace cantorel {

// Dates as short as the days around them allow: today with the time, yesterday by that word, then the day and the
// month, and the year where it is another one. One thread at a time.
class ShortDates {
public:
    explicit ShortDates(const QLocale &locale);
    ~ShortDates();
    ShortDates(ShortDates &&) noexcept;
    ShortDates &operator=(ShortDates &&) noexcept;

    QString text(const QDateTime &date, const QDate &today) const;

private:
    struct Formats;
    std::unique_ptr<Formats> mFormats;
};

} // namespace cantorel
