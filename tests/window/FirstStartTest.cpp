#include "tests/unit/app/AppFixture.h"
#include "tests/window/WindowFixture.h"
#include "ui/WindowFace.h"
#include "util/tools/Tools.h"

#include <QLabel>

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

TEST_F(FirstStart, OneSheetInstallsTheDeviceAndThenNothingStandsInTheWay) {
    EXPECT_EQ(sheet(), Tools::fillTextMarkers(Lang::commErrorNoVirtualSoundCard()));
    photograph(window, "first-start");
    answer(Lang::btnYes());
    EXPECT_TRUE(world.virtualInstalled);
    background.runAll();
    pass(50);
    EXPECT_EQ(sheet(), Tools::fillTextMarkers(Lang::commInstalledSuccess() + '.' + Lang::commNeedRelaunch()));
    EXPECT_FALSE(sheet().contains("..")) << "two sentences with a full stop between them";
    photograph(*window.findChild<QMessageBox *>(), "first-start-installed");
    answer(Lang::btnYes());
    EXPECT_TRUE(calls.made.contains("quit"));
    // The program that starts again.
    window.show();
    delegate.applicationDidFinishLaunching();
    pass(3000);
    EXPECT_EQ(sheet(), QString());
    record();
}

TEST_F(FirstStart, WhoDoesNotWantItIsToldWhatToDoAndRecordsTheMicrophone) {
    answer(Lang::btnNo());
    EXPECT_EQ(sheet(), QString());
    click("record");
    pass(500);
    EXPECT_EQ(panel.state(), RecorderState::Idle);
    EXPECT_TRUE(find<QLabel>("sentence")->text().contains("virtual device"));
    Lang::ChangeLanguage("Greek"); // the longest words
    window.changeLanguageText();
    window.resize(720, 480);
    pass(50);
    auto *sentence = find<QLabel>("sentence");
    EXPECT_TRUE(sentence->text().contains("εικονική")) << "live";
    EXPECT_GE(sentence->height(), sentence->heightForWidth(sentence->width())) << "whole";
    photograph(window, "first-start-declined");
    QTest::mouseClick(find<QAbstractButton>("source1"), Qt::LeftButton);
    record();
    EXPECT_EQ(find<QLabel>("sentence")->text(), QString());
}

} // namespace
} // namespace cantorel
