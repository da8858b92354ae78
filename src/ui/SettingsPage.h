#pragma once

#include "ui/Page.h"

#include <array>
#include <functional>
#include <vector>

class QCheckBox;
class QComboBox;
class QLabel;
class QDoubleSpinBox;
class QSpinBox;
class QTabWidget;
class QToolButton;

namespace cantorel::ui {

class HotkeyField;

// The options, in force as soon as they are changed. Owned by the main window.
class SettingsPage : public Page {
    Q_OBJECT

public:
    explicit SettingsPage(QWidget *parent = nullptr);

    // Shows what is stored.
    void showSettings();
    void openRecordingPage();
    // How the desktop says that the keys for start, stop and pause are pressed; empty where it does not.
    void setTriggers(const std::array<QString, 3> &triggers);

Q_SIGNALS:
    // Emitted once the new value is stored.
    void languageChanged();
    void recordingChanged();
    void hotkeysChanged();

private:
    // A choice with a number in the middle of its text, such as "Start a new file every [240] seconds".
    struct NumberedChoice {
        QCheckBox *choice;
        QDoubleSpinBox *number; // of seconds
        QLabel *after;
        QString (*text)();
        bool (*isOn)();
        void (*setOn)(bool);
        double (*value)();
        void (*setValue)(double);
    };

    QWidget *makeGeneral();
    QWidget *makeRecording();
    QWidget *makeHotkeys();
    NumberedChoice &addNumbered(QWidget *page, const char *name, int least, int most);
    void chooseLanguage(const QString &displayName);
    void chooseFolder();
    void showIcons();
    void showTexts();
    void changeEvent(QEvent *event) override;
    void chooseHotkey(std::size_t index, const QString &text);

    QTabWidget *mPages;
    QLabel *mLanguageLabel, *mFormatLabel, *mFolderLabel, *mNumberLabel, *mHotkeyNote;
    QComboBox *mLanguage, *mFormat;
    QToolButton *mFolder;
    QCheckBox *mAutoName, *mSkipSilence, *mEnableHotkeys;
    QSpinBox *mNumber;
    std::vector<NumberedChoice> mNumbered;
    std::array<QLabel *, 3> mHotkeyLabels{};
    std::array<HotkeyField *, 3> mHotkeys{};
};

} // namespace cantorel::ui
