#include "platform/desktop/ShellScriptHost.h"

#include "lang/Lang.h"
#include "tests/support/OrdinaryFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>

namespace cantorel::desktop {
namespace {

TEST(ShellScriptHost, ATextThatIsNoScriptDoesNotCompileAndIsNotRun) {
    ShellScriptHost host;
    const QTemporaryDir folder;
    const QString mark = folder.filePath("mark");
    const auto compiled = host.compile(QStringLiteral("touch %1; if true; then").arg(mark));
    ASSERT_FALSE(compiled.ok());
    EXPECT_TRUE(compiled.failure().detail.contains("yntax error"));
    EXPECT_TRUE(host.compile(QStringLiteral("touch %1").arg(mark)).ok());
    EXPECT_TRUE(host.compile("tell application \"Finder\" to shut down").ok());
    EXPECT_FALSE(QFile::exists(mark));
}

TEST(ShellScriptHost, ExecutingAnswersTheOutputOrHowItFailed) {
    ShellScriptHost host;
    EXPECT_EQ(host.execute("echo \"$#\"; echo two >&2").value(), "0\ntwo\n");
    const auto failed = host.execute("echo why; exit 3");
    ASSERT_FALSE(failed.ok());
    EXPECT_EQ(failed.failure().detail, "why\n(status 3)");
    EXPECT_EQ(Lang::english(failed.failure().sentence), "why");
    EXPECT_EQ(host.execute("exit 3").failure().sentence, QStringLiteral("A script failed: status 3."));
}

TEST(ShellScriptHost, AScriptThatHangsIsEnded) {
    ShellScriptHost host(std::chrono::milliseconds(100));
    const auto ended = host.execute("exec sleep 60");
    ASSERT_FALSE(ended.ok());
    EXPECT_TRUE(ended.failure().detail.contains("too long"));
}

TEST(ShellScriptHost, ThePreludeShutsDownThroughLogin1AndRefusesWhatItDoesNotKnow) {
    const QTemporaryDir folder;
    test::storeProgram(folder.filePath("dbus-send"), "#!/bin/sh\necho \"$@\"\n");
    qputenv("PATH", (folder.path() + ':').toUtf8() + qgetenv("PATH"));
    ShellScriptHost host;
    const auto shutDown = host.execute("tell application \"Finder\" to shut down");
    ASSERT_TRUE(shutDown.ok());
    EXPECT_TRUE(shutDown.value().contains("org.freedesktop.login1.Manager.PowerOff boolean:true"));
    EXPECT_FALSE(host.execute("tell application \"Finder\" to dance").ok());
}

TEST(ShellScriptHost, OpenIsTheProductsOwnAndHandsFilesToTheDesktop) {
    const QTemporaryDir folder;
    test::storeProgram(folder.filePath("open"), "#!/bin/sh\necho another open\n");
    test::storeProgram(folder.filePath("xdg-open"), "#!/bin/sh\necho \"desktop opens $1\"\n");
    qputenv("PATH", (folder.path() + ':').toUtf8() + qgetenv("PATH"));
    ShellScriptHost host;
    EXPECT_EQ(host.execute("open '/tmp/a b'").value(), "desktop opens /tmp/a b\n");
}

} // namespace
} // namespace cantorel::desktop
