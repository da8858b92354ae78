#include "ui/SettingsPage.h"

#include "lang/Lang.h"
#include "recording/hotkeys/HotKey.h"
#include "settings/AppSettings.h"
#include "ui/HotkeyField.h"
#include "ui/Icons.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QEvent>
#include <QFileDialog>
#include <QFormLayout>
#include <QLabel>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTabWidget>
#include <QToolButton>

#include <algorithm>
#include <cmath>

namespace cantorel::ui {

namespace {

enum Page { General, Recording, Hotkeys };

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

// Shows what is stored, whatever it is: only what a person changes is stored.
template <class Box, class Number> void showNumber(Box &box, Number value) {
    const QSignalBlocker untold(box);
    box.setRange(std::min(box.minimum(), value), std::max(box.maximum(), value));
    box.setValue(value);
}

} // namespace

SettingsPage::SettingsPage(QWidget *parent)
    : Page(parent),
      mPages(new QTabWidget(this)),
      mLanguageLabel(new QLabel(this)),
      mFormatLabel(new QLabel(this)),
      mFolderLabel(new QLabel(this)),
      mNumberLabel(new QLabel(this)),
      mHotkeyNote(new QLabel(this)),
      mLanguage(new QComboBox(this)),
      mFormat(new QComboBox(this)),
      mFolder(new QToolButton(this)),
      mAutoName(new QCheckBox(this)),
      mSkipSilence(new QCheckBox(this)),
      mEnableHotkeys(new QCheckBox(this)),
      mNumber(new QSpinBox(this)) {
    mPages->setObjectName(QStringLiteral("pages"));
    mPages->addTab(makeGeneral(), QString());
    mPages->addTab(makeRecording(), QString());
    mPages->addTab(makeHotkeys(), QString());
    setContent(*mPages);
    showIcons();
    showTexts();
    showSettings();
}

QWidget *SettingsPage::makeGeneral() {
    auto *page = new QWidget(this);
    auto *form = new QFormLayout(page);
    mLanguage->addItems(Lang::getAllLanguages());
    mLanguage->setObjectName(QStringLiteral("language"));
    mLanguageLabel->setBuddy(mLanguage);
    form->addRow(mLanguageLabel, mLanguage);
    connect(mLanguage, &QComboBox::textActivated, this, [this](const QString &name) { chooseLanguage(name); });
    return page;
}

SettingsPage::NumberedChoice &SettingsPage::addNumbered(QWidget *page, const char *name, int least, int most) {
    auto *row = new QHBoxLayout;
    NumberedChoice made{new QCheckBox(page), new QDoubleSpinBox(page), new QLabel(page), {}, {}, {}, {}, {}};
    made.choice->setObjectName(QString::fromLatin1(name));
    made.number->setRange(least, most);
    row->addWidget(made.choice);
    row->addWidget(made.number);
    row->addWidget(made.after, 1);
    static_cast<QVBoxLayout *>(page->layout())->addLayout(row);
    return mNumbered.emplace_back(made);
}

QWidget *SettingsPage::makeRecording() {
    auto *page = new QWidget(this);
    auto *column = new QVBoxLayout(page);
    auto *form = new QFormLayout;
    mFormat->addItems(AppSettings::audioFormats());
    mFormat->setObjectName(QStringLiteral("settingsFormat"));
    mFormatLabel->setBuddy(mFormat);
    mFolder->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    mFolder->setObjectName(QStringLiteral("settingsFolder"));
    mFolderLabel->setBuddy(mFolder);
    mNumber->setRange(1, 999'999);
    mNumberLabel->setBuddy(mNumber);
    form->addRow(mFormatLabel, mFormat);
    form->addRow(mFolderLabel, mFolder);
    column->addLayout(form);
    mAutoName->setObjectName(QStringLiteral("autoName"));
    mSkipSilence->setObjectName(QStringLiteral("skipSilence"));
    column->addWidget(mAutoName);
    auto *number = new QFormLayout;
    number->addRow(mNumberLabel, mNumber);
    column->addLayout(number);
    column->addWidget(mSkipSilence);

    // Reserved, since references to the elements are taken.
    mNumbered.reserve(3);
    NumberedChoice &silence = addNumbered(page, "splitBySilence", 1, 3600);
    silence.text = Lang::settingsRecordSplitBySilence;
    silence.isOn = AppSettings::isAutoSplitAudioFile;
    silence.setOn = AppSettings::setAutoSplitAudioFile;
    silence.value = silenceSeconds;
    silence.setValue = setSilenceSeconds;
    NumberedChoice &interval = addNumbered(page, "splitByInterval", 1, 86'400);
    interval.text = Lang::settingsRecordSplitByInterval;
    interval.isOn = AppSettings::isAutoSplitEverySeconds;
    interval.setOn = AppSettings::setIsAutoSplitEverySeconds;
    interval.value = secondsOf<AppSettings::autoSplitEverySeconds>;
    interval.setValue = setSecondsOf<AppSettings::setAutoSplitEverySeconds>;
    NumberedChoice &filter = addNumbered(page, "saveFilter", 1, 86'400);
    filter.text = Lang::settingsRecordSaveFilter;
    filter.isOn = AppSettings::isAutoFilterAudioFile;
    filter.setOn = AppSettings::setAutoFilterAudioFile;
    filter.value = secondsOf<AppSettings::autoFilterSeconds>;
    filter.setValue = setSecondsOf<AppSettings::setAutoFilterSeconds>;
    column->addStretch();

    connect(mFormat, &QComboBox::activated, this, [this](int index) {
        AppSettings::setAudioFormat(index);
        Q_EMIT recordingChanged();
    });
    connect(mFolder, &QToolButton::clicked, this, [this] { chooseFolder(); });
    connect(mAutoName, &QCheckBox::clicked, this, [this](bool on) {
        AppSettings::setIsAutoGenFileName(on);
        mNumber->setEnabled(on);
    });
    connect(mNumber, &QSpinBox::valueChanged, this, [](int value) { AppSettings::setrecordNameBaseOn(value); });
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
    return page;
}

QWidget *SettingsPage::makeHotkeys() {
    auto *page = new QWidget(this);
    auto *form = new QFormLayout(page);
    mEnableHotkeys->setObjectName(QStringLiteral("enableHotkeys"));
    form->addRow(mEnableHotkeys);
    connect(mEnableHotkeys, &QCheckBox::clicked, this, [this](bool on) {
        AppSettings::setEnableHotkeys(on);
        showSettings();
        Q_EMIT hotkeysChanged();
    });
    for (std::size_t i = 0; i < kHotkeys.size(); ++i) {
        mHotkeyLabels[i] = new QLabel(page);
        mHotkeys[i] = new HotkeyField(page);
        mHotkeys[i]->setObjectName(QStringLiteral("hotkey%1").arg(i));
        mHotkeyLabels[i]->setBuddy(mHotkeys[i]);
        connect(mHotkeys[i], &HotkeyField::chosen, this, [this, i](const QString &text) { chooseHotkey(i, text); });
        form->addRow(mHotkeyLabels[i], mHotkeys[i]);
    }
    mHotkeyNote->setWordWrap(true);
    mHotkeyNote->setObjectName(QStringLiteral("hotkeyNote"));
    form->addRow(mHotkeyNote);
    return page;
}

void SettingsPage::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange)
        showIcons();
    if (event->type() == QEvent::LanguageChange)
        showTexts();
    Page::changeEvent(event);
}

void SettingsPage::showIcons() { mFolder->setIcon(icon(QStringLiteral("folder"), palette())); }

void SettingsPage::chooseLanguage(const QString &displayName) {
    const QString name = Lang::getLanguageFileName(displayName);
    if (name.isEmpty() || name == AppSettings::appLanguage())
        return;
    AppSettings::setAppLanguage(name);
    Lang::ChangeLanguage(name);
    Q_EMIT languageChanged();
}

void SettingsPage::chooseFolder() {
    const QString chosen = QFileDialog::getExistingDirectory(this, Lang::commSelectFolder(), AppSettings::outputPath());
    if (chosen.isEmpty())
        return;
    AppSettings::setOutputPath(chosen);
    showSettings();
    Q_EMIT recordingChanged();
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
    for (std::size_t i = 0; i < triggers.size(); ++i)
        mHotkeys[i]->setToolTip(triggers[i].isEmpty()
                                    ? QString()
                                    : Lang::windowHotkeyByDesktop().replace(QLatin1String("[#Keys#]"), triggers[i]));
}

void SettingsPage::openRecordingPage() { mPages->setCurrentIndex(Recording); }

void SettingsPage::showSettings() {
    const QString language = AppSettings::appLanguage();
    for (const LanguageInfo &info : Lang::languages())
        if (info.name == language)
            mLanguage->setCurrentText(info.displayName);
    mFormat->setCurrentIndex(AppSettings::getAudioFormat());
    const QString folder = AppSettings::outputPath();
    mFolder->setText(QDir(folder).dirName());
    mFolder->setToolTip(QDir::toNativeSeparators(folder));
    mAutoName->setChecked(AppSettings::isAutoGenFileName());
    showNumber(*mNumber, AppSettings::recordNameBaseOn());
    mNumber->setEnabled(mAutoName->isChecked());
    mSkipSilence->setChecked(AppSettings::isAutoSkipSilence());
    for (const NumberedChoice &numbered : mNumbered) {
        numbered.choice->setChecked(numbered.isOn());
        const double value = numbered.value();
        numbered.number->setDecimals(value == std::floor(value) ? 0 : 3);
        showNumber(*numbered.number, value);
        numbered.number->setEnabled(numbered.isOn());
    }
    // It acts only while silence is skipped.
    mNumbered.front().choice->setEnabled(mSkipSilence->isChecked());
    mEnableHotkeys->setChecked(AppSettings::getEnableHotkeys());
    for (std::size_t i = 0; i < kHotkeys.size(); ++i) {
        mHotkeys[i]->setHotkey(kHotkeys[i].get());
        mHotkeys[i]->setEnabled(mEnableHotkeys->isChecked());
    }
}

void SettingsPage::showTexts() {
    setTitle(Lang::btnSettings());
    mPages->setTabText(General, Lang::settingsGeneralTitle());
    mPages->setTabText(Recording, Lang::settingsRecordTitle());
    mPages->setTabText(Hotkeys, Lang::settingsGeneralHotkey());
    mLanguageLabel->setText(Lang::settingsGeneralSetLanguage());
    mFormatLabel->setText(Lang::commFormat());
    mFolderLabel->setText(Lang::windowOutputFolder());
    mAutoName->setText(Lang::settingsRecordAutoName());
    mNumberLabel->setText(Lang::windowFirstNumber());
    mSkipSilence->setText(Lang::settingsRecordSkipSilent());
    static const QRegularExpression marker(QStringLiteral("\\[#(\\d+) \\w+#\\]"));
    for (const NumberedChoice &numbered : mNumbered) {
        const QString text = numbered.text();
        const auto match = marker.match(text);
        numbered.choice->setText(text.left(match.capturedStart()).trimmed());
        numbered.number->setSuffix(QLatin1Char(' ') + Lang::commSeconds());
        numbered.number->setAccessibleName(numbered.choice->text());
        numbered.after->setText(text.mid(match.capturedEnd()).trimmed());
    }
    mEnableHotkeys->setText(Lang::settingsEnableHotkeys());
    for (std::size_t i = 0; i < kHotkeys.size(); ++i) {
        mHotkeyLabels[i]->setText(kHotkeys[i].label());
        mHotkeys[i]->setPlaceholderText(Lang::windowPressKeys());
    }
}

} // namespace cantorel::ui
