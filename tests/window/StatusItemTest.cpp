#include "tests/support/PrivateBus.h"
#include "tests/window/WindowFixture.h"

#include <QAbstractButton>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QMessageBox>
#include <QProcess>

namespace cantorel {
namespace {

// A desktop with a tray, before there is a window.
struct Desktop {
    Desktop() {
        tray.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        tray.start(QStringLiteral(CANTOREL_TRAY));
        EXPECT_TRUE(tray.waitForReadyRead());
        EXPECT_EQ(tray.readLine(), "ready\n");
    }
    ~Desktop() {
        tray.terminate();
        tray.waitForFinished();
    }
    test::PrivateBus bus;
    QProcess tray;
};

class StatusItemTest : public Desktop, public test::WindowFixture {
public:
    StatusItemTest() {
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        window.library(); // The item comes with what stands behind the first picture.
        EXPECT_TRUE(test::eventually([this] {
            QTest::qWait(10);
            return tray.canReadLine();
        }));
        mItem = QString::fromUtf8(tray.readLine()).trimmed();
    }
    // A click on the item, as the desktop tells it.
    void clickItem() {
        QDBusMessage call =
            QDBusMessage::createMethodCall(mItem, QStringLiteral("/StatusNotifierItem"),
                                           QStringLiteral("org.kde.StatusNotifierItem"), QStringLiteral("Activate"));
        call << 0 << 0;
        auto pending = QDBusConnection::sessionBus().asyncCall(call);
        ASSERT_TRUE(QTest::qWaitFor([&] { return pending.isFinished(); }));
        EXPECT_FALSE(pending.isError()) << pending.error().message().toStdString();
        pass(50);
    }

private:
    QString mItem;
};

TEST_F(StatusItemTest, AClickHidesAndShowsTheWindow) {
    clickItem();
    EXPECT_FALSE(window.isVisible());
    clickItem();
    EXPECT_TRUE(window.isVisible());
}

TEST_F(StatusItemTest, KeepsARecordingInSightWhoseWindowIsClosed) {
    click("record");
    ASSERT_TRUE(passUntil([&] { return panel.state() == RecorderState::Recording; }));
    window.close();
    auto *sheet = find<QMessageBox>("sheet");
    clickItem();
    EXPECT_TRUE(window.isVisible()) << "the question is not hidden";
    QTest::mouseClick(sheet->buttons().constFirst(), Qt::LeftButton);
    pass(50);
    EXPECT_FALSE(window.isVisible());
    EXPECT_TRUE(session.isRecording());
    clickItem();
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(panel.state(), RecorderState::Recording);
}

} // namespace
} // namespace cantorel
