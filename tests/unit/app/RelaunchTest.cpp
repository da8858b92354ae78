#include "app/start/Application.h"
#include "app/start/SignalWatch.h"
#include "platform/foundation/ChildProcess.h"
#include "platform/foundation/Clock.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/PrivateWorld.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <unistd.h>

namespace cantorel {
namespace {

TEST(Relaunch, AShellOpensJustThePathWhateverIsInIt) {
    const QTemporaryDir folder;
    test::storeProgram(folder.filePath("open"), "#!/bin/sh\nprintf '%s|' \"$#\" \"$@\"\n");
    for (const char *path : {"/opt/a b/c", "/opt/\"; touch PWNED; \"", "/opt/$(touch PWNED)", "/opt/`touch PWNED`",
                             "/opt/$HOME/\\", "/opt/\\\"$x", "/opt/'*?'", "/opt/new\nline", "/opt/ümläut & co"}) {
        const auto finished =
            foundation::ChildProcess::run({"/bin/sh",
                                           {"-c", Application::relaunchCommand(0, path)},
                                           folder.path(),
                                           {"PATH=" + folder.path() + ":" + qEnvironmentVariable("PATH")}});
        ASSERT_TRUE(finished.ok());
        EXPECT_EQ(finished.value().output, "1|" + QByteArray(path) + "|");
    }
    EXPECT_FALSE(QFile::exists(folder.filePath("PWNED")));
}

// The application as it is, but for the event loop that goes on and for what it starts.
struct RestartedApplication : Application {
    QString path;
    QString bundlePath() const override { return path; }
    void quit() override {}
};

TEST(Relaunch, TheProgramIsStartedByAShellOfItsOwnThroughTheProductsHelper) {
    SignalWatch::holdBack();
    const QTemporaryDir folder;
    RestartedApplication application;
    application.path = folder.filePath("a \"program\" for $5");
    // It reads by itself: a shell that waits for another program blocks signals for a moment.
    test::storeProgram(application.path,
                       "#!/bin/sh\ncd '" + folder.path().toUtf8()
                           + "'\nfor file in stat status; do while read -r line; do echo \"$line\"; done "
                             "</proc/$$/$file; done >part && mv part whole\n");
    ASSERT_TRUE(application.relaunchAfterDelay(0).ok());
    const QString told = folder.filePath("whole");
    ASSERT_TRUE(test::eventually([&] { return QFile::exists(told); }));
    const QByteArray text = test::contents(told);
    const QList<QByteArray> fields = text.mid(text.indexOf(") ") + 2).split(' '); // behind the name
    EXPECT_NE(fields.value(3).toInt(), static_cast<int>(getsid(0)));
    EXPECT_TRUE(text.contains("SigBlk:\t0000000000000000\n")) << "signals reach it";
}

} // namespace
} // namespace cantorel
