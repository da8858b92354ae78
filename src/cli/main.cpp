// The command line's entry point and composition root.

#include "app/start/DesktopPictures.h"
#include "app/start/DesktopServices.h"
#include "cli/CommandTable.h"
#include "cli/TerminalAsker.h"
#include "log/Log.h"
#include "platform/foundation/Console.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaultFunctions.h"

#include <QCoreApplication>

int main(int argc, char **argv) {
    using namespace cantorel;
    foundation::ignoreBrokenPipes();
    QCoreApplication application(argc, argv);
    if (application.arguments().value(1) == QStringLiteral("__complete")) { // a shell asks, at each press of Tab
        printProposals(application.arguments().mid(2), allCommands());
        return 0;
    }
    LogFileCheck(QString::fromLatin1(kApplicationLogName));
    AppSettings::initSettingInNeed();
    UserDefaultInit();
    TerminalAsker asker;
    const InstalledAsker installedAsker(asker);
    const desktop::InstalledServices installedServices(desktopServices());
    const media::InstalledPictureSources installedPictures(desktopPictures());

    return runCommandLine(application.arguments().mid(1), allCommands());
}
