#include "ui/SettingsPage.h"

#include "tests/window/WindowFixture.h"
#include "ui/HotkeyField.h"
#include "ui/LibraryTab.h"
#include "ui/TasksPage.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QSpinBox>
#include <QTabWidget>

namespace cantorel {
namespace {

class Settings : public test::WindowFixture {
public:
    Settings() {
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        QApplication::setActiveWindow(&window);
        openSettings();
    }
    void page(int index) { find<QTabWidget>("pages")->setCurrentIndex(index); }
    void press(const char *field, Qt::Key key, Qt::KeyboardModifiers modifiers) {
        QTest::keyClick(find<ui::HotkeyField>(field), key, modifiers);
    }
};

TEST_F(Settings, WhatIsChangedIsStoredAtOnceAndShownWhenOpenedAgain) {
    photograph(window, "settings-recording");
    click("splitByInterval");
    EXPECT_TRUE(AppSettings::isAutoSplitEverySeconds());
    auto *row = find<QCheckBox>("splitByInterval")->parentWidget();
    const auto numbers = row->findChildren<QDoubleSpinBox *>();
    ASSERT_EQ(numbers.size(), 3);
    numbers[1]->setValue(60);
    EXPECT_EQ(AppSettings::autoSplitEverySeconds(), 60);
    numbers[0]->setValue(3);
    EXPECT_EQ(AppSettings::autoSplitSeconds(), 3000) << "shown in seconds, stored in milliseconds";
    EXPECT_TRUE(find<QCheckBox>("splitBySilence")->isEnabled());
    click("skipSilence");
    EXPECT_FALSE(AppSettings::isAutoSkipSilence());
    EXPECT_FALSE(find<QCheckBox>("splitBySilence")->isEnabled()) << "it acts only while silence is skipped";
    AppSettings::setAutoSkipSilence(true);
    window.settings().showSettings();
    EXPECT_TRUE(find<QCheckBox>("skipSilence")->isChecked());
}

TEST_F(Settings, WhatIsStoredIsShownWhateverItIsAndNotStoredAnew) {
    AppSettings::setAutoSplitSeconds(2500);
    AppSettings::setAutoSplitEverySeconds(100'000);
    AppSettings::setAutoFilterSeconds(0);
    AppSettings::setrecordNameBaseOn(1'000'000);
    window.settings().showSettings();
    auto *page = find<QCheckBox>("splitByInterval")->parentWidget();
    std::vector<double> shown{double(page->findChild<QSpinBox *>()->value())};
    for (const QDoubleSpinBox *number : page->findChildren<QDoubleSpinBox *>())
        shown.push_back(number->value());
    EXPECT_EQ(shown, (std::vector<double>{1'000'000, 2.5, 100'000, 0}));
    EXPECT_EQ((std::vector<int>{AppSettings::autoSplitSeconds(), AppSettings::autoSplitEverySeconds(),
                                AppSettings::autoFilterSeconds(), AppSettings::recordNameBaseOn()}),
              (std::vector<int>{2500, 100'000, 0, 1'000'000}));
}

TEST_F(Settings, AHotKeyIsPressedIntoItsFieldAndEachIsTakenOnce) {
    int told = 0;
    QObject::connect(&window, &ui::MainWindow::hotkeysChanged, &window, [&] { ++told; });
    page(2);
    photograph(window, "settings-hotkeys");
    press("hotkey0", Qt::Key_R, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_EQ(AppSettings::hotkeyStartRecording(), "ctrl opt r");
    EXPECT_EQ(told, 1);
    press("hotkey1", Qt::Key_R, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_EQ(AppSettings::hotkeyStopRecording(), "ctrl cmd t") << "taken";
    EXPECT_EQ(find<QLabel>("hotkeyNote")->text(), Lang::settingsGeneralHotkeyErrorDuplicate());
    for (const auto &[key, modifiers] : {std::pair<Qt::Key, Qt::KeyboardModifiers>(Qt::Key_X, Qt::ShiftModifier),
                                         {Qt::Key_X, Qt::NoModifier},
                                         {Qt::Key_1, Qt::ControlModifier}})
        press("hotkey1", key, modifiers);
    EXPECT_EQ(AppSettings::hotkeyStopRecording(), "ctrl cmd t") << "typing is no hot key";
    EXPECT_EQ(told, 1);
}

TEST_F(Settings, TheLanguageChangesEverythingAtOnce) {
    const auto subscription = foundation::NotificationCenter::defaultCenter().subscribe<QString>(
        kNotificationChangeLanguage, [this](const QString &) { window.changeLanguageText(); });
    page(0);
    auto *language = find<QComboBox>("language");
    ASSERT_EQ(language->count(), 19);
    const auto shown = [this] {
        return QStringList{
            find<QAbstractButton>("source0")->text(), window.settings().findChild<QLabel *>("title")->text(),
            window.tasks().findChild<QLabel *>("title")->text(),
            window.library().findChild<QLineEdit *>()->placeholderText(), find<QTabWidget>("tabs")->tabText(1)};
    };
    const QStringList english = shown();
    language->setCurrentText("Deutsch");
    Q_EMIT language->textActivated(language->currentText());
    EXPECT_EQ(AppSettings::appLanguage(), "German");
    for (qsizetype i = 0; i < english.size(); ++i)
        EXPECT_NE(shown()[i], english[i]);
    photograph(window, "settings-german");
}

} // namespace
} // namespace cantorel
