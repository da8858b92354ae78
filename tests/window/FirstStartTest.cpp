#include "tests/unit/app/AppFixture.h"
#include "tests/window/WindowFixture.h"
#include "ui/WindowFace.h"
#include "util/tools/Tools.h"

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>

namespace cantorel {
namespace {

// A start on a machine without the virtual device, with the real window under the real start.
class FirstStart : public test::WindowFixture {
public:
    FirstStart() : WindowFixture(test::EmbeddedWorld::Virtual::Missing) {
        desktop::InstalledServices::current().scripts = std::make_unique<test::InstallingHost>(world);
        delegate.applicationDidFinishLaunching();
        window.offerLeftovers();
        pass(3000); // It has come to the front by then.
    }
    QString sheet() const {
        const auto sheets = window.findChildren<QMessageBox *>();
        EXPECT_LE(sheets.size(), 1);
        return sheets.isEmpty() ? QString() : sheets.front()->text();
    }
    bool isShown(const char *name) { return find<QWidget>(name)->isVisible(); }
    // From the press of the button to a file in the library, with no question in between.
    void record() {
        click("record");
        ASSERT_TRUE(passUntil([&] { return panel.state() == RecorderState::Recording; }))
            << panel.sentence().toStdString();
        pass(2000);
        click("record");
        ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
        EXPECT_EQ(sheet(), QString());
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
        ASSERT_EQ(list.items().size(), 1u);
        EXPECT_TRUE(QFile::exists(list.items().front()->getFileName()));
    }

    test::Calls calls;
    test::FakeUtils utils{calls};
    test::FakeApplication application{calls};
    test::HeldTasks background{calls};
    ui::WindowFace face{window, window.alerts()};
    AppDelegate delegate{AppDelegate::Parts{.application = application,
                                            .mainWindow = face,
                                            .commonUtils = utils,
                                            .background = background,
                                            .clock = *world.clock,
                                            .refreshRecognition = {}}};
};

TEST_F(FirstStart, OneCardInstallsTheDeviceWithoutAnotherStart) {
    EXPECT_EQ(sheet(), QString()) << "nothing stands in the way";
    EXPECT_FALSE(isShown("source0") || isShown("format") || isShown("advice")) << "said once";
    EXPECT_FALSE(find<QWidget>("deviceOffer")->isAncestorOf(QApplication::focusWidget())) << "nobody has asked for it";
    photograph(window, "first-start");
    click("deviceOffer0");
    EXPECT_TRUE(world.virtualInstalled);
    background.runAll();
    pass(50);
    EXPECT_EQ(find<QLabel>("deviceOfferText")->text(), Lang::windowReadySystem());
    EXPECT_TRUE(isShown("source0"));
    photograph(window, "first-start-installed");
    EXPECT_FALSE(calls.made.contains("quit"));
    record();
    EXPECT_FALSE(isShown("deviceOffer"));
}

TEST_F(FirstStart, RecordsWithTheCardUnanswered) {
    record();
    EXPECT_TRUE(isShown("deviceOffer")) << "asked still";
    click("deviceOffer1");
    EXPECT_EQ(AppSettings::getAudioType(), 1);
    EXPECT_TRUE(find<QAbstractButton>("source1")->isChecked());
}

TEST_F(FirstStart, AFailedInstallLeavesAWayOpen) {
    static_cast<test::InstallingHost &>(*desktop::InstalledServices::current().scripts).fails = true;
    test::FakeAsker told{calls};
    const InstalledAsker installed(told);
    click("deviceOffer0");
    pass(50);
    EXPECT_TRUE(calls.made.contains("told " + Lang::commInstalledFailed()));
    EXPECT_FALSE(isShown("deviceOffer"));
    EXPECT_TRUE(isShown("mend"));
}

TEST_F(FirstStart, WhoClosesItRecordsTheOutputAndIsQuietlyOfferedItAgain) {
    QTest::keyClick(find<QWidget>("record"), Qt::Key_Escape);
    EXPECT_FALSE(isShown("deviceOffer"));
    EXPECT_TRUE(find<QLabel>("advice")->text().contains(QStringLiteral("straight from the output")));
    photograph(window, QStringLiteral("first-start-declined"));
    record();
    QTest::mouseClick(find<QAbstractButton>("source1"), Qt::LeftButton);
    click("resultClose");
    EXPECT_FALSE(isShown("advice")) << "a microphone needs none";
    QTest::mouseClick(find<QAbstractButton>("source2"), Qt::LeftButton);
    QSignalSpy wanted(&window, &ui::MainWindow::virtualDeviceWanted);
    click("mend");
    EXPECT_EQ(wanted.size(), 1);
    delegate.installVirtualDevice();
    pass(50);
    EXPECT_FALSE(isShown("advice")) << "it is there";
}

TEST_F(FirstStart, WithoutASoundServerThePageSaysSoUntilOneComes) {
    click("deviceOfferClose");
    world.backend->loseServer(true);
    pass(50);
    auto *advice = find<QLabel>("advice"), *sentence = find<QLabel>("sentence");
    EXPECT_TRUE(advice->isVisible());
    EXPECT_EQ(find<QPushButton>("mend")->text(), Lang::windowTryAgain());
    click("record");
    pass(500);
    EXPECT_EQ(panel.state(), RecorderState::Idle);
    EXPECT_TRUE(sentence->text().contains(QStringLiteral("No sound server answers")));
    photograph(window, QStringLiteral("no-server"));
    world.backend->loseServer(false);
    Lang::ChangeLanguage(QStringLiteral("Greek")); // the longest words
    window.changeLanguageText();
    window.resize(560, 420);
    pass(50);
    EXPECT_EQ(sentence->text(), QString());
    EXPECT_TRUE(advice->text().contains(QStringLiteral("εικονική"))) << "live";
    EXPECT_TRUE(passUntil([&] { return advice->height() >= advice->heightForWidth(advice->width()); })) << "whole";
    photograph(window, QStringLiteral("unrouted-smallest"));
    record();
}

} // namespace
} // namespace cantorel
