#include "cli/CommandSession.h"

#include "lang/Lang.h"

#include <QJsonDocument>

#include <cstdio>

namespace cantorel {

Outcome Outcome::failed(const foundation::Sentence &sentence) { return {1, Lang::english(sentence)}; }

Outcome Outcome::wrongUsage(const foundation::Sentence &sentence) { return {2, Lang::english(sentence)}; }

void CommandSession::answer(const QJsonObject &object, const QString &text) const {
    printLine(json ? QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) : text);
}

void CommandSession::note(const QString &text) const {
    if (!json && !quiet)
        printLine(text);
}

void printLine(const QString &text) {
    const QByteArray line = text.toUtf8() + '\n';
    std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stdout);
    std::fflush(stdout);
}

bool printedAll() { return std::fflush(stdout) == 0 && std::ferror(stdout) == 0; }

} // namespace cantorel
