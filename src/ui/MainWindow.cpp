#include "ui/MainWindow.h"

#include "lang/Lang.h"
#include "recording/ScheduledSession.h"
#include "settings/AppSettings.h"
#include "ui/Icons.h"
#include "ui/LibraryTab.h"
#include "ui/RecordingTab.h"

#include <QEvent>
#include <QTabWidget>

namespace cantorel::ui {

namespace {

constexpr QSize kSmallest(560, 420), kFirst(820, 600);

} // namespace

MainWindow::MainWindow(const Parts &parts)
    : mParts(parts),
      mTabs(new QTabWidget(this)),
      mRecordingTab(new RecordingTab(parts.panel, parts.recorder, parts.session, this)),
      mLibraryTab(new LibraryTab(parts.list, this)) {
    setWindowIcon(applicationIcon());
    setMinimumSize(kSmallest);
    resize(kFirst);
    mTabs->setDocumentMode(true);
    mTabs->setObjectName(QStringLiteral("tabs"));
    mTabs->addTab(mRecordingTab, QString());
    mTabs->addTab(mLibraryTab, QString());
    setCentralWidget(mTabs);
    listen();
    showIcons();
    changeLanguageText();
}

MainWindow::~MainWindow() {
    mParts.list.view = nullptr;
    mParts.panel.changed = {};
    mParts.panel.playbackShallStop = {};
    mParts.panel.levelCame = {};
    mParts.panel.countdownDidChange = {};
}

void MainWindow::listen() {
    mParts.panel.changed = [this] { showPanel(); };
    mParts.panel.playbackShallStop = [this] { mLibraryTab->stopPlayback(); };
    mParts.list.view = this;
    mParts.panel.levelCame = [this] { mRecordingTab->levelCame(); };
    mParts.panel.countdownDidChange = [this](const TaskCountdown &) { mRecordingTab->showPanel(); };
    mParts.recorder.trouble = [this](const QString &sentence) { mParts.panel.setSentence(sentence); };
}

void MainWindow::changeLanguageText() {
    setWindowTitle(AppSettings::appName());
    mTabs->setTabText(mTabs->indexOf(mRecordingTab), Lang::tabRecordTitle());
    mTabs->setTabText(mTabs->indexOf(mLibraryTab), Lang::tabPlaylistTitle());
    mRecordingTab->changeLanguageText();
    mLibraryTab->changeLanguageText();
}

void MainWindow::recordedListDidChange() { mLibraryTab->listDidChange(); }

void MainWindow::showPanel() {
    mRecordingTab->showPanel();
    if (const RecordedAudioInfo *item = mParts.session.currentItem())
        mLibraryTab->itemDidChange(*item);
}

void MainWindow::showIcons() {
    mTabs->setTabIcon(mTabs->indexOf(mRecordingTab), icon(QStringLiteral("record"), palette()));
    mTabs->setTabIcon(mTabs->indexOf(mLibraryTab), icon(QStringLiteral("library"), palette()));
}

void MainWindow::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange)
        showIcons();
    QMainWindow::changeEvent(event);
}

} // namespace cantorel::ui
