#include "lang/Lang.h"
#include "lang/LangTable.h"

#include <QHash>
#include <QRegularExpression>

#include <vector>

// Finds a sentence of the core by its English text: what stands in it at the markers of the table is taken over into
// the text of the language in force.

namespace cantorel {

namespace {

// A sentence that gives another one as its reason.
const QString kReason = QStringLiteral("[#Reason#]");

struct Pattern {
    QString key;
    QRegularExpression english;
    QStringList markers; // in the order of their first places
};

Pattern patternOf(const TextRow &row) {
    static const QRegularExpression marker(QStringLiteral("\\[#\\w+#\\]"));
    const QString text = QString::fromUtf8(row.builtIn);
    Pattern pattern{QString::fromLatin1(row.key), {}, {}};
    QString expression;
    qsizetype done = 0;
    for (const auto &found : marker.globalMatch(text)) {
        expression += QRegularExpression::escape(text.mid(done, found.capturedStart() - done));
        const qsizetype known = pattern.markers.indexOf(found.captured());
        if (known < 0)
            pattern.markers.append(found.captured());
        expression += known < 0 ? QStringLiteral("(.+?)") : QStringLiteral("\\g{%1}").arg(known + 1);
        done = found.capturedEnd();
    }
    expression += QRegularExpression::escape(text.mid(done));
    pattern.english = QRegularExpression(QRegularExpression::anchoredPattern(expression),
                                         QRegularExpression::DotMatchesEverythingOption); // Names may hold line feeds.
    return pattern;
}

// Made when something is said for the first time.
const std::vector<Pattern> &patterns() {
    static const std::vector<Pattern> all = [] {
        std::vector<Pattern> made;
        for (const TextRow &row : langtexts::kSentence.rows)
            made.push_back(patternOf(row));
        return made;
    }();
    return all;
}

} // namespace

QString Lang::sentence(const QString &english) {
    if (english.isEmpty())
        return english;
    for (const Pattern &pattern : patterns()) {
        const auto match = pattern.english.match(english);
        if (!match.hasMatch())
            continue;
        const QString translated = text(pattern.key);
        if (translated.isEmpty())
            return english;
        QHash<QString, QString> values;
        for (qsizetype i = 0; i < pattern.markers.size(); ++i) {
            const QString value = match.captured(static_cast<int>(i) + 1);
            values.insert(pattern.markers[i], pattern.markers[i] == kReason ? sentence(value) : value);
        }
        // In one go: a name may look like a marker.
        static const QRegularExpression marker(QStringLiteral("\\[#\\w+#\\]"));
        QString filled;
        qsizetype done = 0;
        for (const auto &found : marker.globalMatch(translated)) {
            filled += translated.mid(done, found.capturedStart() - done) + values.value(found.captured());
            done = found.capturedEnd();
        }
        return filled + translated.mid(done);
    }
    return english;
}

} // namespace cantorel
