#include "ui/RecordingTab.h"

#include "audio_device/AudioDeviceEngine.h"
#include "audio_device/ZQAudioKextKit.h"
#include "lang/Lang.h"
#include "recording/control/RecorderPanel.h"
#include "recording/control/ScheduledSession.h"
#include "recording/session/RecordingSession.h"
#include "settings/AppSettings.h"
#include "ui/Deck.h"
#include "ui/DigitLabel.h"
#include "ui/Icons.h"
#include "ui/KeyCaps.h"
#include "ui/MeterView.h"
#include "ui/RecordButton.h"
#include "ui/SoundPictureView.h"
#include "ui/SourceSwitch.h"
#include "ui/Strip.h"
#include "ui/WindowKeys.h"
#include "ui/look/Look.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"
#include "util/tools/Tools.h"

#include <QBoxLayout>
#include <QButtonGroup>
#include <QComboBox>
#include <QDir>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScrollArea>
#include <QToolButton>

namespace cantorel::ui {

namespace {

constexpr int kNarrow = 600, kLow = 400; // of the page
constexpr int kDot = 8;
constexpr int kControlIcon = 22, kControlWidth = 88;

struct Source {
    const char *icon;
    QString (*text)();
    QString (*shortText)();
    QString (*tip)();
    QString (*ready)();
};
constexpr Source kSources[] = {
    {"system", Lang::settingsRecordSystemSound, Lang::settingsRecordSystemSound,
     Lang::settingsRecordAudioSourceTipsSystemSound, Lang::windowReadySystem},
    {"microphone", Lang::windowMicrophone, Lang::windowMicrophone, Lang::settingsRecordAudioSourceTipsMic,
     Lang::windowReadyMicrophone},
    {"both", Lang::settingsRecordBoth, Lang::windowBoth, Lang::settingsRecordAudioSourceTipsBoth,
     Lang::windowReadyBoth},
};

const Source &chosenSource() {
    const int type = AppSettings::getAudioType();
    return kSources[qBound(0, type, static_cast<int>(std::size(kSources)) - 1)];
}

void colour(QLabel &label, const QColor &ink) {
    QPalette palette = label.palette();
    if (palette.color(QPalette::WindowText) == ink)
        return;
    palette.setColor(QPalette::WindowText, ink);
    label.setPalette(palette);
}

QHBoxLayout *rowIn(QWidget *widget, int spacing = measure::kGap) {
    auto *row = new QHBoxLayout(widget);
    row->setContentsMargins({});
    row->setSpacing(spacing);
    return row;
}

} // namespace

RecordingTab::RecordingTab(RecorderPanel &panel, ScheduledSession &recorder, RecordingSession &session, QWidget *parent)
    : QWidget(parent),
      mPanel(panel),
      mRecorder(recorder),
      mSession(session),
      mPage(new QWidget),
      mSources(new SourceSwitch(static_cast<int>(std::size(kSources)), mPage)),
      mSourceIcon(new QLabel(mPage)),
      mSource(new QLabel(mPage)),
      mDevice(new QLabel(mPage)),
      mMicrophone(new QToolButton(mPage)),
      mStateDot(new QLabel(mPage)),
      mState(new QLabel(mPage)),
      mElapsed(new DigitLabel(mPage)),
      mFile(new QLabel(mPage)),
      mFileDetails(new QLabel(mPage)),
      mFormat(new QComboBox(mPage)),
      mFolder(new QToolButton(mPage)),
      mSize(new DigitLabel(mPage)),
      mTimeLeft(new DigitLabel(mPage)),
      mPicture(new SoundPictureView(panel.history(), mPage)),
      mMeterName(new QLabel(mPage)),
      mMeter(new MeterView(panel.level(), mPage)),
      mAdvice(new Strip(this)),
      mTrouble(new Strip(this)),
      mResult(new Strip(this)),
      mCountdown(new QLabel(this)),
      mRecord(new RecordButton(this)),
      mRecordText(new QLabel(this)),
      mPause(new QToolButton(this)),
      mSplit(new QToolButton(this)),
      mKeys(new KeyCaps(this)),
      mKeysText(new QLabel(this)) {
    auto *page = new QVBoxLayout(mPage);
    page->setSpacing(0);
    page->addWidget(makeSources());
    page->addWidget(makeHeadline());
    page->addWidget(mPicture, 1);
    page->addWidget(makeLevel());
    mPicture->setObjectName(QStringLiteral("picture"));

    auto *scrolled = new QScrollArea(this);
    scrolled->setFrameShape(QFrame::NoFrame);
    scrolled->setWidgetResizable(true);
    scrolled->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrolled->setFocusPolicy(Qt::NoFocus);
    scrolled->setWidget(mPage); // which it owns now
    makeStrips();
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(0);
    column->addWidget(scrolled, 1);
    column->addWidget(mAdvice);
    column->addWidget(mTrouble);
    column->addWidget(mResult);
    column->addWidget(makeDeck());

    fit();
    showIcons();
    showTexts();
    setAudioInputSelectedStatus();
}

// While something is recorded, what cannot be changed now is text.
QWidget *RecordingTab::makeSources() {
    mSourceLine = new QWidget(mPage);
    auto *row = rowIn(mSourceLine);
    mDevice->setObjectName(QStringLiteral("device"));
    mMicrophone->setObjectName(QStringLiteral("microphone"));
    mMicrophone->setAutoRaise(true);
    mMicrophone->setFocusPolicy(Qt::StrongFocus);
    mMicrophone->setPopupMode(QToolButton::InstantPopup);
    auto *menu = new QMenu(mMicrophone);
    connect(menu, &QMenu::aboutToShow, this, [this, menu] { offerMicrophones(*menu); });
    mMicrophone->setMenu(menu);
    row->addWidget(mSources);
    row->addWidget(mSourceIcon);
    row->addWidget(mSource);
    row->addStretch();
    row->addWidget(mDevice);
    row->addWidget(mMicrophone);
    connect(&mSources->choices(), &QButtonGroup::idClicked, this, [this](int type) { chooseSource(type); });
    const auto showDevices = [this](const QVariantMap &) { showSettings(); };
    auto &center = foundation::NotificationCenter::defaultCenter();
    mDefaultInput = center.subscribe<QVariantMap>(kNotificationDefaultInputDidChange, showDevices);
    mDefaultOutput = center.subscribe<QVariantMap>(kNotificationDefaultOutputDidChange, showDevices);
    mDevices = center.subscribe<bool>(kNotificationSoundDevicesDidChange, [this](const bool &) { showSettings(); });
    return mSourceLine;
}

// The microphone that is recorded is the desktop's own choice, so another one is chosen there.
void RecordingTab::offerMicrophones(QMenu &menu) {
    menu.clear();
    const QString chosen = ZQAudioKextKit::getDefaultAudioInputName();
    for (const QString &name : ZQAudioKextKit::getAllAudioInputDeviceNames()) {
        QAction *action =
            menu.addAction(QString(name).replace(QLatin1Char('&'), QStringLiteral("&&")), this, [this, name] {
                if (ZQAudioKextKit::changeAudioInputDeviceWithName(name))
                    AppSettings::setMicrophone(name);
                showSettings();
            });
        action->setCheckable(true);
        action->setChecked(name == chosen);
    }
}

QWidget *RecordingTab::makeHeadline() {
    auto *headline = new QWidget(mPage);
    mState->setObjectName(QStringLiteral("state"));
    mElapsed->setObjectName(QStringLiteral("elapsed"));
    mFolder->setAutoRaise(true);
    mFolder->setFocusPolicy(Qt::StrongFocus);
    mFolder->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    mFolder->setObjectName(QStringLiteral("folder"));
    connect(mFolder, &QToolButton::clicked, this, [this] { chooseFolder(); });
    mFormat->addItems(AppSettings::audioFormats());
    mFormat->setObjectName(QStringLiteral("format"));
    connect(mFormat, &QComboBox::activated, this, [](int index) { AppSettings::setAudioFormat(index); });

    auto *state = new QHBoxLayout;
    state->setSpacing(measure::kGap);
    state->addWidget(mStateDot);
    state->addWidget(mState, 1);
    auto *numbers = new QVBoxLayout;
    numbers->setSpacing(0);
    numbers->addStretch();
    numbers->addWidget(mSize, 0, Qt::AlignRight);
    numbers->addWidget(mTimeLeft, 0, Qt::AlignRight);
    auto *time = new QHBoxLayout;
    time->addWidget(mElapsed);
    time->addStretch();
    time->addLayout(numbers);
    mFileLine = new QWidget(headline);
    auto *file = rowIn(mFileLine);
    file->addWidget(mFile);
    file->addWidget(mFileDetails);
    file->addWidget(mFormat);
    file->addWidget(mFolder);
    file->addStretch();
    auto *lines = new QVBoxLayout(headline);
    lines->setContentsMargins(0, measure::kGap, 0, measure::kGap);
    lines->setSpacing(2);
    lines->addLayout(state);
    lines->addLayout(time);
    lines->addWidget(mFileLine);
    return headline;
}

QWidget *RecordingTab::makeLevel() {
    mLevel = new QWidget(mPage);
    mMeter->setObjectName(QStringLiteral("meter"));
    auto *row = rowIn(mLevel, 2 * measure::kGap);
    row->setContentsMargins(0, measure::kGap, 0, measure::kGap);
    row->addWidget(mMeterName);
    row->addWidget(mMeter, 1);
    return mLevel;
}

void RecordingTab::makeStrips() {
    mAdvice->text().setObjectName(QStringLiteral("advice"));
    mAdvice->close().hide(); // it stays as long as it holds
    mMend = &mAdvice->addAction(QStringLiteral("mend"), false);
    connect(mMend, &QPushButton::clicked, this, [this] { mend(); });
    mTrouble->text().setObjectName(QStringLiteral("sentence"));
    connect(mTrouble, &Strip::closed, this, [this] { mPanel.setSentence({}); });
    mResult->text().setObjectName(QStringLiteral("result"));
    mPlay = &mResult->addAction(QStringLiteral("playResult"), true);
    mReveal = &mResult->addAction(QStringLiteral("revealResult"), false);
    connect(mPlay, &QPushButton::clicked, this, [this] { Q_EMIT playWanted(mFinished.file); });
    connect(mReveal, &QPushButton::clicked, this, [this] { Q_EMIT revealWanted(mFinished.file); });
    connect(mResult, &Strip::closed, this, [this] {
        mHasResult = false;
        showPanel();
    });
}

void RecordingTab::mend() {
    if (mLack == RecordingAdvice::Lack::SoundServer)
        RecordingAdvice::lookForServer();
    else
        Q_EMIT virtualDeviceWanted();
    showSettings();
}

void RecordingTab::showAdvice() {
    const auto source = recordingSource(AppSettings::getAudioType()).value_or(RecordingSource::SystemSound);
    const RecordingAdvice advice = RecordingAdvice::of(source);
    mLack = advice.lack;
    const bool lacksServer = mLack == RecordingAdvice::Lack::SoundServer;
    mMend->setText(lacksServer ? Lang::windowTryAgain() : Lang::windowInstall());
    mAdvice->tell(lacksServer ? Strip::Kind::Warning : Strip::Kind::Hint, Lang::sentence(advice.sentence));
}

QWidget *RecordingTab::makeDeck() {
    mDeck = new Deck(this);
    for (QToolButton *button : {mPause, mSplit}) {
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::StrongFocus);
    }
    mRecord->setObjectName(QStringLiteral("record"));
    mRecordText->setAlignment(Qt::AlignCenter);
    mPause->setObjectName(QStringLiteral("pause"));
    mSplit->setObjectName(QStringLiteral("split"));
    connect(mRecord, &RecordButton::clicked, this, [this] { mRecorder.onStartRecording(); });
    connect(mPause, &QToolButton::clicked, this, [this] { mSession.onPauseRecording(); });
    connect(mSplit, &QToolButton::clicked, this, [this] { mSession.splitRecording(); });

    mCountdown->setWordWrap(true);
    mCorners[0] = new QWidget(mDeck);
    rowIn(mCorners[0])->addWidget(mCountdown, 1);
    mCorners[1] = new QWidget(mDeck);
    auto *keys = new QVBoxLayout(mCorners[1]);
    keys->setContentsMargins({});
    keys->setSpacing(measure::kGap / 2);
    keys->addStretch();
    keys->addWidget(mKeys, 0, Qt::AlignRight);
    keys->addWidget(mKeysText, 0, Qt::AlignRight);
    keys->addStretch();

    auto *middle = new QVBoxLayout;
    middle->setSpacing(measure::kGap / 2);
    middle->addStretch();
    middle->addWidget(mRecord, 0, Qt::AlignHCenter);
    middle->addWidget(mRecordText);
    middle->addStretch();
    // Both sides of the record button are equally wide, so that it stands in the middle whatever the language.
    auto *left = new QHBoxLayout, *right = new QHBoxLayout;
    left->addWidget(mCorners[0], 1);
    left->addWidget(mPause);
    right->addWidget(mSplit);
    right->addWidget(mCorners[1], 1);
    auto *row = rowIn(mDeck, 2 * measure::kGap);
    row->addLayout(left, 1);
    row->addLayout(middle);
    row->addLayout(right, 1);
    return mDeck;
}

// What lacks room goes, and words stand beside icons where the window is low.
void RecordingTab::fit() {
    const bool isNarrow = width() < kNarrow, isLow = height() < Look::scaled(*this, kLow);
    const int margin = isNarrow ? measure::kNarrowMargin : measure::kMargin;
    mPage->layout()->setContentsMargins(margin, 0, margin, 0);
    mDeck->layout()->setContentsMargins(margin, measure::kGap, margin, measure::kGap);
    mDeck->setMinimumHeight(Look::tall(*this, isLow ? 84 : 112));
    // The same with switch and fields as with text, so that nothing jumps.
    mSourceLine->setFixedHeight(Look::tall(*this, isLow ? 48 : 64));
    mFileLine->setFixedHeight(qMax(Look::tall(*this, measure::kControl), mFormat->sizeHint().height()));
    mElapsed->setFont(Look::font(*this, isLow ? text_size::kLowTime : text_size::kTime, QFont::Light));
    mRecord->setLow(isLow);
    mRecordText->setVisible(!isLow);
    for (QToolButton *button : {mPause, mSplit}) {
        button->setToolButtonStyle(isLow ? Qt::ToolButtonTextBesideIcon : Qt::ToolButtonTextUnderIcon);
        button->setMinimumWidth(isLow ? 0 : kControlWidth);
    }
    for (QWidget *corner : mCorners)
        corner->setVisible(!isNarrow);
}

void RecordingTab::begin() { mRecord->setFocus(Qt::OtherFocusReason); }

void RecordingTab::chooseSource(int type) {
    AppSettings::setAudioType(type);
    showSettings();
}

void RecordingTab::chooseFolder() {
    const QString chosen = QFileDialog::getExistingDirectory(this, Lang::commSelectFolder(), AppSettings::outputPath());
    if (!chosen.isEmpty())
        AppSettings::setOutputPath(chosen);
    showSettings();
}

void RecordingTab::setAudioInputSelectedStatus() {
    if (QAbstractButton *chosen = mSources->choices().button(AppSettings::getAudioType()))
        chosen->setChecked(true);
    showSettings();
}

void RecordingTab::showSettings() {
    const int type = AppSettings::getAudioType();
    const QString output = ZQAudioKextKit::getDefaultAudioOutputName(),
                  input = ZQAudioKextKit::getDefaultAudioInputName();
    if (mPanel.state() == RecorderState::Idle) { // What is recorded stays what it was at the start.
        const bool hasBoth = type == 2 && !output.isEmpty();
        mDevice->setText(hasBoth ? output + QStringLiteral(" + ") : output);
        mDevice->setVisible(type != 1);
        mMicrophone->setText(input.isEmpty() ? Lang::tabRecordNoInputDeviceDetected() : input);
        mMicrophone->setVisible(type != 0);
        mSource->setText(chosenSource().text());
        mSourceIcon->setPixmap(drawing(QString::fromLatin1(chosenSource().icon), Look::tokens().text2,
                                       Look::scaled(*this, measure::kIcon), devicePixelRatioF()));
    }
    mFormat->setCurrentIndex(AppSettings::getAudioFormat());
    const QString folder = AppSettings::outputPath();
    mFolder->setText(fontMetrics().elidedText(QDir(folder).dirName(), Qt::ElideMiddle, width() / 4));
    mFolder->setToolTip(QDir::toNativeSeparators(folder));
    showAdvice();
    showPanel();
}

void RecordingTab::showTexts() {
    for (int type = 0; type < static_cast<int>(std::size(kSources)); ++type) {
        mSources->choices().button(type)->setText(kSources[type].shortText());
        mSources->choices().button(type)->setToolTip(kSources[type].tip());
    }
    mMicrophone->setToolTip(Lang::windowMicrophone());
    mFolder->setAccessibleName(Lang::windowOutputFolder());
    mFormat->setAccessibleName(Lang::commFormat());
    mSplit->setText(Lang::windowSplitNow());
    mSplit->setToolTip(withKeys(mSplit->text(), Command::Split));
    mMeterName->setText(Lang::windowMeterName());
    mMeter->setAccessibleName(Lang::windowMeterName());
    mPicture->setAccessibleName(Lang::windowPictureName());
    mPlay->setText(Lang::btnPlay());
    mReveal->setText(Lang::btnShowInFinder());
    mResult->setAccessibleName(Lang::windowFileReady());
    for (Strip *strip : {mTrouble, mResult})
        strip->close().setToolTip(Lang::btnClose());
    showSettings();
}

void RecordingTab::showResult(const FinishedRecording &recording) {
    mFinished = recording;
    mHasResult = true;
    showPanel();
}

QString RecordingTab::resultText() const {
    const QStringList parts{QFileInfo(mFinished.file).fileName(), ToolString::stringFromDuration(mFinished.seconds),
                            ToolFile::fileSizeFormatterToString(mFinished.bytes).trimmed(),
                            QDir(QFileInfo(mFinished.file).path()).dirName()};
    return parts.join(QStringLiteral("   "));
}

void RecordingTab::showTriggers(const std::array<QString, 3> &triggers) {
    mTriggers = triggers;
    showPanel();
}

void RecordingTab::showPanel() {
    const RecorderState state = mPanel.state();
    const RecordingControls &controls = mPanel.controls();
    const RecordingDisplay &display = mPanel.display();
    const Tokens &tokens = Look::tokens();
    const bool isIdle = !controls.startShowsStop, isRunning = !isIdle && display.seconds > 0;
    if (!isIdle)
        mHasResult = false;

    for (QWidget *choice : std::initializer_list<QWidget *>{mSources, mFormat, mFolder})
        choice->setVisible(isIdle);
    for (QWidget *text : std::initializer_list<QWidget *>{mSourceIcon, mSource, mFileDetails, mLevel})
        text->setVisible(!isIdle);
    mMicrophone->setEnabled(isIdle);
    colour(*mDevice, tokens.text2);

    const bool waits =
        state == RecorderState::Paused || state == RecorderState::WaitingForSound || state == RecorderState::DeviceLost;
    const QColor stateColour = waits ? tokens.amber : state == RecorderState::Recording ? tokens.red : tokens.text2;
    mState->setText(state == RecorderState::Idle ? chosenSource().ready() : mPanel.stateText());
    mState->setFont(Look::font(*this, text_size::kSecondLine, isIdle ? QFont::Normal : QFont::Bold));
    colour(*mState, stateColour);
    mStateDot->setVisible(!isIdle);
    if (!isIdle)
        mStateDot->setPixmap(drawing(QStringLiteral("dot"), stateColour, kDot, devicePixelRatioF()));
    mElapsed->setText(display.duration);
    colour(*mElapsed, isRunning ? tokens.text : tokens.outline);
    mSize->setText(isIdle ? QString() : display.size);
    mTimeLeft->setText(mPanel.timeLeftText());
    for (QLabel *number : {static_cast<QLabel *>(mSize), static_cast<QLabel *>(mTimeLeft)}) {
        colour(*number, tokens.text2);
        number->updateGeometry();
    }

    const QString file = isIdle ? QFileInfo(Tools::getAudioNameFromTrack()).completeBaseName()
                                : QFileInfo(mPanel.file()).completeBaseName();
    mFile->setText(!isIdle ? file
                   : AppSettings::isAutoGenFileName()
                       ? Lang::windowNextFile().replace(QLatin1String("[#FileName#]"), file)
                       : QString());
    mFile->setVisible(!mFile->text().isEmpty());
    mFile->setFont(Look::font(*this, text_size::kBody, isIdle ? QFont::Normal : QFont::Bold));
    colour(*mFile, isIdle ? tokens.text2 : tokens.text);
    QString details = Lang::windowFormatInFolder()
                          .replace(QLatin1String("[#Format#]"), mFormat->currentText().simplified())
                          .replace(QLatin1String("[#Folder#]"), mFolder->text());
    if (AppSettings::isAutoSkipSilence())
        details += QLatin1Char(' ') + Lang::windowSilenceIsSkipped();
    mFileDetails->setText(details);
    colour(*mFileDetails, tokens.text2);

    mMend->setEnabled(mLack == RecordingAdvice::Lack::SoundServer || isIdle);

    mRecord->setRecording(!isIdle);
    mRecord->setText(isIdle ? Lang::windowRecord() : Lang::btnStop());
    mRecord->setToolTip(withKeys(mRecord->text(), Command::Record));
    mRecord->setAccessibleName(mRecord->text());
    mRecordText->setText(mRecord->text());
    mRecordText->setFont(Look::font(*this, text_size::kSecondLine, QFont::Bold));
    mPause->setVisible(!isIdle);
    mPause->setEnabled(controls.pauseEnabled);
    mPause->setText(controls.pauseShowsResume ? Lang::btnResume() : Lang::windowPause());
    mPause->setToolTip(withKeys(mPause->text(), Command::Pause));
    mSplit->setVisible(!isIdle);
    mSplit->setEnabled(isRunning);

    mCountdown->setText(mPanel.countdown().text);
    mCountdown->setFont(Look::font(*this, text_size::kSecondLine));
    colour(*mCountdown, tokens.text2);
    const QString keys = mTriggers[isIdle ? 0 : 1];
    mKeys->setKeys(keys);
    mKeysText->setText(keys.isEmpty() ? QString()
                       : isIdle       ? Lang::windowStartsFromAnywhere()
                                      : Lang::windowStopsFromAnywhere());
    mKeysText->setFont(Look::font(*this, text_size::kLabel));
    colour(*mKeysText, tokens.text2);

    const QString trouble = mPanel.sentence();
    mTrouble->tell(isIdle ? Strip::Kind::Error : Strip::Kind::Warning, trouble);
    mResult->tell(Strip::Kind::Result, mHasResult && trouble.isEmpty() ? resultText() : QString());
}

void RecordingTab::levelCame() {
    mMeter->wake();
    mPicture->wake();
}

void RecordingTab::showIcons() {
    for (int type = 0; type < static_cast<int>(std::size(kSources)); ++type)
        mSources->choices().button(type)->setIcon(icon(QString::fromLatin1(kSources[type].icon), palette()));
    const QSize small = QSize(1, 1) * Look::scaled(*this, measure::kIcon);
    mFolder->setIconSize(small);
    mFolder->setIcon(icon(QStringLiteral("folder"), palette()));
    for (QToolButton *button : {mPause, mSplit})
        button->setIconSize(QSize(1, 1) * Look::scaled(*this, kControlIcon));
    mPause->setIcon(icon(QStringLiteral("pause"), palette()));
    mSplit->setIcon(icon(QStringLiteral("split"), palette()));
}

void RecordingTab::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange) {
        showIcons();
        showSettings();
    }
    if (event->type() == QEvent::FontChange)
        fit();
    if (event->type() == QEvent::LanguageChange)
        showTexts();
    QWidget::changeEvent(event);
}

void RecordingTab::resizeEvent(QResizeEvent *event) {
    fit();
    QWidget::resizeEvent(event);
}

void RecordingTab::showEvent(QShowEvent *event) {
    showSettings();
    QWidget::showEvent(event);
}

} // namespace cantorel::ui
