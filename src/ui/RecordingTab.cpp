#include "ui/RecordingTab.h"

#include "audio_device/AudioDeviceEngine.h"
#include "audio_device/ZQAudioKextKit.h"
#include "lang/Lang.h"
#include "recording/control/RecorderPanel.h"
#include "recording/control/ScheduledSession.h"
#include "recording/session/RecordingSession.h"
#include "settings/AppSettings.h"
#include "ui/Icons.h"
#include "ui/MeterView.h"
#include "ui/RecordButton.h"
#include "ui/SoundPictureView.h"

#include <QBoxLayout>
#include <QButtonGroup>
#include <QComboBox>
#include <QDir>
#include <QEvent>
#include <QFileDialog>
#include <QFrame>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>

namespace cantorel::ui {

namespace {

constexpr qreal kElapsedScale = 3.4; // of the normal text
constexpr int kMargin = 16, kAdviceMargin = 8;
constexpr float kQuiet = 0.7f;                         // of the strength of other texts
constexpr qreal kSourceIcon = 1.9, kControlIcon = 1.6; // heights of a line of text

struct Source {
    const char *icon;
    QString (*text)();
    QString (*tip)();
};
constexpr Source kSources[] = {
    {"system", Lang::settingsRecordSystemSound, Lang::settingsRecordAudioSourceTipsSystemSound},
    {"microphone", Lang::windowMicrophone, Lang::settingsRecordAudioSourceTipsMic},
    {"both", Lang::settingsRecordBoth, Lang::settingsRecordAudioSourceTipsBoth},
};

QLabel *centred(QWidget *parent) {
    auto *label = new QLabel(parent);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

} // namespace

RecordingTab::RecordingTab(RecorderPanel &panel, ScheduledSession &recorder, RecordingSession &session, QWidget *parent)
    : QWidget(parent),
      mPanel(panel),
      mRecorder(recorder),
      mSession(session),
      mSources(new QButtonGroup(this)),
      mDevice(new QLabel(this)),
      mMicrophone(new QToolButton(this)),
      mFolder(new QToolButton(this)),
      mFormat(new QComboBox(this)),
      mAdvice(new QLabel(this)),
      mMend(new QPushButton(this)),
      mElapsed(centred(this)),
      mState(centred(this)),
      mSize(new QLabel(this)),
      mTimeLeft(new QLabel(this)),
      mSentence(centred(this)),
      mCountdown(centred(this)),
      mPicture(new SoundPictureView(panel.history(), this)),
      mMeter(new MeterView(panel.level(), this)),
      mRecord(new RecordButton(this)),
      mPause(new QToolButton(this)),
      mSplit(new QToolButton(this)) {
    QFont large = font();
    large.setPointSizeF(large.pointSizeF() * kElapsedScale);
    large.setWeight(QFont::Light);
    mElapsed->setFont(large);
    mElapsed->setObjectName(QStringLiteral("elapsed"));
    mState->setObjectName(QStringLiteral("state"));
    mSentence->setWordWrap(true);
    mSentence->setObjectName(QStringLiteral("sentence"));
    mMeter->setObjectName(QStringLiteral("meter"));
    mPicture->setObjectName(QStringLiteral("picture"));
    mCountdown->setEnabled(false); // A quiet line.
    mTimeLeft->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

    auto *numbers = new QHBoxLayout;
    numbers->addWidget(mSize, 1);
    numbers->addWidget(mElapsed);
    numbers->addWidget(mTimeLeft, 1);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    column->addWidget(makeSources());
    column->addWidget(makeDevices());
    column->addWidget(makeDestination());
    column->addWidget(makeAdvice());
    column->addStretch(1);
    column->addLayout(numbers);
    column->addWidget(mState);
    column->addWidget(mPicture, 8);
    column->addWidget(mMeter);
    column->addWidget(mSentence);
    column->addStretch(1);
    column->addWidget(makeControls());
    column->addWidget(mCountdown);

    showIcons();
    showTexts();
    setAudioInputSelectedStatus();
}

QWidget *RecordingTab::makeSources() {
    auto *row = new QWidget(this);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins({});
    layout->addStretch();
    for (int type = 0; type < static_cast<int>(std::size(kSources)); ++type) {
        auto *button = new QToolButton(row);
        button->setCheckable(true);
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::StrongFocus);
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setIconSize(textIconSize(*this, kSourceIcon));
        button->setObjectName(QStringLiteral("source%1").arg(type));
        mSources->addButton(button, type);
        layout->addWidget(button);
    }
    layout->addStretch();
    connect(mSources, &QButtonGroup::idClicked, this, [this](int type) { chooseSource(type); });
    return row;
}

QWidget *RecordingTab::makeDevices() {
    auto *row = new QWidget(this);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins({});
    mDevice->setObjectName(QStringLiteral("device"));
    mMicrophone->setObjectName(QStringLiteral("microphone"));
    mMicrophone->setAutoRaise(true);
    mMicrophone->setFocusPolicy(Qt::StrongFocus);
    mMicrophone->setPopupMode(QToolButton::InstantPopup);
    auto *menu = new QMenu(mMicrophone);
    connect(menu, &QMenu::aboutToShow, this, [this, menu] { offerMicrophones(*menu); });
    mMicrophone->setMenu(menu);
    layout->addStretch();
    layout->addWidget(mDevice);
    layout->addWidget(mMicrophone);
    layout->addStretch();
    const auto showDevices = [this](const QVariantMap &) { showSettings(); };
    auto &center = foundation::NotificationCenter::defaultCenter();
    mDefaultInput = center.subscribe<QVariantMap>(kNotificationDefaultInputDidChange, showDevices);
    mDefaultOutput = center.subscribe<QVariantMap>(kNotificationDefaultOutputDidChange, showDevices);
    mDevices = center.subscribe<bool>(kNotificationSoundDevicesDidChange, [this](const bool &) { showSettings(); });
    return row;
}

QWidget *RecordingTab::makeAdvice() {
    auto *row = new QFrame(this);
    row->setFrameShape(QFrame::StyledPanel);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(kAdviceMargin, kAdviceMargin / 4, kAdviceMargin / 4, kAdviceMargin / 4);
    mAdvice->setWordWrap(true);
    mAdvice->setObjectName(QStringLiteral("advice"));
    mMend->setObjectName(QStringLiteral("mend"));
    connect(mMend, &QPushButton::clicked, this, [this] {
        if (mLack == RecordingAdvice::Lack::SoundServer)
            RecordingAdvice::lookForServer();
        else if (virtualDeviceWanted)
            virtualDeviceWanted();
        showSettings();
    });
    layout->addWidget(mAdvice, 1);
    layout->addWidget(mMend);
    return row;
}

void RecordingTab::showAdvice() {
    const auto source = recordingSource(AppSettings::getAudioType()).value_or(RecordingSource::SystemSound);
    const RecordingAdvice advice = RecordingAdvice::of(source);
    mLack = advice.lack;
    mAdvice->parentWidget()->setVisible(mLack != RecordingAdvice::Lack::Nothing);
    mAdvice->setText(Lang::sentence(advice.sentence));
    QPalette colours = palette();
    if (mLack != RecordingAdvice::Lack::SoundServer) { // One records all the same.
        QColor quiet = colours.color(QPalette::WindowText);
        quiet.setAlphaF(kQuiet);
        colours.setColor(QPalette::WindowText, quiet);
    }
    mAdvice->setPalette(colours);
    mMend->setText(mLack == RecordingAdvice::Lack::SoundServer ? Lang::windowTryAgain() : Lang::windowInstall());
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

QWidget *RecordingTab::makeDestination() {
    auto *row = new QWidget(this);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins({});
    mFolder->setAutoRaise(true);
    mFolder->setFocusPolicy(Qt::StrongFocus);
    mFolder->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    mFolder->setIconSize(textIconSize(*this));
    mFolder->setObjectName(QStringLiteral("folder"));
    connect(mFolder, &QToolButton::clicked, this, [this] { chooseFolder(); });
    mFormat->addItems(AppSettings::audioFormats());
    mFormat->setObjectName(QStringLiteral("format"));
    connect(mFormat, &QComboBox::activated, this, [](int index) { AppSettings::setAudioFormat(index); });
    layout->addStretch();
    layout->addWidget(mFormat);
    layout->addWidget(mFolder);
    layout->addStretch();
    return row;
}

QWidget *RecordingTab::makeControls() {
    auto *row = new QWidget(this);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins({});
    for (QToolButton *button : {mPause, mSplit}) {
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::StrongFocus);
        button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
        button->setIconSize(textIconSize(*this, kControlIcon));
        button->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    }
    mRecord->setObjectName(QStringLiteral("record"));
    mPause->setObjectName(QStringLiteral("pause"));
    mSplit->setObjectName(QStringLiteral("split"));
    connect(mRecord, &RecordButton::clicked, this, [this] { mRecorder.onStartRecording(); });
    connect(mPause, &QToolButton::clicked, this, [this] { mSession.onPauseRecording(); });
    connect(mSplit, &QToolButton::clicked, this, [this] { mSession.splitRecording(); });
    // Both sides of the record button are equally wide, so that it stands in the middle whatever the language.
    auto *left = new QHBoxLayout, *right = new QHBoxLayout;
    left->addStretch();
    left->addWidget(mPause);
    right->addWidget(mSplit);
    right->addStretch();
    layout->addLayout(left, 1);
    layout->addSpacing(24);
    layout->addWidget(mRecord);
    layout->addSpacing(24);
    layout->addLayout(right, 1);
    return row;
}

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
    if (QAbstractButton *chosen = mSources->button(AppSettings::getAudioType()))
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
    }
    mFormat->setCurrentIndex(AppSettings::getAudioFormat());
    const QString folder = AppSettings::outputPath();
    mFolder->setText(QDir(folder).dirName());
    mFolder->setToolTip(QDir::toNativeSeparators(folder));
    showAdvice();
}

void RecordingTab::showTexts() {
    for (int type = 0; type < static_cast<int>(std::size(kSources)); ++type) {
        mSources->button(type)->setText(kSources[type].text());
        mSources->button(type)->setToolTip(kSources[type].tip());
    }
    mMicrophone->setToolTip(Lang::windowMicrophone());
    mFolder->setAccessibleName(Lang::windowOutputFolder());
    mFormat->setAccessibleName(Lang::commFormat());
    mSplit->setText(Lang::windowSplitNow());
    mMeter->setAccessibleName(Lang::windowMeterName());
    mPicture->setAccessibleName(Lang::windowPictureName());
    showSettings();
    showPanel();
}

void RecordingTab::showPanel() {
    const RecorderState state = mPanel.state();
    const RecordingControls &controls = mPanel.controls();
    mRecord->setRecording(controls.startShowsStop);
    mRecord->setText(controls.startShowsStop ? Lang::btnStop() : Lang::windowRecord());
    mRecord->setToolTip(mRecord->text());
    mRecord->setAccessibleName(mRecord->text());
    mPause->setEnabled(controls.pauseEnabled);
    mPause->setText(controls.pauseShowsResume ? Lang::btnResume() : Lang::windowPause());
    mSplit->setEnabled(controls.startShowsStop && mPanel.display().seconds > 0);
    for (QAbstractButton *source : mSources->buttons())
        source->setEnabled(!controls.startShowsStop);
    mFormat->setEnabled(!controls.startShowsStop);
    mFolder->setEnabled(!controls.startShowsStop);
    mMend->setEnabled(mLack == RecordingAdvice::Lack::SoundServer || !controls.startShowsStop);
    mMicrophone->setEnabled(!controls.startShowsStop);

    const RecordingDisplay &display = mPanel.display();
    mElapsed->setText(display.duration);
    mSize->setText(controls.startShowsStop ? display.size : QString());
    mTimeLeft->setText(mPanel.timeLeftText());
    mState->setText(mPanel.stateText());
    const bool waits =
        state == RecorderState::Paused || state == RecorderState::WaitingForSound || state == RecorderState::DeviceLost;
    QPalette colours = palette();
    if (state == RecorderState::Recording)
        colours.setColor(QPalette::WindowText, recordingColour());
    else if (waits)
        colours.setColor(QPalette::WindowText, waitingColour(palette()));
    mState->setPalette(colours);
    mSentence->setText(mPanel.sentence());
    mCountdown->setText(mPanel.countdown().text);
    mCountdown->setVisible(!mCountdown->text().isEmpty());
}

void RecordingTab::levelCame() {
    mMeter->wake();
    mPicture->wake();
}

void RecordingTab::showIcons() {
    for (int type = 0; type < static_cast<int>(std::size(kSources)); ++type)
        mSources->button(type)->setIcon(icon(QString::fromLatin1(kSources[type].icon), palette()));
    mFolder->setIcon(icon(QStringLiteral("folder"), palette()));
    mPause->setIcon(icon(QStringLiteral("pause"), palette()));
    mSplit->setIcon(icon(QStringLiteral("split"), palette()));
}

void RecordingTab::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange) {
        showIcons();
        showPanel();
        showAdvice();
    }
    if (event->type() == QEvent::LanguageChange)
        showTexts();
    QWidget::changeEvent(event);
}

void RecordingTab::showEvent(QShowEvent *event) {
    showSettings();
    QWidget::showEvent(event);
}

} // namespace cantorel::ui
