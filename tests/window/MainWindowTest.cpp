#include "tests/window/WindowFixture.h"

#include <QAbstractButton>
#include <QLabel>

namespace cantorel {
namespace {

using MainWindow = test::WindowFixture;

TEST_F(MainWindow, RecordsPausesSplitsAndStops) {
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    photograph(window, QStringLiteral("record-idle"));
    click("record");
    ASSERT_TRUE(passUntil([&] { return panel.state() == RecorderState::Recording; }));
    pass(12'000);
    EXPECT_EQ(find<QLabel>("elapsed")->text(), QStringLiteral("00:00:12"));
    photograph(window, QStringLiteral("record-running"));
    click("pause");
    pass(1000);
    EXPECT_EQ(panel.state(), RecorderState::Paused);
    EXPECT_EQ(find<QAbstractButton>("pause")->text(), Lang::btnResume());
    photograph(window, QStringLiteral("record-paused"));
    click("pause");
    pass(1000);
    click("split");
    ASSERT_TRUE(passUntil([&] { return list.items().size() == 2; }));
    pass(3000);
    click("record");
    ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
    EXPECT_EQ(panel.state(), RecorderState::Idle);
    EXPECT_EQ(list.items().size(), 2u);
    photograph(window, QStringLiteral("record-ended"));
}

} // namespace
} // namespace cantorel
