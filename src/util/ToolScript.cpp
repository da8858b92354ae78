#include "util/ToolScript.h"

#include "platform/desktop/Services.h"
#include "platform/foundation/Console.h"

namespace cantorel {

bool ToolScript::loadScriptWithSource(const QString &source, QString *error) {
    const auto report = [&](const QString &format, const foundation::Failure &failure) {
        foundation::printToConsole(format.arg(failure.detail) + QLatin1Char('\n'));
        if (error != nullptr)
            *error = failure.detail;
    };
    auto &scripts = desktop::InstalledServices::current().scripts;
    if (source.isEmpty() || !scripts)
        return false;
    if (const auto compiled = scripts->compile(source); !compiled) {
        report(QStringLiteral("compileAndReturnError:\n%1"), compiled.failure());
        return false;
    }
    if (const auto executed = scripts->execute(source); !executed)
        report(QStringLiteral("executeAndReturnError:%1"), executed.failure());
    return true;
}

} // namespace cantorel
