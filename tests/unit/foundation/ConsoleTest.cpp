#include "platform/foundation/Console.h"

#include "platform/foundation/ChildProcess.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

namespace cantorel::foundation {

TEST(Console, AReaderThatGoesAwayEndsNobodyButAChildThatWantsTo) {
    ignoreBrokenPipes();
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const int before = ::dup(STDERR_FILENO);
    ::dup2(ends[1], STDERR_FILENO);
    ::close(ends[1]);
    ::close(ends[0]);
    printToConsole(QStringLiteral("nobody reads this"));
    ::dup2(before, STDERR_FILENO);
    ::close(before);
    const auto child = ChildProcess::run(
        {QStringLiteral("/bin/sh"), {QStringLiteral("-c"), QStringLiteral("kill -PIPE $$; exit 3")}, {}, {}}, {});
    ASSERT_TRUE(child);
    EXPECT_EQ(child.value().ending.signal, SIGPIPE);
}

} // namespace cantorel::foundation
