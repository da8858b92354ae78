#include "cli/CommandSession.h"

#include "lang/Lang.h"
#include "platform/foundation/Console.h"

#include <QJsonDocument>

#include <cstdio>

namespace cantorel {

Outcome Outcome::failed(const foundation::Sentence &sentence) { return {1, Lang::english(sentence)}; }

Outcome Outcome::wrongUsage(const foundation::Sentence &sentence) { return {2, Lang::english(sentence)}; }
namespace {

// Values stay what they are: what must not be printed is escaped, as JSON does it with the first 32 already.
QString jsonLine(const QJsonObject &object) {
    const QString json = QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
    const QString printed = foundation::printable(json);
    QString line;
    for (qsizetype i = 0; i < json.size(); ++i)
        line += json[i] == printed[i] ? QString(json[i]) : QString::asprintf("\\u%04x", json[i].unicode());
    return line;
}

} // namespace

void CommandSession::answer(const QJsonObject &object, const QString &text) const {
    printLine(json ? jsonLine(object) : text);
}

void CommandSession::note(const QString &text) const {
    if (!json && !quiet)
        printLine(text);
}

void printLine(const QString &text) {
    const QByteArray line = foundation::printable(text).toUtf8() + '\n';
    std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stdout);
    std::fflush(stdout);
}

bool printedAll() { return std::fflush(stdout) == 0 && std::ferror(stdout) == 0; }

} // namespace cantorel
