#include "ui/SettingsPage.h"

#include "lang/Lang.h"
#include "recording/hotkeys/HotKey.h"
#include "settings/AppSettings.h"
#include "tags/identify/OwnSongs.h"
#include "ui/Fields.h"
#include "ui/FileDialogs.h"
#include "ui/HotkeyField.h"
#include "ui/Icons.h"
#include "ui/RowCard.h"
#include "ui/look/Look.h"
#include "util/tools/Tools.h"

#include <QBoxLayout>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QStackedWidget>
#include <QToolButton>

#include <cmath>

namespace cantorel::ui {

namespace {

enum Pages { General, Recording, Hotkeys };
constexpr const char *kIcons[] = {"settings", "record", "keyboard"}; // of the pages

constexpr int kList = 192, kListMargin = 12, kListRow = 40;
constexpr int kNarrow = 600;      // width from which on the list stands beside the page
constexpr int kFolderName = 180;  // width
constexpr int kHotkeyField = 180; // width
constexpr int kSongFolder = 260;  // width of its path

struct HotkeySetting {
    QString (*label)();
    QString (*get)();
    void (*set)(const QString &);
};
constexpr std::array<HotkeySetting, 3> kHotkeys{{
    {Lang::settingsGeneralHotkeyStart, AppSettings::hotkeyStartRecording, AppSettings::setHotkeyStartRecording},
    {Lang::settingsGeneralHotkeyStop, AppSettings::hotkeyStopRecording, AppSettings::setHotkeyStopRecording},
    {Lang::settingsGeneralHotkeyPause, AppSettings::hotkeyPauseRecording, AppSettings::setHotkeyPauseRecording},
}};

// Silence is stored in milliseconds and shown in seconds.
double silenceSeconds() { return AppSettings::autoSplitSeconds() / 1000.0; }
void setSilenceSeconds(double seconds) { AppSettings::setAutoSplitSeconds(qRound(seconds * 1000)); }

template <int (*Get)()> double secondsOf() { return Get(); }
template <void (*Set)(int)> void setSecondsOf(double seconds) { Set(qRound(seconds)); }

} // namespace

SettingsPage::SettingsPage(OwnSongs &songs, QWidget *parent)
    : Page(parent),
      mSongs(songs),
      mList(new QWidget(this)),
      mPages(new QStackedWidget(this)),
      mChosen(new QButtonGroup(this)),
      mFiles(heading()),
      mSilence(heading()),
      mHotkeyNote(new QLabel(this)),
      mLanguage(new QComboBox(this)),
      mFormat(new QComboBox(this)),
      mFolder(new QToolButton(this)),
      mNumber(new QSpinBox(this)) {
    auto *content = new QWidget(this);
    mBeside = new QHBoxLayout(content);
    mBeside->setContentsMargins({});
    mBeside->setSpacing(0);
    mListLayout = new QVBoxLayout(mList);
    mListLayout->setSpacing(measure::kGap / 2);
    mPages->setObjectName(QStringLiteral("pages"));
    makeGeneral();
    makeRecording();
    makeHotkeys();
    mListLayout->addStretch();
    mBeside->addWidget(mList);
    mBeside->addWidget(mPages, 1);
    setContent(*content);
    connect(mChosen, &QButtonGroup::idToggled, this, [this](int page, bool isOn) {
        if (isOn)
            mPages->setCurrentIndex(page);
        showIcons();
        fit();
    });
    mChosen->button(General)->setChecked(true);
    fit();
    showIcons();
    showTexts();
    showSettings();
}

QLabel *SettingsPage::heading() {
    auto *label = new QLabel(this);
    label->setFont(Look::font(*this, text_size::kSecondLine, QFont::Bold));
    label->setForegroundRole(QPalette::PlaceholderText);
    label->setWordWrap(true);
    return label;
}

RowCard *SettingsPage::card() { return mCards.emplace_back(new RowCard(this)); }

QCheckBox *SettingsPage::choice(CardRow &row, const char *objectName) {
    auto *made = new QCheckBox(&row);
    made->setObjectName(QString::fromLatin1(objectName));
    row.setSwitch(*made);
    return made;
}

// A page with its parts one below the other, and the button in the list that leads to it.
void SettingsPage::addPage(std::initializer_list<QWidget *> parts) {
    auto *button = new QToolButton(mList);
    button->setCheckable(true);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::StrongFocus);
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    button->setMinimumHeight(Look::tall(*this, kListRow));
    button->setIconSize(QSize(1, 1) * Look::scaled(*this, measure::kIcon));
    button->setObjectName(QStringLiteral("page%1").arg(mPages->count()));
    mChosen->addButton(button, mPages->count());
    mListLayout->addWidget(button);
    auto *page = new QWidget;
    auto *column = mColumns.emplace_back(new QVBoxLayout(page));
    column->setSpacing(measure::kGap);
    for (QWidget *part : parts) {
        if (part == mSilence)
            column->addSpacing(measure::kGap);
        column->addWidget(part);
    }
    column->addStretch();
    auto *scrolled = new QScrollArea(mPages);
    scrolled->setFrameShape(QFrame::NoFrame);
    scrolled->setWidgetResizable(true);
    scrolled->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrolled->setFocusPolicy(Qt::NoFocus);
    scrolled->setWidget(page); // which it owns now
    mPages->addWidget(scrolled);
}

void SettingsPage::makeGeneral() {
    RowCard *general = card();
    mLanguageRow = &general->addRow();
    mLanguageRow->setControl(*mLanguage);
    mLanguage->addItems(Lang::getAllLanguages());
    mLanguage->setObjectName(QStringLiteral("language"));
    connect(mLanguage, &QComboBox::textActivated, this, [this](const QString &name) { chooseLanguage(name); });
    addPage({general});
}

SettingsPage::NumberedChoice &SettingsPage::addNumbered(RowCard &card, const char *name, int most) {
    CardRow &row = card.addRow();
    NumberedChoice made{&row, choice(row, name), new QDoubleSpinBox(&row), {}, {}, {}, {}, {}};
    made.number->setRange(1, most);
    made.number->setObjectName(made.choice->objectName() + QStringLiteral("Number"));
    row.setControl(*made.number);
    return mNumbered.emplace_back(made);
}

void SettingsPage::makeRecording() {
    RowCard *files = card(), *silent = card(), *music = card();
    mFormat->setObjectName(QStringLiteral("settingsFormat"));
    mFormatRow = &files->addRow();
    mFormatRow->setControl(*mFormat);
    mFolder->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    mFolder->setFocusPolicy(Qt::StrongFocus);
    mFolder->setObjectName(QStringLiteral("settingsFolder"));
    mFolderRow = &files->addRow();
    mFolderRow->setControl(*mFolder);
    mNumber->setRange(1, 999'999);
    mNumber->setObjectName(QStringLiteral("autoNameNumber"));
    mNameRow = &files->addRow();
    mAutoName = choice(*mNameRow, "autoName");
    mNameRow->setControl(*mNumber);
    mSkipRow = &silent->addRow();
    mSkipSilence = choice(*mSkipRow, "skipSilence");

    // Reserved, since references to the elements are taken.
    mNumbered.reserve(3);
    NumberedChoice &silence = addNumbered(*silent, "splitBySilence", 3600);
    silence.text = Lang::windowNewFileAfterSilence;
    silence.isOn = AppSettings::isAutoSplitAudioFile;
    silence.setOn = AppSettings::setAutoSplitAudioFile;
    silence.value = silenceSeconds;
    silence.setValue = setSilenceSeconds;
    NumberedChoice &interval = addNumbered(*silent, "splitByInterval", 86'400);
    interval.text = Lang::windowNewFileByLength;
    interval.isOn = AppSettings::isAutoSplitEverySeconds;
    interval.setOn = AppSettings::setIsAutoSplitEverySeconds;
    interval.value = secondsOf<AppSettings::autoSplitEverySeconds>;
    interval.setValue = setSecondsOf<AppSettings::setAutoSplitEverySeconds>;
    NumberedChoice &filter = addNumbered(*silent, "saveFilter", 86'400);
    filter.text = Lang::windowDiscardShort;
    filter.isOn = AppSettings::isAutoFilterAudioFile;
    filter.setOn = AppSettings::setAutoFilterAudioFile;
    filter.value = secondsOf<AppSettings::autoFilterSeconds>;
    filter.setValue = setSecondsOf<AppSettings::setAutoFilterSeconds>;
    mIdentifyRow = &music->addRow();
    mIdentify = choice(*mIdentifyRow, "autoIdentify");
    mKeyRow = &music->addRow();
    mKey = new QLineEdit(mKeyRow);
    mKey->setObjectName(QStringLiteral("recognitionKey"));
    mKey->setFixedWidth(Look::scaled(*this, kHotkeyField));
    mKeyRow->setControl(*mKey);
    addPage({mFiles, files, mSilence, silent, music, makeSongs()});
    connect(mIdentify, &QCheckBox::clicked, this, [](bool on) { AppSettings::setAutoIdentifyID3(on); });
    connect(mKey, &QLineEdit::textEdited, this,
            [](const QString &key) { AppSettings::setRecognitionAccess(key.trimmed()); });

    connect(mFormat, &QComboBox::activated, this, [this](int index) {
        AppSettings::setAudioFormat(index);
        showSettings(); // The next name ends otherwise.
        Q_EMIT recordingChanged();
    });
    connect(mFolder, &QToolButton::clicked, this, [this] { chooseFolder(); });
    connect(mAutoName, &QCheckBox::clicked, this, [this](bool on) {
        AppSettings::setIsAutoGenFileName(on);
        showSettings();
        Q_EMIT recordingChanged();
    });
    connect(mNumber, &QSpinBox::valueChanged, this, [this](int value) {
        AppSettings::setrecordNameBaseOn(value);
        showNextName();
        Q_EMIT recordingChanged();
    });
    connect(mSkipSilence, &QCheckBox::clicked, this, [this](bool on) {
        AppSettings::setAutoSkipSilence(on);
        showSettings(); // Splitting by silence depends on it.
    });
    for (const NumberedChoice &numbered : mNumbered) {
        connect(numbered.choice, &QCheckBox::clicked, this, [this, setOn = numbered.setOn](bool on) {
            setOn(on);
            showSettings();
        });
        connect(numbered.number, &QDoubleSpinBox::valueChanged, this,
                [set = numbered.setValue](double value) { set(value); });
    }
}

RowCard *SettingsPage::makeSongs() {
    mSongsCard = card();
    mOwnSongsRow = &mSongsCard->addRow();
    mOwnSongs = choice(*mOwnSongsRow, "ownSongs");
    mKnownRow = &mSongsCard->addRow();
    auto *buttons = new QWidget(mKnownRow);
    auto *row = new QHBoxLayout(buttons);
    row->setContentsMargins({});
    row->setSpacing(measure::kGap);
    mAddFolder = new QPushButton(buttons);
    mAddFolder->setObjectName(QStringLiteral("addSongFolder"));
    mForget = new QPushButton(buttons);
    mForget->setObjectName(QStringLiteral("forgetSongs"));
    row->addWidget(mAddFolder);
    row->addWidget(mForget);
    mKnownRow->setControl(*buttons);
    connect(mOwnSongs, &QCheckBox::clicked, this, [this](bool on) {
        AppSettings::setOwnSongs(on);
        mSongs.update();
    });
    connect(mAddFolder, &QPushButton::clicked, this, [this] {
        ui::chooseFolder(*this, Lang::commSelectFolder(), OwnSongs::folders().constLast(),
                         [this](const QString &folder) {
                             QStringList folders = OwnSongs::folders();
                             folders << QDir::cleanPath(folder);
                             folders.removeDuplicates();
                             changeSongFolders(folders);
                         });
    });
    connect(mForget, &QPushButton::clicked, &mSongs, &OwnSongs::forget);
    connect(&mSongs, &OwnSongs::changed, this, [this] { showSongs(); });
    return mSongsCard;
}

void SettingsPage::addSongFolder() {
    const auto at = static_cast<qsizetype>(mSongFolders.size());
    CardRow &row = mSongsCard->addRow();
    auto *remove = new QPushButton(&row);
    remove->setObjectName(QStringLiteral("removeSongFolder%1").arg(at));
    row.setControl(*remove);
    connect(remove, &QPushButton::clicked, this, [this, at] {
        QStringList folders = OwnSongs::folders();
        folders.removeAt(at);
        changeSongFolders(folders);
    });
    mSongFolders.push_back({&row, remove});
}

void SettingsPage::changeSongFolders(const QStringList &folders) {
    OwnSongs::setFolders(folders);
    mSongs.update();
}

void SettingsPage::showSongs() {
    const bool isOn = AppSettings::isOwnSongs();
    const QString count = mSongs.isReading() ? Lang::windowSongsRead() : Lang::windowSongsKnown();
    mOwnSongs->setChecked(isOn);
    mKnownRow->setVisible(isOn);
    mKnownRow->setTexts(QString(count).replace(QLatin1String("[#Count#]"), QString::number(mSongs.known())),
                        Lang::sentence(mSongs.trouble()));
    const QStringList folders = isOn ? OwnSongs::folders() : QStringList();
    while (std::ssize(mSongFolders) < folders.size())
        addSongFolder();
    for (qsizetype i = 0; i < std::ssize(mSongFolders); ++i) {
        const auto &[row, remove] = mSongFolders[static_cast<std::size_t>(i)];
        const QString folder = QDir::toNativeSeparators(folders.value(i));
        row->setVisible(i < folders.size());
        row->setTexts(row->fontMetrics().elidedText(folder, Qt::ElideMiddle, Look::scaled(*this, kSongFolder)));
        row->setToolTip(folder);
        remove->setText(Lang::btnRemove());
        remove->setVisible(folders.size() > 1); // One is left to read.
    }
    fit();
}

void SettingsPage::makeHotkeys() {
    RowCard *keys = card();
    mHotkeysRow = &keys->addRow();
    mEnableHotkeys = choice(*mHotkeysRow, "enableHotkeys");
    connect(mEnableHotkeys, &QCheckBox::clicked, this, [this](bool on) {
        AppSettings::setEnableHotkeys(on);
        showSettings();
        Q_EMIT hotkeysChanged();
    });
    for (std::size_t i = 0; i < kHotkeys.size(); ++i) {
        mHotkeyRows[i] = &keys->addRow();
        mHotkeys[i] = new HotkeyField(mHotkeyRows[i]);
        mHotkeys[i]->setObjectName(QStringLiteral("hotkey%1").arg(i));
        mHotkeys[i]->setFixedWidth(Look::scaled(*this, kHotkeyField));
        mHotkeyRows[i]->setControl(*mHotkeys[i]);
        connect(mHotkeys[i], &HotkeyField::chosen, this, [this, i](const QString &text) { chooseHotkey(i, text); });
    }
    mHotkeyNote->setWordWrap(true);
    mHotkeyNote->setObjectName(QStringLiteral("hotkeyNote"));
    addPage({keys, mHotkeyNote});
}

void SettingsPage::turn(int step) {
    mChosen->button(qBound(0, mPages->currentIndex() + step, mPages->count() - 1))->setChecked(true);
    begin();
}

void SettingsPage::begin() { mChosen->checkedButton()->setFocus(Qt::OtherFocusReason); }

// Where there is little room the list stands above the page, and the controls below their texts.
void SettingsPage::fit() {
    const bool isNarrow = width() < Look::scaled(*this, kNarrow);
    mBeside->setDirection(isNarrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
    mListLayout->setDirection(isNarrow ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    const int beside = isNarrow ? measure::kNarrowMargin : kListMargin;
    mListLayout->setContentsMargins(beside, isNarrow ? measure::kGap : kListMargin, beside, 0);
    mList->setMinimumWidth(isNarrow ? 0 : Look::scaled(*this, kList));
    const auto show = [this](Qt::ToolButtonStyle style, bool isForChosen) {
        for (QAbstractButton *button : mChosen->buttons())
            if (isForChosen || !button->isChecked())
                static_cast<QToolButton *>(button)->setToolButtonStyle(style);
        mListLayout->invalidate();
    };
    show(isNarrow ? Qt::ToolButtonTextOnly : Qt::ToolButtonTextBesideIcon, true);
    if (isNarrow && mListLayout->minimumSize().width() > width())
        show(Qt::ToolButtonIconOnly, false);
    const int margin = isNarrow ? measure::kNarrowMargin : measure::kMargin;
    for (QBoxLayout *column : mColumns)
        column->setContentsMargins(measure::kNarrowMargin, kListMargin, margin, margin);
    for (RowCard *card : mCards)
        card->setNarrow(isNarrow);
}

void SettingsPage::resizeEvent(QResizeEvent *event) {
    fit();
    Page::resizeEvent(event);
}

void SettingsPage::showIcons() {
    mFolder->setIcon(icon(QStringLiteral("folder"), palette()));
    QPalette chosen = palette();
    chosen.setColor(QPalette::ButtonText, Look::tokens().accent);
    for (QAbstractButton *button : mChosen->buttons()) {
        QFont font = this->font();
        font.setBold(button->isChecked());
        button->setFont(font);
        button->setIcon(
            icon(QString::fromLatin1(kIcons[mChosen->id(button)]), button->isChecked() ? chosen : palette()));
    }
    QPalette red = palette();
    red.setColor(QPalette::WindowText, Look::tokens().red);
    mHotkeyNote->setPalette(red);
}

void SettingsPage::chooseLanguage(const QString &displayName) {
    const QString name = Lang::getLanguageFileName(displayName);
    if (name.isEmpty() || name == AppSettings::appLanguage())
        return;
    AppSettings::setAppLanguage(name);
    Lang::ChangeLanguage(name);
    Q_EMIT languageChanged();
}

void SettingsPage::chooseFolder() {
    ui::chooseFolder(*this, Lang::commSelectFolder(), AppSettings::outputPath(), [this](const QString &folder) {
        AppSettings::setOutputPath(folder);
        showSettings();
        Q_EMIT recordingChanged();
    });
}

void SettingsPage::chooseHotkey(std::size_t index, const QString &text) {
    for (std::size_t i = 0; i < kHotkeys.size(); ++i)
        if (i != index && kHotkeys[i].get() == text) {
            mHotkeyNote->setText(Lang::settingsGeneralHotkeyErrorDuplicate());
            return;
        }
    mHotkeyNote->clear();
    if (kHotkeys[index].get() == text)
        return;
    kHotkeys[index].set(text);
    HotKey::setHotkeyChanged(true);
    showSettings();
    Q_EMIT hotkeysChanged();
}

void SettingsPage::setTriggers(const std::array<QString, 3> &triggers) {
    mTriggers = triggers;
    showTexts();
}

void SettingsPage::setHotkeyTrouble(const foundation::Sentence &sentence) {
    mHotkeyNote->setText(Lang::sentence(sentence));
}

void SettingsPage::openRecordingPage() { mChosen->button(Recording)->setChecked(true); }

void SettingsPage::showSettings() {
    const QString language = AppSettings::appLanguage();
    for (const LanguageInfo &info : Lang::languages())
        if (info.name == language)
            mLanguage->setCurrentText(info.displayName);
    mFormat->setCurrentIndex(AppSettings::getAudioFormat());
    const QString folder = QDir::toNativeSeparators(AppSettings::outputPath()), name = QDir(folder).dirName();
    mFolder->setText(mFolder->fontMetrics().elidedText(name.isEmpty() ? folder : name, Qt::ElideMiddle,
                                                       Look::scaled(*this, kFolderName)));
    mFolder->setToolTip(folder);
    mAutoName->setChecked(AppSettings::isAutoGenFileName());
    showNumber(*mNumber, AppSettings::recordNameBaseOn());
    mNumber->setVisible(mAutoName->isChecked());
    showNextName();
    mSkipSilence->setChecked(AppSettings::isAutoSkipSilence());
    mIdentify->setChecked(AppSettings::isAutoIdentifyID3());
    if (mKey->text().trimmed() != AppSettings::recognitionAccess()) // not while it is typed
        mKey->setText(AppSettings::recognitionAccess());
    showSongs();
    for (const NumberedChoice &numbered : mNumbered) {
        numbered.choice->setChecked(numbered.isOn());
        const double value = numbered.value();
        numbered.number->setDecimals(value == std::floor(value) ? 0 : 3);
        showNumber(*numbered.number, value);
        numbered.number->setVisible(numbered.isOn());
    }
    mNumbered.front().row->setVisible(mSkipSilence->isChecked()); // It acts only while silence is skipped.
    mEnableHotkeys->setChecked(AppSettings::getEnableHotkeys());
    for (std::size_t i = 0; i < kHotkeys.size(); ++i) {
        mHotkeys[i]->setHotkey(kHotkeys[i].get());
        mHotkeyRows[i]->setVisible(mEnableHotkeys->isChecked());
    }
}

void SettingsPage::showNextName() {
    const QString next = QFileInfo(Tools::getAudioNameFromTrack()).completeBaseName();
    mNameRow->setTexts(Lang::settingsRecordAutoName(),
                       AppSettings::isAutoGenFileName()
                           ? Lang::windowNextFile().replace(QLatin1String("[#FileName#]"), next)
                           : QString());
    mNumber->setAccessibleName(Lang::windowFirstNumber());
}

void SettingsPage::showTexts() {
    setTitle(Lang::btnSettings());
    mChosen->button(General)->setText(Lang::settingsGeneralTitle());
    mChosen->button(Recording)->setText(Lang::settingsRecordTitle());
    mChosen->button(Hotkeys)->setText(Lang::settingsGeneralHotkey());
    for (QAbstractButton *button : mChosen->buttons())
        button->setToolTip(button->text());
    fit();
    mFiles->setText(Lang::windowFiles());
    mSilence->setText(Lang::windowSilenceAndLength());
    mLanguageRow->setTexts(Lang::settingsGeneralSetLanguage());
    mFormatRow->setTexts(Lang::commFormat());
    showChoices(*mFormat, Tools::shownAudioFormats());
    mFolderRow->setTexts(Lang::windowOutputFolder());
    showNextName();
    mSkipRow->setTexts(Lang::settingsRecordSkipSilent(), Lang::windowWaitsForSound());
    mIdentifyRow->setTexts(Lang::settingsRecordAutoIdentifyID3(), Lang::windowIdentifySends());
    mKeyRow->setTexts(Lang::windowRecognitionKey());
    mOwnSongsRow->setTexts(Lang::windowOwnSongs(), Lang::windowOwnSongsDoes());
    mAddFolder->setText(Lang::tabPlaylistAddFolder());
    mForget->setText(Lang::windowForgetSongs());
    showSongs();
    for (const NumberedChoice &numbered : mNumbered) {
        numbered.number->setSuffix(QLatin1Char(' ') + Lang::commSeconds());
        numbered.row->setTexts(numbered.text());
    }
    mHotkeysRow->setTexts(Lang::settingsEnableHotkeys());
    for (std::size_t i = 0; i < kHotkeys.size(); ++i) {
        const QString byDesktop = Lang::windowHotkeyByDesktop().replace(QLatin1String("[#Keys#]"), mTriggers[i]);
        mHotkeyRows[i]->setTexts(kHotkeys[i].label(), mTriggers[i].isEmpty() ? QString() : byDesktop);
        mHotkeys[i]->setPlaceholderText(Lang::windowPressKeys());
    }
}

} // namespace cantorel::ui
