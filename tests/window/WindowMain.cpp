// The entry point of the window tests: a home and an X server of its own, an application with windows, then the tests.

#include "tests/support/PrivateDisplay.h"
#include "tests/support/TestHome.h"
#include "tests/window/Screen.h"
#include "ui/Accessibility.h"
#include "ui/look/Look.h"

#include <QApplication>

#include <gmock/gmock.h>

int main(int argc, char **argv) {
    const cantorel::test::TestHome home;
    if (!home.isValid())
        return 2;
    testing::InitGoogleMock(&argc, argv);
    // To be listed, the tests need no screen.
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    const cantorel::test::PrivateDisplay display("1600x1200x24");
    if (!display.ready())
        return 2;
    cantorel::test::screenOfThisProcess = &display;
    qputenv("DISPLAY", display.name().toLocal8Bit());
    qputenv("QT_QPA_PLATFORM", "xcb");
    qputenv("FONTCONFIG_FILE", CANTOREL_FONTS);
    cantorel::ui::Look::prepare();
    QApplication application(argc, argv);
    const cantorel::ui::Look look(nullptr);
    cantorel::ui::installAccessibility();
    return RUN_ALL_TESTS();
}
