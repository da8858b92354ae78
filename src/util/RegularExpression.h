#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace cantorel {

// Matches of an ICU regular expression, for the holders of class operations. A pattern that cannot be compiled, and
// one that needs absurdly long, match nothing. Any thread.
std::optional<QString> firstMatchOfExpression(const QString &text, const QString &pattern);
QStringList allMatchesOfExpression(const QString &text, const QString &pattern);

} // namespace cantorel
