#include "app/Hardware.h"
#include "log/Log.h"
#include "recording/RecordingJournal.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/PrivateWorld.h"
#include "tests/support/Unfinished.h"

#include <QDir>
#include <QProcess>

#include <gtest/gtest.h>

namespace cantorel::test {
namespace {

QByteArray logOf() {
    QFile file(LogFilePath(QString::fromLatin1(kApplicationLogName)));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

struct ProgramTest : ::testing::Test {
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

TEST_F(ProgramTest, WhatACrashLeftIsAskedAboutAndNotTouchedBefore) {
    const QString state = Hardware::stateFolder(), left = QDir::homePath() + QStringLiteral("/left.m4a");
    testing::unfinished(left);
    const QByteArray before = testing::contents(left);
    ASSERT_TRUE(RecordingJournal(state).claim()) << "makes the folder";
    ASSERT_TRUE(RecordingJournal(state).begin(left));
    EXPECT_EQ(endBySignal({"--backend=embedded"}, "RegisterHotkey -> "), 0);
    EXPECT_EQ(testing::contents(left), before);
    EXPECT_EQ(RecordingJournal(state).leftovers().size(), 1u);
}

TEST_F(ProgramTest, TheEndOfALogInEndsAStartWithoutASoundServerToo) {
    EXPECT_EQ(endBySignal({}, "event -> main -> main"), 1);
}

} // namespace
} // namespace cantorel::test
