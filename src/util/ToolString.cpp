#include "util/ToolString.h"

#include "platform/foundation/SearchPaths.h"
#include "util/RegularExpression.h"
#include "util/ToolFile.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QLocale>
#include <QUrl>
#include <QUuid>

#include <unicode/smpdtfmt.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace cantorel {

QString ToolString::getTempDir() { return foundation::searchPath(foundation::SearchPath::Caches); }

QString ToolString::getGUID() { return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper(); }

QString ToolString::getUniqeNameInTempDirWithExtenionName(const QString &ext) {
    return QStringLiteral("%1/%2.%3").arg(getTempDir(), getGUID(), ext);
}

QString ToolString::renameFromFilePath(const QString &path, int renameCount) {
    const auto parenthesised = [](int n) { return QStringLiteral("(%1)").arg(n); };
    QString candidate = path;
    for (int n = renameCount; ToolFile::isFileExistsAtPath(candidate); ++n) {
        QString name = ToolFile::fileNameAtPath(candidate);
        if (n == 0)
            name += parenthesised(1);
        else
            name.replace(parenthesised(n - 1), parenthesised(n));
        const QString ext = ToolFile::fileExtensionAtPath(candidate);
        candidate = QFileInfo(candidate).path() + QLatin1Char('/') + name
                    + (ext.isEmpty() ? QString() : QLatin1Char('.') + ext);
    }
    return candidate;
}

QString ToolString::stringFromDuration(double seconds) {
    if (!(seconds > 0))
        return QStringLiteral("00:00:00");
    const auto whole = static_cast<qint64>(std::min(seconds, 1e15));
    return QString::asprintf("%02lld:%02lld:%02lld", whole / 3600, whole / 60 % 60, whole % 60);
}

int ToolString::secondFromString(const QString &text) {
    const QString whole = text.section(QLatin1Char('.'), 0, 0);
    if (!whole.contains(QLatin1Char(':')))
        return 0;
    const QStringList parts = whole.split(QLatin1Char(':'));
    constexpr double kLargest = std::numeric_limits<int>::max();
    double sum = 0, weight = 1;
    for (auto part = parts.rbegin(); part != parts.rend(); ++part, weight = std::min(weight * 60, kLargest))
        sum += static_cast<double>(leadingInteger(*part)) * weight;
    return static_cast<int>(std::clamp(sum, -kLargest, kLargest));
}

QString ToolString::stringFromDate(const QDateTime &date, const QString &formatterString) {
    if (!date.isValid())
        return {};
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString pattern(reinterpret_cast<const char16_t *>(formatterString.utf16()),
                                     static_cast<int32_t>(formatterString.size()));
    // Names of months and days in the person's language, but digits and a calendar that programs can read.
    icu::Locale locale = icu::Locale::getDefault();
    locale.setKeywordValue("numbers", "latn", status);
    locale.setKeywordValue("calendar", "gregorian", status);
    const icu::SimpleDateFormat format(pattern, locale, status);
    if (U_FAILURE(status))
        return {};
    icu::UnicodeString result;
    format.format(static_cast<UDate>(date.toMSecsSinceEpoch()), result);
    return QString::fromUtf16(result.getBuffer(), result.length());
}

QString ToolString::stringFromDateWithLocalization(const QDateTime &date) {
    return QLocale::system().toString(date, QLocale::LongFormat);
}

QString ToolString::formatSizeFromByte(double bytes, int withDecimalCount) {
    const char *const units[] = {"KB", "MB", "GB", "TB"};
    const int decimals = withDecimalCount >= 1 && withDecimalCount <= 4 ? withDecimalCount : 0;
    int unit = 0;
    double value = bytes / 1000;
    while (value > 1000 && unit < 3) {
        value /= 1000;
        ++unit;
    }
    return QString::asprintf("%4.*f %s", decimals, value, units[unit]);
}

bool ToolString::isEqual(const QString &text, const QString &toString) { return text == toString; }

bool ToolString::isEqualIgnoreCase(const QString &text, const QString &toString) {
    return text.compare(toString, Qt::CaseInsensitive) == 0;
}

bool ToolString::isSuperString(const QString &text, const QString &containsSubString) {
    // Deliberately not in Qt's way: no text contains an empty one.
    return !containsSubString.isEmpty() && text.contains(containsSubString);
}

QString ToolString::replaceString(const QString &text, const QString &fromString, const QString &toString) {
    return fromString.isEmpty() ? text : QString(text).replace(fromString, toString);
}

QString ToolString::trim(const QString &text) { return text.trimmed(); }

QString ToolString::trim(const QString &text, const QString &withCustomCharacterSet) {
    qsizetype begin = 0, end = text.size();
    while (begin < end && withCustomCharacterSet.contains(text[begin]))
        ++begin;
    while (end > begin && withCustomCharacterSet.contains(text[end - 1]))
        --end;
    return text.mid(begin, end - begin);
}

QString ToolString::substring(const QString &text, qsizetype FromInex, qsizetype Length) {
    const qsizetype from = std::clamp<qsizetype>(FromInex, 0, text.size());
    return text.mid(from, std::max<qsizetype>(Length, 0));
}

std::optional<QString> ToolString::regexGetStringFromString(const QString &text, const QString &withRegExpression) {
    return firstMatchOfExpression(text, withRegExpression);
}

QStringList ToolString::regexGetArrayFromString(const QString &text, const QString &withRegExpression) {
    return allMatchesOfExpression(text, withRegExpression);
}

QString ToolString::md5(const QString &text) {
    return QString::fromLatin1(QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Md5).toHex());
}

QString ToolString::base64Encode(const QByteArray &data) { return QString::fromLatin1(data.toBase64()); }

QByteArray ToolString::base64Decode(const QString &text) {
    const auto result = QByteArray::fromBase64Encoding(text.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    return result ? *result : QByteArray();
}

QString ToolString::urlEncode(const QString &text) { return QString::fromLatin1(QUrl::toPercentEncoding(text)); }

bool ToolString::validateEmail(const QString &text) {
    const auto match = firstMatchOfExpression(text, QStringLiteral("[A-Za-z0-9._%+-]+@[A-Za-z0-9.-]+\\.[A-Za-z]{2,}"));
    return match && *match == text;
}

qint64 leadingInteger(const QString &text) {
    qsizetype at = 0;
    while (at < text.size() && text[at].isSpace())
        ++at;
    const bool negative = at < text.size() && text[at] == QLatin1Char('-');
    if (at < text.size() && (negative || text[at] == QLatin1Char('+')))
        ++at;
    // Counted downwards, since the least number has no positive twin.
    constexpr qint64 kLeast = std::numeric_limits<qint64>::min();
    qint64 value = 0;
    for (; at < text.size() && text[at] >= QLatin1Char('0') && text[at] <= QLatin1Char('9'); ++at) {
        const int digit = text[at].unicode() - '0';
        value = value < (kLeast + digit) / 10 ? kLeast : value * 10 - digit;
    }
    if (negative)
        return value;
    return value == kLeast ? std::numeric_limits<qint64>::max() : -value;
}

} // namespace cantorel
