#include "app/start/CommonUtils.h"

#include "settings/AppSettings.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/PrivateWorld.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace cantorel::test {
namespace {

using Reply = LoopbackServer::Reply;

// Tasks that have ended when they have been given.
struct InlineTasks : BackgroundTasks {
    void run(std::function<void()> task) override { task(); }
    void finish() override {}
};

struct CommonUtilsTest : testing::Test {
    // What becomes of a silent check that meets this answer.
    QStringList offered(const Reply &reply) {
        LoopbackServer server([&](const QByteArray &) { return reply; });
        UpdateCheck updates(server.url());
        InlineTasks background;
        CommonUtils utils(updates, background);
        QStringList versions;
        utils.updateIsOffered = [&](const UpdateDescription &update) { versions.append(update.AppVersion); };
        utils.checkSilent();
        utils.checkSilent();
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

TEST_F(CommonUtilsTest, APersonWhoAsksIsToldInAnyCaseAndAnswersAreKept) {
    QByteArray page;
    LoopbackServer server([&](const QByteArray &) { return Reply::page(page); });
    UpdateCheck updates(server.url());
    InlineTasks background;
    CommonUtils utils(updates, background);
    QStringList told;
    utils.updateIsOffered = [&](const UpdateDescription &update) { told.append("offered " + update.AppVersion); };
    utils.nothingIsOffered = [&](const std::optional<UpdateDescription> &update) {
        told.append(update ? "latest " + update->AppVersion : QString("no answer"));
    };
    const auto toldBy = [&](void (CommonUtils::*check)()) {
        told.clear();
        (utils.*check)();
        QCoreApplication::processEvents();
        return told;
    };
    EXPECT_TRUE(toldBy(&CommonUtils::checkSilent).isEmpty()) << "the server has nothing yet";
    EXPECT_EQ(toldBy(&CommonUtils::checkByHand), QStringList{"no answer"});
    page = "<u><AppVersion>300</AppVersion></u>";
    EXPECT_TRUE(toldBy(&CommonUtils::checkSilent).isEmpty()) << "once in a process";
    EXPECT_EQ(toldBy(&CommonUtils::checkByHand), QStringList{"offered 300"});
    EXPECT_EQ(toldBy(&CommonUtils::checkByHand), QStringList{"offered 300"});
    AppSettings::setUpdateSkipVersionID(300);
    EXPECT_EQ(toldBy(&CommonUtils::checkByHand), QStringList{"latest 300"});
    EXPECT_EQ(server.requests().size(), 3);
}

TEST_F(CommonUtilsTest, DisposeEndsACheckThatIsUnderWay) {
    LoopbackServer server([](const QByteArray &) { return Reply{{}, Reply::Then::Hold}; });
    UpdateCheck updates(server.url(), {.time = std::chrono::hours(1)});
    PooledBackgroundTasks background;
    background.begin();
    CommonUtils utils(updates, background);
    utils.checkSilent();
    ASSERT_TRUE(eventually([&] { return !server.requests().isEmpty(); }));
    utils.dispose();
    background.finish();
}

} // namespace
} // namespace cantorel::test
