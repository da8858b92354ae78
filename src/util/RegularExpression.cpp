#include "util/RegularExpression.h"

#include <unicode/regex.h>

#include <memory>

namespace cantorel {

namespace {

constexpr int32_t kStepLimit = 10'000; // of ICU's own unit, some seconds on a slow machine

// Calls listener with each match until it answers false.
template <class Listener> void eachMatch(const QString &text, const QString &pattern, Listener listener) {
    const auto unicode = [](const QString &s) {
        return icu::UnicodeString(reinterpret_cast<const char16_t *>(s.utf16()), static_cast<int32_t>(s.size()));
    };
    const icu::UnicodeString input = unicode(text);
    UErrorCode status = U_ZERO_ERROR;
    icu::RegexMatcher matcher(unicode(pattern), 0, status);
    if (U_FAILURE(status))
        return;
    matcher.setTimeLimit(kStepLimit, status);
    matcher.reset(input);
    while (matcher.find(status) && U_SUCCESS(status)) {
        const auto start = matcher.start(status);
        if (!listener(text.mid(start, matcher.end(status) - start)))
            return;
    }
}

} // namespace

std::optional<QString> firstMatchOfExpression(const QString &text, const QString &pattern) {
    std::optional<QString> result;
    eachMatch(text, pattern, [&](const QString &match) {
        result = match;
        return false;
    });
    return result;
}

QStringList allMatchesOfExpression(const QString &text, const QString &pattern) {
    QStringList result;
    eachMatch(text, pattern, [&](const QString &match) {
        result << match;
        return true;
    });
    return result;
}

} // namespace cantorel
