#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <optional>

namespace cantorel {

// Class operations on texts, dates, sizes and temporary names. Stateless; any thread.
class ToolString {
public:
    ToolString() = delete;

    // The user's caches folder, a text that is unique in the world, and a path made of both with the extension.
    static QString getTempDir();
    static QString getGUID();
    static QString getUniqeNameInTempDirWithExtenionName(const QString &ext); // Spelling is fixed.

    // The path if it is free, else with "(1)", "(2)", ... at the end of its name. Called with renameCount 0; then every
    // "(n-1)" in the name becomes "(n)", not only the one at its end.
    static QString renameFromFilePath(const QString &path, int renameCount);

    // "hh:mm:ss" of whole seconds; "00:00:00" for what is not above 0.
    static QString stringFromDuration(double seconds);

    // Seconds of "[[hh:]mm:]ss[.fraction]"; deliberately 0 for a bare number without a colon.
    static int secondFromString(const QString &text);

    // The local date by a Unicode date pattern, in which "YYYY" is the week year. Empty for an invalid date.
    static QString stringFromDate(const QDateTime &date, const QString &formatterString);
    // The date as people of the user's country write it.
    static QString stringFromDateWithLocalization(const QDateTime &date);

    // Decimal units from "KB" to "TB"; decimals 1 to 4, any other count means none.
    static QString formatSizeFromByte(double bytes, int withDecimalCount = 0);

    static bool isEqual(const QString &text, const QString &toString);
    static bool isEqualIgnoreCase(const QString &text, const QString &toString);
    static bool isSuperString(const QString &text, const QString &containsSubString);
    static QString replaceString(const QString &text, const QString &fromString, const QString &toString);
    static QString trim(const QString &text);
    static QString trim(const QString &text, const QString &withCustomCharacterSet);
    // Clamped to the text.
    static QString substring(const QString &text, qsizetype FromInex, qsizetype Length); // Spelling is fixed.

    // The first match of an ICU regular expression, or none; all matches in order.
    static std::optional<QString> regexGetStringFromString(const QString &text, const QString &withRegExpression);
    static QStringList regexGetArrayFromString(const QString &text, const QString &withRegExpression);

    // Lower-case hexadecimal digest of the UTF-8 bytes.
    static QString md5(const QString &text);
    static QString base64Encode(const QByteArray &data);
    // Empty when the text is not base64.
    static QByteArray base64Decode(const QString &text);
    // All but letters, digits and "-._~" as %XX of UTF-8.
    static QString urlEncode(const QString &text);
    static bool validateEmail(const QString &text);
};

// The whole number at the start of a text as the platform reads it: blanks, a sign, digits; 0 when there are none,
// the nearest number when it does not fit.
qint64 leadingInteger(const QString &text);

} // namespace cantorel
