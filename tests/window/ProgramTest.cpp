#include "log/Log.h"
#include "tests/support/PrivateWorld.h"

#include <QFile>
#include <QProcess>

#include <gtest/gtest.h>

namespace cantorel::test {
namespace {

QByteArray logOf() {
    QFile file(LogFilePath(QString::fromLatin1(kApplicationLogName)));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

struct ProgramTest : testing::Test {
    ProgramTest() { qputenv("CANTOREL_DEBUG", "1"); } // nothing is asked of the maker
    int endBySignal(const QStringList &arguments, const QByteArray &logged) {
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program.start(QStringLiteral(CANTOREL_PROGRAM), arguments);
        EXPECT_TRUE(eventually([&] { return logOf().contains(logged); }, 30'000)) << logOf().toStdString();
        program.terminate();
        EXPECT_TRUE(program.waitForFinished());
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
        return program.exitCode();
    }
    QProcess program;
};

TEST_F(ProgramTest, TheEndOfALogInEndsTheWindowInOrder) {
    EXPECT_EQ(endBySignal({"--backend=embedded"}, "RegisterHotkey -> "), 0);
}

TEST_F(ProgramTest, TheEndOfALogInEndsAStartWithoutASoundServerToo) {
    EXPECT_EQ(endBySignal({}, "event -> main -> main"), 1);
}

} // namespace
} // namespace cantorel::test
