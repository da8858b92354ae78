#include "ui/MainWindow.h"

#include "editor/KeptEdit.h"
#include "lang/Lang.h"
#include "recording/control/ScheduledSession.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaultFunctions.h"
#include "ui/AlertAsker.h"
#include "ui/ConvertStrip.h"
#include "ui/EditorPage.h"
#include "ui/Icons.h"
#include "ui/LibraryTab.h"
#include "ui/Page.h"
#include "ui/PageStack.h"
#include "ui/Pill.h"
#include "ui/RecordCards.h"
#include "ui/RecordingTab.h"
#include "ui/Regions.h"
#include "ui/SettingsPage.h"
#include "ui/StatusItem.h"
#include "ui/TasksPage.h"
#include "ui/UpdateWindow.h"
#include "ui/WindowKeys.h"
#include "ui/WindowMenu.h"
#include "ui/ZQAudioConvertController.h"
#include "ui/look/Look.h"

#include <QAction>
#include <QApplication>
#include <QBoxLayout>
#include <QCloseEvent>
#include <QFileInfo>
#include <QPainter>
#include <QScreen>
#include <QStyle>
#include <QTabWidget>
#include <QToolButton>

#include <utility>

namespace cantorel::ui {

namespace {

constexpr QSize kSmallest(560, 420), kFirst(820, 600);
constexpr int kDot = 8, kLine = 3;
const QString kGeometry = QStringLiteral("mainWindowGeometry"); // where it was left

class RecordingLine : public QWidget {
public:
    explicit RecordingLine(QWidget *parent) : QWidget(parent) {
        setFixedHeight(kLine);
        hide();
    }

protected:
    void paintEvent(QPaintEvent *) override { QPainter(this).fillRect(rect(), Look::tokens().redFill); }
};

} // namespace

MainWindow::MainWindow(const Parts &parts)
    : mParts(parts),
      mAlerts(std::make_unique<AlertAsker>(*this)),
      mRecordingLine(new RecordingLine(this)),
      mTabs(new QTabWidget(this)),
      mPill(new Pill(this)),
      mMenu(new WindowMenu(this)),
      mRecordingTab(new RecordingTab(parts.panel, parts.recorder, parts.session, parts.list, this)),
      mLibraryPage(new QWidget(this)),
      mNotices({[this] { bringToFront(); }, [this] { mParts.recorder.stopByHand(); },
                [this](const QString &title, const QString &text) { statusItem().notify(title, text); }},
               parts.desktop.notifications.get(), parts.desktop.files.get()),
      mLeaving(*this, parts.panel, parts.recorder, parts.converter, mNotices),
      mLeftovers(parts.session.leftovers(), parts.panel, mRecordingTab->cards().leftovers()) {
    // On a small screen with large text, too, the record button is above the screen's edge.
    const QSize room = screen()->availableSize() - QSize(0, style()->pixelMetric(QStyle::PM_TitleBarHeight));
    setMinimumSize(kSmallest.boundedTo(room));
    resize(kFirst.boundedTo(room));
    restoreGeometry(ZQUserDefaultGetDataValue(kGeometry, {})); // ignores invalid data
    mTabs->setDocumentMode(true);
    mTabs->setIconSize(QSize(kDot, kDot));
    mTabs->setObjectName(QStringLiteral("tabs"));
    mTabs->addTab(mRecordingTab, QString());
    mTabs->addTab(mLibraryPage, QString());
    auto *centre = new QWidget(this);
    auto *column = new QVBoxLayout(centre);
    column->setContentsMargins({});
    column->setSpacing(0);
    column->addWidget(mRecordingLine);
    column->addWidget(makeHome(), 1);
    setCentralWidget(centre);
    makeKeys();
    connect(mTabs, &QTabWidget::currentChanged, this, [this] {
        complete();
        showRecordingEverywhere();
        placeStrip();
    });
    mRecordingTab->begin();
    listen();
    mMenu->showIcons(palette());
    showTexts();
}

MainWindow::~MainWindow() {
    mParts.list.view = nullptr;
    mParts.panel.disconnect(this); // before the widgets go in which it would be shown
}

// What the first picture does without.
void MainWindow::complete() {
    if (mLibraryTab)
        return;
    mLibraryTab = new LibraryTab(mParts.list, mParts.desktop.media.get(), mParts.desktop.files.get(), mLibraryPage);
    auto *page = new QVBoxLayout(mLibraryPage);
    page->setContentsMargins({});
    page->addWidget(mLibraryTab);
    mStatusItem = std::make_unique<StatusItem>(
        mParts.panel, StatusItem::Actions{[this] { bringToFront(); }, [this] { showOrHide(); },
                                          [this] { mParts.recorder.onStartRecording(); },
                                          [this] { mParts.recorder.onPauseRecording(); },
                                          [this] { mParts.session.splitRecording(); }, [this] { mLeaving.leave(); }});
    QApplication::setWindowIcon(applicationIcon());
    connect(&mLibraryTab->media(), &LibraryMedia::toWindow, this, [this] { bringToFront(); });
    connect(&mLibraryTab->media(), &LibraryMedia::toEnd, this, [this] { mLeaving.leave(); });
    connect(&mParts.panel, &RecorderPanel::dayChanged, mLibraryTab, &LibraryTab::itemsDidChange);
    connect(mLibraryTab, &LibraryTab::playsIntoRecording, this,
            [this](const QString &file) { askToPlay([this, file] { mLibraryTab->playAllTheSame(file); }); });
    mLibraryTab->setIdentification(mParts.identification);
    connect(mLibraryTab, &LibraryTab::convertWanted, this, &MainWindow::openConverter);
    connect(mLibraryTab, &LibraryTab::editWanted, this,
            [this](const QString &file) { beginAudioEditWithURL(QUrl::fromLocalFile(file)); });
    mLibraryTab->listDidChange();
}

LibraryTab &MainWindow::library() {
    complete();
    return *mLibraryTab;
}

StatusItem &MainWindow::statusItem() {
    complete();
    return *mStatusItem;
}

bool MainWindow::event(QEvent *event) {
    const bool isFirstPicture = event->type() == QEvent::Paint && !std::exchange(mWasPainted, true);
    const bool answer = QMainWindow::event(event);
    if (isFirstPicture) // behind it, and behind what the widgets paint with it
        QMetaObject::invokeMethod(
            this,
            [this] {
                complete();
                Q_EMIT firstShown();
            },
            Qt::QueuedConnection);
    return answer;
}

// The tabs with the pill and the menu beside them, and the pages that take their place.
QWidget *MainWindow::makeHome() {
    auto *corner = new QWidget(this);
    corner->setMinimumHeight(Look::tall(*this, measure::kHeader));
    auto *row = new QHBoxLayout(corner);
    row->setContentsMargins(0, 0, measure::kGap * 2, 0);
    row->addWidget(mPill);
    row->addWidget(&mMenu->button());
    corner->setObjectName(QStringLiteral("corner"));
    auto *lead = new QWidget(this);
    auto *before = new QHBoxLayout(lead);
    before->setContentsMargins({});
    before->addSpacing(measure::kMargin - style()->pixelMetric(QStyle::PM_TabBarTabHSpace) / 2);
    mTabs->setCornerWidget(lead, Qt::TopLeftCorner);
    connect(mPill, &Pill::shown, this, [this] { showRecordPage(); });
    connect(mPill, &Pill::paused, this, [this] { mParts.recorder.onPauseRecording(); });
    connect(mPill, &Pill::stopped, this, [this] { mParts.recorder.stopByHand(); });
    auto *home = new QWidget(this);
    auto *grid = new QGridLayout(home);
    grid->setContentsMargins({});
    grid->addWidget(mTabs, 0, 0);
    grid->addWidget(corner, 0, 0, Qt::AlignTop | Qt::AlignRight);
    mPages = new PageStack(*home, *row, *mPill, this);
    connect(mPages, &QStackedWidget::currentChanged, this, [this] {
        mBackAction->setEnabled(mPages->page());
        showRecordingEverywhere();
        placeStrip();
    });
    return mPages;
}

// Each command of the whole window with its keys; what stands in the menu shows them there.
void MainWindow::makeKeys() {
    for (const Command command : allCommands()) {
        QAction *inMenu = mMenu->actionOf(command), *action = inMenu ? inMenu : new QAction(this);
        action->setShortcuts(keysOf(command));
        action->setAutoRepeat(false);
        if (!inMenu)
            connect(action, &QAction::triggered, this, [this, command] { run(command); });
        if (command == Command::Back)
            mBackAction = action;
        addAction(action); // Its keys work wherever the focus is.
    }
    mBackAction->setEnabled(false); // until a page is open
}

void MainWindow::run(Command command) {
    switch (command) {
    case Command::Record:
        return mParts.recorder.onStartRecording();
    case Command::Pause:
        return mParts.recorder.onPauseRecording();
    case Command::Split:
        return mParts.session.splitRecording();
    case Command::RecordPage:
        return showRecordPage();
    case Command::LibraryPage:
        return showLibrary();
    case Command::NextPage:
        return turn(1);
    case Command::PreviousPage:
        return turn(-1);
    case Command::NextRegion:
        return focusNextRegion(*this);
    case Command::Menu:
        return mMenu->open(*mPages);
    case Command::Back:
        return mPages->page()->goBack();
    case Command::Settings:
        return openSettings();
    case Command::Quit:
        return mLeaving.leave();
    }
}

void MainWindow::turn(int step) {
    if (Page *page = mPages->page())
        page->turn(step);
    else
        showTab(mTabs->widget(qBound(0, mTabs->currentIndex() + step, mTabs->count() - 1)));
}

void MainWindow::openSettings() {
    settings().showSettings();
    mPages->open(*mSettings);
}

void MainWindow::openTasks() {
    tasks().showTasks();
    mPages->open(*mTasks);
}

void MainWindow::listen() {
    RecorderPanel &panel = mParts.panel;
    connect(&panel, &RecorderPanel::changed, this, [this] { showPanel(); });
    connect(&panel, &RecorderPanel::ticked, this, [this] { showPanel(); });
    connect(&panel, &RecorderPanel::playbackShallStop, this, [this] {
        library().stopPlayback();
        if (mEditor)
            mEditor->manager().stopPlayback();
    });
    connect(&panel, &RecorderPanel::finished, this, [this](const FinishedRecording &recording) {
        mRecordingTab->showResult(recording);
        if (!isActiveWindow())
            mNotices.ready(recording.file);
    });
    connect(&panel, &RecorderPanel::failed, this, [this](const QString &sentence) {
        if (!isActiveWindow())
            mNotices.tell(Lang::windowRecordingFailed(), sentence);
    });
    connect(&panel, &RecorderPanel::missed, this,
            [this](const QString &sentence) { mNotices.tell(Lang::windowTaskMissed(), sentence); });
    connect(&panel, &RecorderPanel::taskIsNear, this, [this](const QString &text) {
        if (!isActiveWindow())
            mNotices.tell(Lang::toolsScheduleTaskTitle(), text);
    });
    connect(&panel, &RecorderPanel::shutdownIn, this, [this](int seconds) { showShutdown(seconds); });
    connect(&panel, &RecorderPanel::settled, this, [this] {
        if (!mParts.list.unsaved().isEmpty())
            mParts.panel.setSentence(mParts.list.unsaved());
        mLeaving.endOnceSettled();
    });
    connect(&mLeftovers, &LeftoversQuestion::recovered, this, [this] {
        library().itemsDidChange();
        mLeaving.endOnceSettled();
    });
    connect(&mLeaving, &WindowLeaving::mayEnd, this, &MainWindow::mayEnd);
    connect(mMenu, &WindowMenu::tasksWanted, this, [this] { openTasks(); });
    connect(mMenu, &WindowMenu::settingsWanted, this, [this] { openSettings(); });
    connect(mMenu, &WindowMenu::updatesWanted, this, &MainWindow::updatesWanted);
    connect(mMenu, &WindowMenu::quitWanted, this, [this] { mLeaving.leave(); });
    connect(&mParts.recorder, &ScheduledSession::startRefused, this,
            [this](const foundation::Sentence &sentence) { mParts.panel.refuseStart(sentence); });
    connect(mRecordingTab, &RecordingTab::playWanted, this, [this](const QString &file) {
        showLibrary();
        library().choose(file);
        library().play(file);
    });
    connect(mRecordingTab, &RecordingTab::editWanted, this,
            [this](const QString &file) { beginAudioEditWithURL(QUrl::fromLocalFile(file)); });
    connect(mRecordingTab, &RecordingTab::convertWanted, this, &MainWindow::openConverter);
    connect(mRecordingTab, &RecordingTab::addWanted, this, [this](const QStringList &files) {
        showLibrary();
        library().add(files);
    });
    connect(mRecordingTab, &RecordingTab::revealWanted, this, [this](const QString &file) { reveal({file}); });
    mAlerts->nameNewFile = [this](const QString &folder, const QString &extension) {
        return mRecordingTab->nameNewFile(folder, extension);
    };
    connect(mRecordingTab, &RecordingTab::nameWanted, this, [this] {
        bringToFront();
        showRecordPage();
    });
    connect(mRecordingTab, &RecordingTab::shutdownCancelled, this,
            [this] { mParts.recorder.schedule().cancelShutdown(); });
    const auto settle = [this](const foundation::Result<void> &done) {
        if (!done)
            mParts.panel.setSentence(done.failure().sentence);
    };
    connect(mRecordingTab, &RecordingTab::taskCancelled, this,
            [this, settle] { settle(mParts.recorder.schedule().skipNextStart()); });
    connect(mRecordingTab, &RecordingTab::taskWanted, this,
            [this, settle] { settle(mParts.recorder.schedule().makeSkippedStart()); });
    connect(mRecordingTab, &RecordingTab::virtualDeviceWanted, this, &MainWindow::virtualDeviceWanted);
    mParts.list.view = this;
}

void MainWindow::showRecordPage() { showTab(mRecordingTab); }

void MainWindow::showLibrary() { showTab(mLibraryPage); }

void MainWindow::showTab(QWidget *tab) {
    mPages->close();
    mTabs->setCurrentWidget(tab);
    if (tab == mRecordingTab)
        mRecordingTab->begin();
    else
        library().begin();
}

// A recording is never out of sight: in the title, on top, at the tab, and on every other page.
void MainWindow::showRecordingEverywhere() {
    const RecorderPanel &panel = mParts.panel;
    const bool isShown = panel.controls().startShowsStop;
    const QString name = QFileInfo(panel.file()).completeBaseName();
    setWindowTitle(isShown && !name.isEmpty() ? QStringLiteral("\u25CF %1 \u2013 %2").arg(name, AppSettings::appName())
                                              : AppSettings::appName());
    mRecordingLine->setVisible(isShown);
    const bool isPaused = panel.state() == RecorderState::Paused || panel.state() == RecorderState::WaitingForSound;
    mTabs->setTabIcon(mTabs->indexOf(mRecordingTab),
                      isShown
                          ? QIcon(drawing(QStringLiteral("dot"), isPaused ? Look::tokens().amber : Look::tokens().red,
                                          kDot, devicePixelRatioF()))
                          : QIcon());
    mPill->setInSight(isShown && (mPages->page() || mTabs->currentWidget() != mRecordingTab));
    mPill->tell(panel.display().duration, isPaused);
    mPill->setPauseEnabled(panel.controls().pauseEnabled);
}

SettingsPage &MainWindow::settings() {
    if (mSettings)
        return *mSettings;
    mSettings = new SettingsPage(mParts.songs, this);
    connect(mSettings, &SettingsPage::languageChanged, this, [] {
        foundation::NotificationCenter::defaultCenter().post(kNotificationChangeLanguage, AppSettings::appLanguage());
    });
    connect(mSettings, &SettingsPage::recordingChanged, this, [this] { mRecordingTab->showSettings(); });
    connect(mSettings, &SettingsPage::hotkeysChanged, this, &MainWindow::hotkeysChanged);
    mSettings->setTriggers(mTriggers);
    mSettings->setHotkeyTrouble(mHotkeyTrouble);
    return *mSettings;
}

TasksPage &MainWindow::tasks() {
    if (!mTasks)
        mTasks = new TasksPage(mParts.tasks, mParts.panel, this);
    return *mTasks;
}

ZQAudioConvertController &MainWindow::convertPage() {
    if (mConvert)
        return *mConvert;
    mConvert = new ZQAudioConvertController(mParts.converter, this);
    mConvertStrip = new ConvertStrip(*mConvert, this);
    connect(mConvertStrip, &ConvertStrip::showWanted, this, [this] { openConverter({}); });
    connect(mConvert, &ZQAudioConvertController::revealWanted, this, &MainWindow::reveal);
    connect(mConvert, &ZQAudioConvertController::progressed, this, [this] {
        if (mParts.desktop.launcher && mParts.converter.isConverting())
            mParts.desktop.launcher->showProgress(mParts.converter.progress().percent / 100);
    });
    connect(mConvert, &ZQAudioConvertController::ended, this, &MainWindow::conversionDidEnd);
    placeStrip();
    return *mConvert;
}

void MainWindow::reveal(const QStringList &files) {
    if (mParts.desktop.files)
        (void)mParts.desktop.files->reveal(files); // a person sees whether a folder opens
}

void MainWindow::openConverter(const QStringList &files) {
    if (!files.isEmpty())
        convertPage().add(files);
    mPages->open(convertPage());
}

EditorPage &MainWindow::editorPage() {
    if (mEditor)
        return *mEditor;
    mEditor = new EditorPage(mParts.clock, keptEdit(), this);
    mEditor->setRecordsSystemSound(recordsSystemSound());
    connect(mEditor, &EditorPage::playsIntoRecording, this, &MainWindow::askToPlay);
    connect(mEditor, &EditorPage::exported, this, [this](const QStringList &files) { library().add(files); });
    connect(mEditor, &EditorPage::revealWanted, this, &MainWindow::reveal);
    return *mEditor;
}

void MainWindow::beginAudioEditWithURL(const QUrl &url) {
    library().stopPlayback();
    editorPage().manager().editAudioWithURL(url);
    showEditor();
}

void MainWindow::showEditor() { mPages->open(editorPage()); }

// Above what stands at the bottom of the page that is shown.
void MainWindow::placeStrip() {
    if (!mConvertStrip)
        return;
    if (Page *page = mPages->page())
        page->takeStrip(*mConvertStrip);
    else if (mTabs->currentWidget() == mRecordingTab)
        mRecordingTab->takeStrip(*mConvertStrip);
    else
        library().takeStrip(*mConvertStrip);
    mConvertStrip->setElsewhere(mPages->page() != mConvert);
}

void MainWindow::conversionDidEnd() {
    if (mParts.desktop.launcher)
        mParts.desktop.launcher->hideProgress();
    if (!isActiveWindow())
        mNotices.tell(Lang::menuAudioConverter(), mConvert->summaryText());
}

void MainWindow::showShutdown(int seconds) {
    if (!mRecordingTab->showShutdown(seconds))
        return;
    bringToFront();
    showRecordPage();
}

void MainWindow::offerUpdate(const UpdateDescription &description) {
    (new UpdateWindow(description, this))->show(); // deletes itself
}

void MainWindow::tellNoUpdate(bool isLatest) {
    const QString text = isLatest
                             ? Lang::updateLatestVersion().replace(QLatin1String("[#AppName#]"), AppSettings::appName())
                             : Lang::windowNoUpdateAnswer();
    mAlerts->beginSheet({AlertStyle::Informational, AppSettings::appName(), text, {Lang::btnOK()}}, {});
}

const std::shared_ptr<KeptEdit> &MainWindow::keptEdit() {
    if (!mKeptEdit)
        mKeptEdit = std::make_shared<KeptEdit>();
    return mKeptEdit;
}

void MainWindow::offerEdit() {
    const QString name = keptEdit()->leftName();
    if (name.isEmpty())
        return;
    const auto texts = [name] {
        return Card::Texts{QStringLiteral("edit"),
                           Lang::windowEditorWasOpen(),
                           name,
                           {Lang::windowContinueEditing(), Lang::windowDiscard()}};
    };
    Card &card = mRecordingTab->cards().edit();
    connect(keptEdit().get(), &KeptEdit::overtaken, &card, &Card::putAway);
    card.ask(texts, [this](int answer) {
        if (answer == 0) {
            showEditor();
            editorPage().manager().continueLeft();
        } else if (answer == 1)
            keptEdit()->discard();
    });
}

void MainWindow::askToPlay(std::function<void()> play) {
    const AlertSheet sheet{AlertStyle::Warning,
                           AppSettings::appName(),
                           Lang::windowPlaysIntoRecording(),
                           {Lang::btnCancel(), Lang::btnPlay()}};
    mAlerts->beginSheet(sheet, [play = std::move(play)](int returnCode) {
        if (returnCode == MainWindowFace::kFirstButton + 1)
            play();
    });
}

bool MainWindow::recordsSystemSound() const { return isRecording() && includesSystemSound(mParts.recorder.source()); }

// Qt passes it on to all that stands in the window, and to its dialogs.
void MainWindow::changeLanguageText() {
    QEvent change(QEvent::LanguageChange);
    QCoreApplication::sendEvent(this, &change);
}

void MainWindow::showTexts() {
    showRecordingEverywhere();
    mTabs->setTabText(mTabs->indexOf(mRecordingTab), Lang::tabRecordTitle());
    mTabs->setTabText(mTabs->indexOf(mLibraryPage), Lang::tabPlaylistTitle());
    mMenu->showTexts();
    if (mStatusItem)
        mStatusItem->showTexts();
}

void MainWindow::bringToFront() {
    mLeaving.endSign();
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void MainWindow::showOrHide() {
    if (isVisible() && !isMinimized() && !mAlerts->isShowingSheet() && !mRecordingTab->cards().isAskingToLeave())
        hide();
    else
        bringToFront();
}

void MainWindow::showTriggers(const std::array<QString, 3> &triggers) {
    mTriggers = triggers;
    mRecordingTab->showTriggers(triggers);
    if (mSettings)
        mSettings->setTriggers(triggers);
}

void MainWindow::showHotkeyTrouble(const foundation::Sentence &sentence) {
    mHotkeyTrouble = sentence;
    if (mSettings)
        mSettings->setHotkeyTrouble(sentence);
}

bool MainWindow::isRecording() const { return mParts.recorder.isBusy(); }

bool MainWindow::isSettled() const { return mParts.recorder.isSettled(); }

bool MainWindow::isPrepareStartRecording() const { return mParts.session.isPrepareStartRecording(); }

void MainWindow::openPreferencesWindowAndShowRecordInterface() {
    bringToFront();
    openSettings();
    settings().openRecordingPage();
}

void MainWindow::setAudioInputSelectedStatus() { mRecordingTab->showSettings(); }

void MainWindow::showStatuses() { library().itemsDidChange(); }

void MainWindow::recordedListDidChange() { library().listDidChange(); }

void MainWindow::showPanel() {
    showRecordingEverywhere();
    if (!mLibraryTab)
        return;
    mStatusItem->showPanel();
    mLibraryTab->media().setRecording(isRecording());
    mLibraryTab->setRecordsSystemSound(recordsSystemSound());
    if (mEditor)
        mEditor->setRecordsSystemSound(recordsSystemSound());
    mLeaving.recordingDidChange();
    if (const RecordedAudioInfo *item = mParts.session.currentFile().item)
        mLibraryTab->itemDidChange(*item);
}

void MainWindow::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange) {
        mMenu->showIcons(palette());
        showRecordingEverywhere();
    }
    if (event->type() == QEvent::LanguageChange)
        showTexts();
    QMainWindow::changeEvent(event);
}

void MainWindow::closeEvent(QCloseEvent *event) {
    event->ignore(); // The application ends us.
    mLeaving.close();
}

void MainWindow::showAgain() {
    mLeaving.stay();
    bringToFront();
}

void MainWindow::stopAndQuit() { mLeaving.stopAndQuit(); }

void MainWindow::offerLeftovers() { mLeftovers.ask(); }

void MainWindow::rememberPlace() {
    if (isVisible())
        (void)ZQUserDefaultSetValue_Object(saveGeometry(), kGeometry); // a failure is logged by the store
}

} // namespace cantorel::ui
