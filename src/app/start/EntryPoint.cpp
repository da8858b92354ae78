#include "app/start/EntryPoint.h"

#include "lang/Lang.h"
#include "log/GuardedAction.h"
#include "platform/foundation/Console.h"
#include "settings/AppSettings.h"
#include "util/tools/Tools.h"

namespace cantorel {

namespace {

void obey(const QString &argument) {
    for (const QString &piece : argument.split(QLatin1Char('&'))) {
        if (!piece.contains(QLatin1Char('=')))
            continue;
        const QStringList parts = piece.split(QLatin1Char('='));
        foundation::printToConsole(QStringLiteral("**** %1 = %2\n").arg(parts[0], parts[1]));
        if (parts[0] == QStringLiteral("lang"))
            AppSettings::setOnlineLanguage(Lang::GetLangNameFromCode(parts[1]));
    }
}

} // namespace

std::optional<QString> answeredByArguments(const QStringList &arguments) {
    if (arguments.contains(QStringLiteral("--version")))
        return QStringLiteral("cantorel %1\n").arg(AppSettings::appVersion());
    if (arguments.contains(QStringLiteral("--help")) || arguments.contains(QStringLiteral("-h")))
        return QStringLiteral("Usage: cantorel [--backend=embedded] [lang=CODE]\n\n"
                              "Opens the audio recorder; one that runs already is shown.\n\n"
                              "  --backend=embedded  devices in software instead of the sound server\n"
                              "  lang=CODE           the language for texts from the net, such as \"de\"\n"
                              "  --help, --version   answer this and end\n\n"
                              "For scripts and terminals there is cantorel-cli.\n");
    return {};
}

int runMain(const QStringList &arguments, const std::function<int()> &mainLoop) {
    int result = 0;
    (void)guarded("main", [&] { // deliberately 0 after an exception, which is logged
        Tools::log(QStringLiteral("event -> main -> main"));
        for (qsizetype i = 0; i < arguments.size(); ++i) {
            foundation::printToConsole(QStringLiteral("argv[%1] = %2\n").arg(i).arg(arguments[i]));
            obey(arguments[i]);
        }
        result = mainLoop();
    });
    return result;
}

} // namespace cantorel
