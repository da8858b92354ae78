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

TEST(CommonUtils, APersonWhoAsksIsToldInAnyCaseAndAnswersAreKept) {
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
    UpdateCheck anew(server.url());
    CommonUtils later(anew, background);
    later.updateIsOffered = utils.updateIsOffered;
    later.checkSilent();
    QCoreApplication::processEvents();
    EXPECT_EQ(told, QStringList{"offered 300"});
    EXPECT_EQ(toldBy(&CommonUtils::checkByHand), QStringList{"offered 300"});
    EXPECT_EQ(toldBy(&CommonUtils::checkByHand), QStringList{"offered 300"});
    AppSettings::setUpdateSkipVersionID(300);
    EXPECT_EQ(toldBy(&CommonUtils::checkByHand), QStringList{"latest 300"});
    EXPECT_EQ(server.requests().size(), 4);
}

TEST(CommonUtils, DisposeEndsACheckThatIsUnderWay) {
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
