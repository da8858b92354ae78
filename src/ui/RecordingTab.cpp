#include "ui/RecordingTab.h"

#include "audio_device/AudioDeviceEngine.h"
#include "lang/Lang.h"
#include "recording/control/RecorderPanel.h"
#include "recording/control/ScheduledSession.h"
#include "recording/session/RecordingSession.h"
#include "ui/CameraPreview.h"
#include "ui/DropPlaces.h"
#include "ui/Headline.h"
#include "ui/LevelLanes.h"
#include "ui/RecordCards.h"
#include "ui/RecordDeck.h"
#include "ui/RecordStrips.h"
#include "ui/SoundPictureView.h"
#include "ui/SourceLine.h"
#include "ui/look/Look.h"
#include "util/ToolFile.h"

#include <QBoxLayout>
#include <QEvent>
#include <QKeyEvent>
#include <QScrollArea>
#include <QStyle>

namespace cantorel::ui {

namespace {

constexpr int kNarrow = 600, kLow = 400; // of the page

} // namespace

RecordingTab::RecordingTab(RecorderPanel &panel, ScheduledSession &recorder, RecordingSession &session,
                           RecordedList &list, QWidget *parent)
    : QWidget(parent),
      mPanel(panel),
      mRecorder(recorder),
      mPage(new QWidget),
      mCards(new RecordCards(panel, mPage)),
      mSourceLine(new SourceLine(recorder.movies(), mPage)),
      mHeadline(new Headline(panel, recorder, mPage)),
      mPicture(new SoundPictureView(panel.history(), mPage)),
      mLevels(new LevelLanes(panel, mPage)),
      mStrips(new RecordStrips(panel, list, this)),
      mDeck(new RecordDeck(panel, recorder, session, this)) {
    mPicture->setObjectName(QStringLiteral("picture"));
    auto *page = new QVBoxLayout(mPage);
    page->setSpacing(0);
    page->addWidget(mCards);
    page->addWidget(mSourceLine);
    page->addWidget(mHeadline);
    auto *stage = new QHBoxLayout;
    stage->setSpacing(2 * measure::kGap);
    stage->addWidget(mPicture, 1);
    if (recorder.movies())
        stage->addWidget(new CameraPreview(*recorder.movies(), mPage));
    page->addLayout(stage, 1);
    page->addWidget(mLevels);

    auto *scrolled = new QScrollArea(this);
    scrolled->setFrameShape(QFrame::NoFrame);
    scrolled->setWidgetResizable(true);
    scrolled->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrolled->setFocusPolicy(Qt::NoFocus);
    scrolled->setWidget(mPage); // which it owns now
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(0);
    column->addWidget(scrolled, 1);
    column->addWidget(mStrips);
    column->addWidget(mDeck);
    auto *places = new DropPlaces(*this, *scrolled, *this); // owned by the tab
    places->setObjectName(QStringLiteral("recordDropPlaces"));
    connect(places, &DropPlaces::convertWanted, this, &RecordingTab::convertWanted);
    connect(places, &DropPlaces::editWanted, this, &RecordingTab::editWanted);
    connect(places, &DropPlaces::addWanted, this, &RecordingTab::addWanted);

    listen();
}

RecordingTab::~RecordingTab() {
    mPanel.disconnect(this); // before the widgets go in which it would be shown
}

void RecordingTab::listen() {
    connect(&mPanel, &RecorderPanel::changed, this, [this] { mCards->showState(); }); // which shows all of it
    connect(&mPanel, &RecorderPanel::ticked, this, [this] {
        mHeadline->showNumbers();
        mDeck->showNumbers();
    });
    connect(&mPanel, &RecorderPanel::countdownDidChange, this, [this] {
        mDeck->showTask();
        mStrips->showState();
    });
    connect(&mPanel, &RecorderPanel::begun, this, [this] {
        showSettings();
        mSourceLine->showSource();
        mHeadline->forgetName();
    });
    connect(mHeadline, &Headline::nameEntered, this, [this] { mDeck->start(); });
    connect(mStrips, &RecordStrips::silenceKept, this, [this] { showSettings(); });
    connect(&mPanel, &RecorderPanel::levelCame, this, [this] {
        mLevels->wake();
        mPicture->wake();
    });
    connect(mSourceLine, &SourceLine::chosen, this, [this] { showSettings(); });
    connect(mHeadline, &Headline::chosen, this, [this] { showSettings(); });
    connect(mCards, &RecordCards::changed, this, [this] { showState(); });
    connect(mCards, &RecordCards::microphoneChosen, this, [this] { showSettings(); });
    connect(mStrips, &RecordStrips::shutdownCancelled, this, &RecordingTab::shutdownCancelled);
    connect(mStrips, &RecordStrips::taskCancelled, this, &RecordingTab::taskCancelled);
    connect(mStrips, &RecordStrips::taskWanted, this, &RecordingTab::taskWanted);
    connect(mStrips, &RecordStrips::mended, this, [this] { showSettings(); });
    connect(mStrips, &RecordStrips::virtualDeviceWanted, this, &RecordingTab::virtualDeviceWanted);
    connect(mStrips, &RecordStrips::playWanted, this, &RecordingTab::playWanted);
    connect(mStrips, &RecordStrips::revealWanted, this, &RecordingTab::revealWanted);
    connect(mStrips, &RecordStrips::editWanted, this, &RecordingTab::editWanted);
    const auto showDevices = [this](const QVariantMap &) { showSettings(); };
    auto &center = foundation::NotificationCenter::defaultCenter();
    mDefaultInput = center.subscribe<QVariantMap>(kNotificationDefaultInputDidChange, showDevices);
    mDefaultOutput = center.subscribe<QVariantMap>(kNotificationDefaultOutputDidChange, showDevices);
    mDevices = center.subscribe<bool>(kNotificationSoundDevicesDidChange, [this](const bool &) { showSettings(); });
}

// What lacks room goes.
void RecordingTab::fit() {
    const bool isNarrow = width() < kNarrow, isLow = height() < Look::scaled(*this, kLow);
    const int margin = isNarrow ? measure::kNarrowMargin : measure::kMargin;
    mPage->layout()->setContentsMargins(margin, 0, margin, 0);
    // The same with a switch as with text, so that nothing jumps.
    mSourceLine->setFixedHeight(Look::tall(*this, isLow ? 48 : 64));
    const int room = width() - 2 * margin - style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    mSourceLine->fit(room);
    mHeadline->fit(room, isLow);
    mDeck->fit(isNarrow, isLow, margin);
}

void RecordingTab::begin() { mDeck->begin(); }

void RecordingTab::showSettings() {
    if (!isVisible())
        return; // showEvent() comes before it is seen.
    mSourceLine->showSettings();
    mHeadline->showSettings();
    mStrips->showAdvice();
    showState();
}

void RecordingTab::showState() {
    if (!isVisible())
        return;
    const QWidget *const focused = window()->focusWidget();
    // What a card offers for the source stands for the lines that would say the same.
    const bool isOffering = mCards->isOfferingDevice();
    mSourceLine->setVisible(!isOffering);
    mHeadline->setFileShown(!isOffering);
    mStrips->setAdviceShown(!isOffering);
    mSourceLine->setRecording(mPanel.isRunning());
    mPicture->setRunning(mPanel.isRunning());
    mLevels->setVisible(mPanel.isRunning());
    if (mPanel.isRunning())
        mLevels->setBoth(mRecorder.source() == RecordingSource::Both);
    mHeadline->showState();
    mStrips->showState();
    mDeck->showState();
    if (focused && isAncestorOf(focused) && !focused->isVisibleTo(this)) // Else it would leave the page.
        begin();
}

void RecordingTab::showTexts() {
    mCards->showTexts();
    mSourceLine->showTexts();
    mHeadline->showTexts();
    mStrips->showTexts();
    mDeck->showTexts();
    mLevels->showTexts();
    mPicture->setAccessibleName(Lang::windowPictureName());
    showSettings();
}

void RecordingTab::showResult(const FinishedRecording &recording) { mStrips->showResult(recording); }

QString RecordingTab::nameNewFile(const QString &folder, const QString &extension) {
    // No file name has a stroke.
    const QString name = ToolFile::cleanFileName(mHeadline->enteredName().replace(QLatin1Char('/'), QLatin1Char('-')));
    if (!name.isEmpty())
        return QStringLiteral("%1/%2.%3").arg(folder, name, extension);
    mPanel.setSentence(Lang::windowEnterRecordingName());
    Q_EMIT nameWanted();
    mHeadline->askForName();
    return {};
}

void RecordingTab::takeStrip(QWidget &strip) {
    auto *column = static_cast<QBoxLayout *>(layout());
    column->insertWidget(column->indexOf(mDeck), &strip);
}

bool RecordingTab::showShutdown(int seconds) { return mStrips->showShutdown(seconds); }

void RecordingTab::showTriggers(const std::array<QString, 3> &triggers) { mDeck->setTriggers(triggers); }

void RecordingTab::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange)
        showSettings();
    if (event->type() == QEvent::FontChange)
        fit();
    if (event->type() == QEvent::LanguageChange)
        showTexts();
    QWidget::changeEvent(event);
}

void RecordingTab::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Escape)
        mCards->close();
    else
        QWidget::keyPressEvent(event);
}

void RecordingTab::resizeEvent(QResizeEvent *event) {
    fit();
    QWidget::resizeEvent(event);
}

void RecordingTab::showEvent(QShowEvent *event) {
    showTexts();
    QWidget::showEvent(event);
}

} // namespace cantorel::ui
