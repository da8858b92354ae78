#include "log/CommLog.h"

#include "log/Log.h"

namespace cantorel {

void CommLog::I(const QString &text) { Log(QStringLiteral("I: ") + text); }

void CommLog::W(const QString &text) { Log(QStringLiteral("W: ") + text); }

void CommLog::E(const QString &text) { Log(QStringLiteral("E: ") + text); }

} // namespace cantorel
