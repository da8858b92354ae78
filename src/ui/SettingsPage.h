#pragma once

#include "platform/foundation/Sentence.h"
#include "ui/Page.h"

#include <array>
#include <vector>

class QBoxLayout;
class QButtonGroup;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QStackedWidget;
class QToolButton;

namespace cantorel {
class OwnSongs;
}

namespace cantorel::ui {

class CardRow;
class HotkeyField;
class RowCard;

// The options, in force as soon as they are changed: a list of pages, and cards of rows on each. Owned by the main
// window.
class SettingsPage : public Page {
    Q_OBJECT

public:
    // songs: outlives it.
    explicit SettingsPage(OwnSongs &songs, QWidget *parent = nullptr);

    // Shows what is stored.
    void showSettings();
    void openRecordingPage();
    // How the desktop says that the keys for start, stop and pause are pressed; empty where it does not.
    void setTriggers(const std::array<QString, 3> &triggers);
    // Why a key does not work.
    void setHotkeyTrouble(const foundation::Sentence &sentence);
    void turn(int step) override;
    void begin() override;

Q_SIGNALS:
    // Emitted once the new value is stored.
    void languageChanged();
    void recordingChanged();
    void hotkeysChanged();

private:
    // A switch with a number of seconds that shows only while it is on.
    struct NumberedChoice {
        CardRow *row;
        QCheckBox *choice;
        QDoubleSpinBox *number;
        QString (*text)();
        bool (*isOn)();
        void (*setOn)(bool);
        double (*value)();
        void (*setValue)(double);
    };

    void addPage(std::initializer_list<QWidget *> parts);
    QLabel *heading();
    RowCard *card();
    QCheckBox *choice(CardRow &row, const char *objectName);
    void makeGeneral();
    void makeRecording();
    void makeHotkeys();
    RowCard *makeSongs();
    // A folder whose songs are known, with a way to take it out.
    void addSongFolder();
    void changeSongFolders(const QStringList &folders);
    void showSongs();
    NumberedChoice &addNumbered(RowCard &card, const char *name, int most);
    void chooseLanguage(const QString &displayName);
    void chooseFolder();
    void chooseHotkey(std::size_t index, const QString &text);
    void showNextName();
    void fit();
    void showIcons() final;
    void showTexts() final;
    void resizeEvent(QResizeEvent *event) override;

    OwnSongs &mSongs;
    QWidget *mList; // of the pages
    QBoxLayout *mBeside, *mListLayout;
    QStackedWidget *mPages;
    QButtonGroup *mChosen;
    std::vector<RowCard *> mCards;
    std::vector<QBoxLayout *> mColumns; // of the pages
    QLabel *mFiles, *mSilence, *mHotkeyNote;
    CardRow *mLanguageRow = nullptr, *mFormatRow = nullptr, *mFolderRow = nullptr, *mNameRow = nullptr,
            *mSkipRow = nullptr, *mHotkeysRow = nullptr, *mIdentifyRow = nullptr, *mKeyRow = nullptr;
    QComboBox *mLanguage, *mFormat;
    QToolButton *mFolder;
    QCheckBox *mAutoName = nullptr, *mSkipSilence = nullptr, *mIdentify = nullptr, *mEnableHotkeys = nullptr;
    QLineEdit *mKey = nullptr;
    RowCard *mSongsCard = nullptr;
    CardRow *mOwnSongsRow = nullptr, *mKnownRow = nullptr;
    QCheckBox *mOwnSongs = nullptr;
    QPushButton *mAddFolder = nullptr, *mForget = nullptr;
    struct SongFolder {
        CardRow *row;
        QPushButton *remove;
    };
    std::vector<SongFolder> mSongFolders; // as many as there were at once
    QSpinBox *mNumber;
    std::vector<NumberedChoice> mNumbered;
    std::array<CardRow *, 3> mHotkeyRows{};
    std::array<HotkeyField *, 3> mHotkeys{};
    std::array<QString, 3> mTriggers;
};

} // namespace cantorel::ui
