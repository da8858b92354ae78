#include "app/CommonUtils.h"

#include "settings/AppSettings.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/PrivateWorld.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace cantorel::test {
namespace {

using Reply = LoopbackServer::Reply;

struct CommonUtilsTest : testing::Test {
    // What becomes of a silent check that meets this answer.
    QStringList offered(const Reply &reply) {
        LoopbackServer server([&](const QByteArray &) { return reply; });
        UpdateCheck updates(server.url());
        PooledBackgroundTasks background;
        CommonUtils utils(updates, background);
        QStringList versions;
        utils.updateIsOffered = [&](const UpdateDescription &update) { versions.append(update.AppVersion); };
        utils.checkSilent();
        utils.checkSilent();
        background.finish();
        QCoreApplication::processEvents();
        return versions;
    }
};

TEST_F(CommonUtilsTest, OnlyANewVersionIsOfferedAndOnlyOnce) {
    EXPECT_EQ(offered(Reply::page("<u><AppVersion>300</AppVersion></u>")), QStringList{"300"});
    EXPECT_TRUE(offered(Reply::page("<u><AppVersion>250</AppVersion></u>")).isEmpty());
    EXPECT_TRUE(offered(Reply::page("")).isEmpty());
    AppSettings::setUpdateSkipVersionID(300);
    EXPECT_TRUE(offered(Reply::page("<u><AppVersion>300</AppVersion></u>")).isEmpty());
}

TEST_F(CommonUtilsTest, DisposeEndsACheckThatIsUnderWay) {
    LoopbackServer server([](const QByteArray &) { return Reply{{}, Reply::Then::Hold}; });
    UpdateCheck updates(server.url(), {.time = std::chrono::hours(1)});
    PooledBackgroundTasks background;
    CommonUtils utils(updates, background);
    utils.checkSilent();
    ASSERT_TRUE(eventually([&] { return !server.requests().isEmpty(); }));
    utils.dispose();
    background.finish();
}

} // namespace
} // namespace cantorel::test
