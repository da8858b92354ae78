#include "log/Log.h"

#include "log/CommLog.h"
#include "log/GuardedAction.h"
#include "platform/foundation/SearchPaths.h"
#include "tests/support/OrdinaryFile.h"

#include <QDir>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

namespace cantorel {
namespace {

const QString kName = kApplicationLogName;

QString logged() { return test::contents(LogFilePath(kName)); }

void makeLog(qint64 bytes) {
    QDir().mkpath(foundation::searchPath(foundation::SearchPath::Caches));
    test::store(LogFilePath(kName), QByteArray(bytes, 'x'));
}

TEST(Log, TheFileHasTheExtensionLogWhateverItsName) {
    const QString caches = foundation::searchPath(foundation::SearchPath::Caches);
    EXPECT_EQ(LogFilePath("app.txt"), caches + "/app.log");
    EXPECT_EQ(LogFilePath(kName), caches + "/tessolar-cantorel-log.log");
}

TEST(Log, OneMebibyteIsKeptAndOneByteMoreIsEmptied) {
    makeLog(1'048'576);
    LogFileCheck(kName);
    EXPECT_EQ(logged().size(), 1'048'576);
    makeLog(1'048'577);
    LogFileCheck(kName);
    EXPECT_EQ(logged(), QString());
}

TEST(Log, NothingIsWrittenBeforeTheFileIsChosen) {
    Log("early");
    EXPECT_EQ(GetLogFilePath(), QString());
    LogFileCheck(kName);
    EXPECT_EQ(logged(), QString());
    EXPECT_EQ(GetLogFilePath(), LogFilePath(kName));
    EXPECT_EQ(QFile(GetLogFilePath()).permissions() & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
}

TEST(Log, EachCallWritesOneStampBeforeTheMessageAsItIs) {
    LogFileCheck(kName);
    LogStart();
    Log("50% of %1\nsecond line");
    CommLog::W("careful");
    const QRegularExpression shape(
        QStringLiteral("^\n=+[^=]+=+\n"
                       "\\[\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\] 50% of %1\nsecond line\n"
                       "\\[[^]]+\\] W: careful\n$"));
    EXPECT_TRUE(shape.match(logged()).hasMatch()) << logged().toStdString();
}

TEST(Log, AnErrorWithoutAReasonStillHasAllFiveLines) {
    LogFileCheck(kName);
    LogError({"Files", -7, {}, "no %2 such", {}});
    EXPECT_TRUE(logged().endsWith(
        "*NSError*\n  domain:Files\n  code:-7\n  userInfo:\n  description:no %2 such\n  resaon:\n\n"));
}

TEST(Log, AGuardedActionEndsAtItsExceptionAndLogsIt) {
    LogFileCheck(kName);
    EXPECT_TRUE(guarded("fine", [] {}));
    EXPECT_FALSE(guarded("tick", [] { throw std::runtime_error("lost"); }));
    EXPECT_FALSE(guarded("tick", [] { throw 7; }));
    EXPECT_TRUE(logged().contains("*NSException*\n std::runtime_error -> lost\n"));
    EXPECT_TRUE(logged().contains("*NSException*\n tick -> unknown exception\n"));
}

TEST(Log, LinesOfSeveralThreadsAreNeverSplit) {
    LogFileCheck(kName);
    constexpr int kThreads = 4, kLines = 200;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([t] {
            for (int i = 0; i < kLines; ++i)
                Log(QStringLiteral("<%1>").arg(QString(100, QLatin1Char(static_cast<char>('a' + t)))));
        });
    for (auto &thread : threads)
        thread.join();
    const QStringList lines = logged().split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), kThreads * kLines);
    const QRegularExpression whole("^\\[[^]]+\\] <(a{100}|b{100}|c{100}|d{100})>$");
    for (const QString &line : lines)
        ASSERT_TRUE(whole.match(line).hasMatch()) << line.toStdString();
}

} // namespace
} // namespace cantorel
