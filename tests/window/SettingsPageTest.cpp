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
#include <QScrollArea>
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
    void press(const char *field, Qt::Key key, Qt::KeyboardModifiers modifiers) {
        QTest::keyClick(find<ui::HotkeyField>(field), key, modifiers);
    }
};

TEST_F(Settings, WhatIsChangedIsStoredAtOnceAndShownWhenOpenedAgain) {
    photograph(window, "settings-recording");
    click("splitByInterval");
    EXPECT_TRUE(AppSettings::isAutoSplitEverySeconds());
    auto *interval = find<QDoubleSpinBox>("splitByIntervalNumber");
    EXPECT_TRUE(interval->isVisible());
    interval->setValue(60);
    EXPECT_EQ(AppSettings::autoSplitEverySeconds(), 60);
    QTest::mouseClick(interval->parentWidget(), Qt::LeftButton, {}, {40, 20});
    EXPECT_FALSE(AppSettings::isAutoSplitEverySeconds()) << "by a click on its words";
    EXPECT_FALSE(interval->isVisible());
    find<QDoubleSpinBox>("splitBySilenceNumber")->setValue(3);
    EXPECT_EQ(AppSettings::autoSplitSeconds(), 3000) << "shown in seconds, stored in milliseconds";
    EXPECT_TRUE(find<QCheckBox>("splitBySilence")->isVisible());
    click("skipSilence");
    EXPECT_FALSE(AppSettings::isAutoSkipSilence());
    EXPECT_FALSE(find<QCheckBox>("splitBySilence")->isVisible()) << "it acts only while silence is skipped";
    AppSettings::setAutoSkipSilence(true);
    window.settings().showSettings();
    EXPECT_TRUE(find<QCheckBox>("skipSilence")->isChecked());
}

TEST_F(Settings, OwnSongsAreReadOnceThatIsWantedAndForgotten) {
    const QString one = QDir::homePath() + "/one", two = QDir::homePath() + "/two";
    ASSERT_TRUE(QDir().mkpath(one) && QDir().mkpath(two));
    OwnSongs::setFolders({one, two});
    const auto seen = [&](const char *name) { return find<QWidget>(name)->isVisible(); };
    EXPECT_FALSE(seen("forgetSongs") || songs.isReading());
    click("ownSongs");
    EXPECT_TRUE(AppSettings::isOwnSongs());
    ASSERT_TRUE(passUntil([&] { return !songs.isReading() && QFileInfo::exists(songStorePath()); }));
    EXPECT_TRUE(seen("addSongFolder") && seen("removeSongFolder1"));
    for (QScrollArea *area : window.findChildren<QScrollArea *>())
        if (area->isAncestorOf(find<QWidget>("forgetSongs")))
            area->ensureWidgetVisible(find<QWidget>("removeSongFolder1"));
    photograph(window, "settings-songs");
    click("removeSongFolder0");
    EXPECT_EQ(OwnSongs::folders(), QStringList{two});
    EXPECT_FALSE(seen("removeSongFolder0") || seen("removeSongFolder1")) << "one is left";
    click("forgetSongs");
    EXPECT_FALSE(AppSettings::isOwnSongs() || seen("forgetSongs"));
    ASSERT_TRUE(passUntil([&] { return !QFileInfo::exists(songStorePath()); }));
}

TEST_F(Settings, WhatIsStoredIsShownWhateverItIsAndNotStoredAnew) {
    AppSettings::setAutoSplitSeconds(2500);
    AppSettings::setAutoSplitEverySeconds(100'000);
    AppSettings::setAutoFilterSeconds(0);
    AppSettings::setrecordNameBaseOn(1'000'000);
    window.settings().showSettings();
    std::vector<double> shown{double(find<QSpinBox>("autoNameNumber")->value())};
    for (const char *number : {"splitBySilenceNumber", "splitByIntervalNumber", "saveFilterNumber"})
        shown.push_back(find<QDoubleSpinBox>(number)->value());
    EXPECT_EQ(shown, (std::vector<double>{1'000'000, 2.5, 100'000, 0}));
    EXPECT_EQ((std::vector<int>{AppSettings::autoSplitSeconds(), AppSettings::autoSplitEverySeconds(),
                                AppSettings::autoFilterSeconds(), AppSettings::recordNameBaseOn()}),
              (std::vector<int>{2500, 100'000, 0, 1'000'000}));
}

TEST_F(Settings, AHotKeyIsPressedIntoItsFieldAndEachIsTakenOnce) {
    int told = 0;
    QObject::connect(&window, &ui::MainWindow::hotkeysChanged, &window, [&] { ++told; });
    turnSettingsTo(2);
    photograph(window, "settings-hotkeys");
    press("hotkey0", Qt::Key_R, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_EQ(AppSettings::hotkeyStartRecording(), "ctrl opt r");
    EXPECT_EQ(told, 1);
    press("hotkey1", Qt::Key_R, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_EQ(AppSettings::hotkeyStopRecording(), "ctrl cmd t") << "taken";
    EXPECT_EQ(find<QLabel>("hotkeyNote")->text(), Lang::settingsGeneralHotkeyErrorDuplicate());
    window.showHotkeyTrouble(QStringLiteral("This desktop grants no keys."));
    EXPECT_EQ(find<QLabel>("hotkeyNote")->text(), "This desktop grants no keys.");
    EXPECT_EQ(panel.sentence(), "") << "nothing is wrong with recording";
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
    turnSettingsTo(0);
    auto *language = find<QComboBox>("language");
    ASSERT_EQ(language->count(), 19);
    const auto shown = [this] {
        return QStringList{
            find<QAbstractButton>("source0")->text(), window.settings().findChild<QLabel *>("title")->accessibleName(),
            window.tasks().findChild<QLabel *>("title")->accessibleName(),
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

TEST_F(Settings, UnitsAndFormatsAreNamedAsTheLanguageNamesThem) {
    window.tasks();
    window.changeLanguageText(); // as each start does
    EXPECT_EQ(find<QComboBox>("format")->itemText(1), AppSettings::audioFormats()[1]) << "as fixed";
    for (const auto &[language, hours, seconds, format] :
         {std::tuple("Japanese", " 時間", " 秒", "MP3  - 高音質"), {"Turkish", " sa", " sn", "MP3  - Yüksek kalite"}}) {
        Lang::ChangeLanguage(language);
        window.changeLanguageText();
        EXPECT_EQ(window.tasks().findChild<QSpinBox *>("hours")->suffix(), hours);
        EXPECT_EQ(window.tasks().findChild<QSpinBox *>("seconds")->suffix(), seconds);
        EXPECT_TRUE(panel.timeLeftText().contains(hours)) << panel.timeLeftText().toStdString();
        for (const char *box : {"format", "settingsFormat"})
            EXPECT_EQ(find<QComboBox>(box)->itemText(0), format) << box;
        EXPECT_EQ(find<QComboBox>("format")->currentIndex(), AppSettings::getAudioFormat());
    }
}

} // namespace
} // namespace cantorel
