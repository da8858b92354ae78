#include "ui/EditorPage.h"

#include "editor/views/EditorAccessibility.h"
#include "editor/views/WaveOverview.h"
#include "editor/views/ZQAudioCutInfoView.h"
#include "lang/Lang.h"
#include "settings/AppSettings.h"
#include "ui/Deck.h"
#include "ui/DigitLabel.h"
#include "ui/EditorPanel.h"
#include "ui/FileDialogs.h"
#include "ui/Icons.h"
#include "ui/PageParts.h"
#include "ui/PlayButton.h"
#include "ui/WaveArea.h"
#include "ui/look/Look.h"

#include <QAccessible>
#include <QBoxLayout>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
#include <QToolButton>

#include <utility>

namespace cantorel::ui {

namespace {

constexpr qreal kPositionSize = 1.7;
constexpr double kZoomStep = 2;
constexpr int kDeckHeight = 88, kLeadWidth = 148;
constexpr double kStep = 1, kSmallStep = 0.1; // seconds that an arrow key goes

// The arrow keys are the editor's.
class Scrolled : public QScrollArea {
public:
    using QScrollArea::QScrollArea;

protected:
    void keyPressEvent(QKeyEvent *event) override { event->ignore(); }
};

} // namespace

EditorPage::EditorPage(foundation::Clock &clock, std::shared_ptr<KeptEdit> kept, QWidget *parent)
    : Page(parent),
      mManager(clock, std::move(kept)),
      mOpen(&addAction(QStringLiteral("openAudio"))),
      mInsert(&addAction(QStringLiteral("insertAudio"))),
      mExport(&addAction(QStringLiteral("exportAudio"))),
      mHeader(*this, *mInsert),
      mInsertMenu(new QMenu(this)),
      mWave(new WaveArea(mManager, this)),
      mOverview(new WaveOverview(mManager.geometry(), mManager.cuts(), this)),
      mZoomOut(new QToolButton(this)),
      mZoomIn(new QToolButton(this)),
      mFrom(new DigitLabel(this)),
      mReadout(new DigitLabel(this)),
      mTo(new DigitLabel(this)),
      mPosition(new DigitLabel(this)),
      mLength(new DigitLabel(this)),
      mPlay(new PlayButton(this)),
      mPlayCuts(new QPushButton(this)),
      mWhich(new QLabel(this)),
      mHint(new QLabel(this)),
      mNews(new Strip(this)),
      mUndo(&mNews->addAction(QStringLiteral("undoEdit"), false)),
      mReveal(&mNews->addAction(QStringLiteral("revealExported"), false)),
      mPanel(new EditorPanel(mManager, this)) {
    installEditorAccessibility();
    setAcceptDrops(true);
    auto *content = new QWidget(this);
    auto *column = new QVBoxLayout(content);
    column->setContentsMargins({});
    column->setSpacing(0);
    auto *scrolled = new Scrolled(this);
    scrolled->setFrameShape(QFrame::NoFrame);
    scrolled->setWidgetResizable(true);
    scrolled->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrolled->setFocusPolicy(Qt::NoFocus);
    auto *whole = new QWidget;
    auto *parts = new QVBoxLayout(whole);
    parts->setContentsMargins({});
    parts->setSpacing(0);
    parts->addWidget(makeUpper(), 1);
    mNews->setObjectName(QStringLiteral("editorStrip"));
    mNews->text().setObjectName(QStringLiteral("editorNews"));
    mNews->close().setObjectName(QStringLiteral("editorNewsClose"));
    parts->addWidget(mNews);
    auto *deck = new Deck(this);
    mCutInfo = new ZQAudioCutInfoView(mManager, makeLead(), deck);
    auto *bar = new QHBoxLayout(deck);
    bar->setContentsMargins(measure::kMargin, measure::kGap, measure::kMargin, measure::kGap);
    bar->addStrut(Look::tall(*this, kDeckHeight) - 2 * measure::kGap);
    bar->addWidget(mCutInfo);
    parts->addWidget(deck);
    scrolled->setWidget(whole); // which it owns now
    column->addWidget(scrolled, 1);
    setContent(*content);
    setPanel(*mPanel);
    makeActions();
    listen();
    showIcons();
    showTexts();
}

EditorPage::~EditorPage() { mManager.disconnect(this); }

QWidget *EditorPage::makeUpper() {
    auto *upper = new QWidget(this);
    auto *column = new QVBoxLayout(upper);
    column->setContentsMargins(measure::kMargin, 2 * measure::kGap, measure::kMargin, 2 * measure::kGap);
    column->setSpacing(measure::kGap);
    mOverview->setObjectName(QStringLiteral("waveOverview"));
    column->addWidget(mOverview);
    column->addWidget(mWave, 1);
    auto *times = new QHBoxLayout;
    for (DigitLabel *label : {mFrom, mReadout, mTo}) {
        label->setFont(Look::font(*this, text_size::kLabel));
        label->setForegroundRole(QPalette::PlaceholderText);
    }
    mReadout->setObjectName(QStringLiteral("waveReadout"));
    times->addWidget(mFrom);
    times->addStretch();
    times->addWidget(mReadout);
    times->addStretch();
    times->addWidget(mTo);
    column->addLayout(times);
    auto *transport = new QHBoxLayout;
    transport->setSpacing(measure::kGap + measure::kGap / 2);
    mPlay->setFocusPolicy(Qt::TabFocus); // A click leaves the keys with the wave.
    mPlay->setObjectName(QStringLiteral("playEdited"));
    mPlayCuts->setFocusPolicy(Qt::TabFocus);
    mPlayCuts->setObjectName(QStringLiteral("playCuts"));
    mPlayCuts->setCheckable(true);
    mPosition->setObjectName(QStringLiteral("editorPosition"));
    mPosition->setFont(Look::font(*this, kPositionSize, QFont::Light));
    transport->addWidget(mPlay);
    transport->addWidget(mPlayCuts);
    transport->addStretch();
    mZoomOut->setObjectName(QStringLiteral("zoomOut"));
    mZoomIn->setObjectName(QStringLiteral("zoomIn"));
    for (QToolButton *button : {mZoomOut, mZoomIn}) {
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::TabFocus);
        button->setIconSize(QSize(1, 1) * Look::scaled(*this, measure::kIcon));
        transport->addWidget(button);
    }
    transport->addWidget(mPosition);
    column->addLayout(transport);
    return upper;
}

QWidget *EditorPage::makeLead() {
    auto *lead = new QWidget(this);
    auto *lines = new QVBoxLayout(lead);
    lines->setContentsMargins({});
    lines->setSpacing(measure::kGap / 2);
    lines->addStretch();
    lines->addWidget(mWhich);
    lines->addWidget(mLength);
    lines->addWidget(mHint);
    lines->addStretch();
    mWhich->setObjectName(QStringLiteral("whichCut"));
    mWhich->setFont(Look::font(*this, text_size::kBody, QFont::Bold));
    mLength->setObjectName(QStringLiteral("cutLength"));
    mLength->setFont(Look::font(*this, text_size::kSecondLine));
    mLength->setForegroundRole(QPalette::PlaceholderText);
    mHint->setObjectName(QStringLiteral("cutHint"));
    mHint->setWordWrap(true);
    mHint->setForegroundRole(QPalette::PlaceholderText);
    lead->setMinimumWidth(Look::scaled(*this, kLeadWidth));
    return lead;
}

void EditorPage::makeActions() {
    mInsert->setPopupMode(QToolButton::InstantPopup);
    mInsert->setMenu(mInsertMenu);
    Look::makeFilled(*mExport);
    mExport->setAutoRaise(false);
    connect(mOpen, &QToolButton::clicked, this, [this] { open(); });
    connect(mExport, &QToolButton::clicked, &mManager, &ZQAudioEditorManager::showExportInfo);
    connect(mPlay, &PlayButton::clicked, this, [this] { play([this] { mManager.playOrPause(); }); });
    connect(mPlayCuts, &QPushButton::clicked, this, [this] { play([this] { mManager.playCuts(); }); });
    for (QPushButton *button : {&mCutInfo->add(), &mCutInfo->remove(), &mCutInfo->clear(), &mCutInfo->find()})
        button->setFocusPolicy(Qt::TabFocus);
    connect(&mCutInfo->add(), &QPushButton::clicked, &mManager, &ZQAudioEditorManager::addNewCutEntity);
    connect(&mCutInfo->remove(), &QPushButton::clicked, &mManager, &ZQAudioEditorManager::deleteEntity);
    connect(&mCutInfo->clear(), &QPushButton::clicked, &mManager, &ZQAudioEditorManager::clearAllSelectedCutEntitys);
    connect(&mCutInfo->find(), &QPushButton::clicked, this, [this] {
        openPanel();
        mPanel->ask(EditorPanel::Asks::Silences);
    });
    connect(this, &Page::panelClosed, &mManager, &ZQAudioEditorManager::dropFound);
    connect(mUndo, &QPushButton::clicked, this, [this] {
        tell(Strip::Kind::Hint, {}, false);
        mWave->head().setFocus(Qt::OtherFocusReason); // The button goes.
        mManager.undo();
    });
    connect(mReveal, &QPushButton::clicked, this, [this] { Q_EMIT revealWanted(mMade); });
    connect(mNews, &Strip::closed, this, [this] { tell(Strip::Kind::Hint, {}, false); });
    const auto onPage = [this](const QKeySequence &keys, auto action) {
        auto *shortcut = new QShortcut(keys, this);
        shortcut->setContext(Qt::WidgetWithChildrenShortcut);
        connect(shortcut, &QShortcut::activated, this, action);
    };
    const auto zoomBy = [this](double factor) { return [this, factor] { mManager.zoom(factor); }; };
    connect(mZoomIn, &QToolButton::clicked, this, zoomBy(kZoomStep));
    connect(mZoomOut, &QToolButton::clicked, this, zoomBy(1 / kZoomStep));
    for (const QKeySequence &keys : QKeySequence::keyBindings(QKeySequence::ZoomIn))
        onPage(keys, zoomBy(kZoomStep));
    for (const QKeySequence &keys : QKeySequence::keyBindings(QKeySequence::ZoomOut))
        onPage(keys, zoomBy(1 / kZoomStep));
    onPage(QKeySequence(Qt::CTRL | Qt::Key_0), zoomBy(0));
    onPage(QKeySequence::Open, [this] { open(); });
    onPage(QKeySequence::Save, [this] { mManager.showExportInfo(); });
    onPage(QKeySequence::Undo, [this] { mManager.undo(); });
    onPage(QKeySequence::Redo, [this] { mManager.redo(); });
}

void EditorPage::listen() {
    using Manager = ZQAudioEditorManager;
    connect(&mManager, &Manager::stateChanged, this, [this] { showState(); });
    connect(&mManager, &Manager::waveChanged, this, [this] {
        mWave->wave().waveDidChange();
        showHead();
        showView();
    });
    connect(&mManager, &Manager::cutsChanged, this, [this] { showCuts(); });
    connect(&mManager, &Manager::headMoved, this, [this] { showHead(); });
    connect(&mManager, &Manager::told, this,
            [this](const foundation::Sentence &trouble) { tell(Strip::Kind::Error, Lang::sentence(trouble), false); });
    connect(&mManager, &Manager::inserted, this, [this](InsertType type, const QString &name) {
        tell(Strip::Kind::Result, name.isEmpty() ? insertText(type) : insertText(type) + QStringLiteral(": ") + name,
             true);
    });
    connect(&mManager, &Manager::insertInfoWanted, this, [this] {
        openPanel();
        mPanel->ask(EditorPanel::Asks::Insert);
    });
    connect(&mManager, &Manager::exportInfoWanted, this, [this] {
        openPanel();
        mPanel->ask(EditorPanel::Asks::Export);
    });
    connect(&mManager, &Manager::fileNameWanted, this, [this] { askForName(); });
    connect(&mManager, &Manager::folderWanted, this, [this] {
        chooseFolder(*this, Lang::toolsEditorExportAs(), AppSettings::getUserExportPath(),
                     [this](const QString &folder) {
                         mManager.savePanelShouldClose(folder + QLatin1Char('/') + mManager.proposedName());
                     });
    });
    connect(&mManager, &Manager::openTheCompletedAudios, this, [this](const QStringList &files) {
        const QString name = QFileInfo(files.constFirst()).fileName();
        const QString more = files.size() > 1 ? QStringLiteral(" + %1").arg(files.size() - 1) : QString();
        tell(Strip::Kind::Result,
             Lang::toolsEditorSoundExportedTo().replace(QLatin1String("[#FileName#]"), name + more), false, files);
        Q_EMIT exported(files);
        Q_EMIT revealWanted({files.constFirst()});
    });
    connect(mPanel, &EditorPanel::done, this, [this] { closePanel(); });
    ZQAudioPlayingPointView &head = mWave->head();
    connect(&head, &ZQAudioPlayingPointView::pointed, this, [this](QPointF point) { showReadout(point); });
    connect(&head, &ZQAudioPlayingPointView::left, this, [this] { showReadout({}); });
    connect(&head, &ZQAudioPlayingPointView::doubleClicked, this,
            [this](QPointF point) { play([this, point] { mManager.playCut(point); }); });
    connect(&head, &ZQAudioPlayingPointView::zoomWanted, this,
            [this](double factor, double x) { mManager.zoom(factor, x); });
    connect(&head, &ZQAudioPlayingPointView::scrollWanted, this, [this](double points) {
        mManager.scrollTo(mManager.geometry().viewStart() + points * mManager.geometry().scaleOffset());
    });
    connect(mOverview, &WaveOverview::scrollWanted, &mManager, &Manager::scrollTo);
}

void EditorPage::edit(const QString &file) {
    tell(Strip::Kind::Hint, {}, false);
    mManager.editAudioWithURL(QUrl::fromLocalFile(file));
}

void EditorPage::begin() {
    if (mManager.state() == ZQAudioEditorManager::State::Empty)
        mOpen->setFocus(Qt::OtherFocusReason);
    else
        mWave->head().setFocus(Qt::OtherFocusReason);
}

// What plays already was agreed to.
void EditorPage::play(std::function<void()> begin) {
    if (!mConsent.isWanted() || mManager.player().isPlaying())
        return begin();
    Q_EMIT playsIntoRecording([this, begin = std::move(begin)] {
        mConsent.give();
        begin();
    });
    showState(); // The button that was pressed is as it was.
}

void EditorPage::open() {
    chooseFile(*this, Lang::toolsEditormenuLoadFile(), AppSettings::getUserImportPath(), soundFiles(),
               [this](const QString &file) {
                   AppSettings::setUserImportPath(QFileInfo(file).path());
                   edit(file);
                   mWave->head().setFocus(Qt::OtherFocusReason);
               });
}

void EditorPage::chooseInsert(InsertType type) {
    chooseFile(*this, insertText(type), AppSettings::getUserImportPath(), soundFiles(),
               [this, type](const QString &file) { mManager.insertFile(type, file); });
}

void EditorPage::askForName() {
    chooseNewFile(*this, Lang::toolsEditorExportAs(), AppSettings::getUserExportPath(), mManager.proposedName(),
                  [this](const QString &path) { mManager.savePanelShouldClose(path); });
}

// What is shown.

void EditorPage::showState() {
    using State = ZQAudioEditorManager::State;
    const bool isEmpty = mManager.state() == State::Empty;
    mHeader.setAudioFileName(isEmpty ? Lang::toolsEditorTitle() : mManager.audioFileName());
    mHeader.setAudioFileDurationFormat(isEmpty ? QString() : mManager.audioFileDuration());
    mHeader.setToolsButtonEnable(mManager.canInsert());
    mExport->setEnabled(mManager.canExport());
    mOpen->setEnabled(mManager.state() != State::Exporting);
    const bool isBusy = mManager.state() == State::Analysing || mManager.state() == State::Exporting;
    const QString word = isEmpty                                 ? Lang::toolsEditorLoadFileToEdit()
                         : mManager.state() == State::Unreadable ? Lang::sentence(mManager.trouble())
                                                                 : mManager.progressText();
    mWave->say(word, isBusy, mManager.progress() < 0 ? -1 : qRound(100 * mManager.progress()));
    ZQAudioPlayer &player = mManager.player();
    mPlay->setEnabled(player.isPlayButtonEnabled());
    mPlay->setPlaying(player.getPlayButtonState());
    mPlay->setAccessibleName(player.getPlayButtonState() ? Lang::btnPause() : Lang::btnPlay());
    mPlayCuts->setEnabled(player.isCutsPlayButtonEnabled());
    mPlayCuts->setChecked(player.getCutsPlayButtonState());
    mCutInfo->setAddCutAreaFunctionEnable(mManager.canAdd());
    mCutInfo->setDeleteAreaFunctionEnable(mManager.canDelete());
    mCutInfo->setClearButtonEnable(mManager.canClear());
    mCutInfo->find().setEnabled(mManager.canFind());
    mCutInfo->setcutAreaTimeControllerEnable(mManager.canType());
    showView();
}

void EditorPage::showCuts() {
    mWave->wave().cutsDidChange();
    mWave->edges().cutsDidChange();
    const CutList &cuts = mManager.cuts();
    const ZQAudioCutEntity *focused = cuts.getFocusOnCutEntity();
    mCutInfo->setMinTime(0);
    mCutInfo->setMaxTime(mManager.AudioDataRequestDelegate_getCurrentAudioDuration());
    mCutInfo->showCutAudioInfoWithStartTime(focused ? focused->startTime() : 0, focused ? focused->endTime() : 0);
    const auto count = cuts.all().size();
    const QString which = Lang::toolsEditorSelection() + QLatin1Char(' ')
                          + Lang::windowSoMany()
                                .replace(QLatin1String("[#Count#]"), QString::number(cuts.indexOf(focused) + 1))
                                .replace(QLatin1String("[#Total#]"), QString::number(count));
    mWhich->setText(which);
    mWhich->setVisible(focused);
    mLength->setText(focused ? TimeField::wholeText(focused->endTime() - focused->startTime()) : QString());
    mLength->setVisible(focused);
    mHint->setText(Lang::windowAddMarks() + QLatin1Char(' ') + Lang::windowWholeSeconds());
    mHint->setVisible(!focused);
    QString name = Lang::windowWaveform();
    if (focused)
        name += QStringLiteral(", %1, %2 \u2013 %3")
                    .arg(which, TimeField::wholeText(focused->startTime()), TimeField::wholeText(focused->endTime()));
    else if (count > 0)
        name += QStringLiteral(", %1: %2").arg(Lang::toolsEditorSelection()).arg(count);
    mWave->head().setAccessibleName(name);
    showState();
}

void EditorPage::showHead() {
    mWave->head().updatePlayingPoint(mManager.currentPlayingPoint());
    mPosition->setText(TimeField::wholeText(mManager.playTime()));
    mPosition->setAccessibleName(Lang::windowPosition() + QStringLiteral(": ") + mPosition->text());
}

void EditorPage::showView() {
    mOverview->showView();
    mZoomIn->setEnabled(mManager.canZoom(kZoomStep));
    mZoomOut->setVisible(mManager.canZoom(1 / kZoomStep));
    const WaveGeometry &geometry = mManager.geometry();
    const bool isPart = geometry.zoom() > 1;
    mFrom->setText(isPart ? TimeField::wholeText(geometry.viewStart()) : QStringLiteral("00:00:00"));
    mTo->setText(isPart ? TimeField::wholeText(geometry.viewStart() + geometry.viewSeconds())
                        : mManager.audioFileDuration());
}

void EditorPage::showReadout(std::optional<QPointF> point) {
    const bool isShown = point && mManager.isReady();
    mReadout->setText(isShown ? TimeField::wholeText(qMin<double>(mManager.geometry().transformTimeWithPoint(*point),
                                                                  mManager.geometry().audioDuration()))
                              : QString());
}

void EditorPage::tell(Strip::Kind kind, const QString &text, bool canUndo, const QStringList &files) {
    mMade = files;
    mUndo->setVisible(canUndo);
    mReveal->setVisible(!files.isEmpty());
    mNews->tell(kind, text);
}

void EditorPage::showTexts() {
    mOpen->setText(Lang::btnOpen());
    mInsert->setText(Lang::toolsEditorButtonInsert());
    mExport->setText(Lang::toolsEditormenuExport());
    mPlayCuts->setAccessibleName(Lang::windowPlaySelections());
    mPlayCuts->setToolTip(Lang::windowPlaySelections());
    fit();
    mCutInfo->showTexts(Lang::toolsEditorBegin(), Lang::toolsEditorEnd());
    mCutInfo->add().setText(Lang::btnAdd());
    mCutInfo->add().setToolTip(Lang::toolsEditorAddCut());
    mCutInfo->remove().setText(Lang::btnDelete());
    mCutInfo->remove().setToolTip(Lang::toolsEditorDeleteCut());
    mCutInfo->clear().setText(Lang::btnClear());
    mCutInfo->find().setText(Lang::windowBetweenSilences());
    mUndo->setText(Lang::windowUndo());
    mReveal->setText(Lang::btnShowInFinder());
    mNews->close().setToolTip(Lang::btnClose());
    mNews->close().setAccessibleName(Lang::btnClose());
    for (const auto &[button, text] :
         {std::pair<QWidget *, QString>(mZoomIn, Lang::windowZoomIn()), {mZoomOut, Lang::windowZoomOut()}}) {
        button->setToolTip(text);
        button->setAccessibleName(text);
    }
    mOverview->setAccessibleName(Lang::windowWholeSound());
    mInsertMenu->clear();
    mInsertMenu->addAction(Lang::toolsEditormenuInsertSilence(), this,
                           [this] { mManager.actionForEditToolInsertMute(); });
    for (const auto &[type, text] : {std::pair(InsertType::Append, Lang::toolsEditormenuAppendSound()),
                                     std::pair(InsertType::Insert, Lang::toolsEditormenuInsertSound()),
                                     std::pair(InsertType::Mix, Lang::toolsEditormenuMixSound()),
                                     std::pair(InsertType::Overwrite, Lang::toolsEditormenuOverwrite())})
        mInsertMenu->addAction(text, this, [this, type = type] { chooseInsert(type); });
    mPanel->showTexts();
    showCuts();
    showHead();
}

void EditorPage::showIcons() {
    mOpen->setIcon(icon(QStringLiteral("folder"), palette()));
    mInsert->setIcon(icon(QStringLiteral("plus"), palette()));
    QPalette filled = palette();
    filled.setColor(QPalette::ButtonText, Look::tokens().onAccent);
    mExport->setIcon(icon(QStringLiteral("export"), filled));
    mPlayCuts->setIcon(icon(QStringLiteral("playCuts"), palette()));
    mZoomIn->setIcon(icon(QStringLiteral("zoomIn"), palette()));
    mZoomOut->setIcon(icon(QStringLiteral("zoomOut"), palette()));
    mCutInfo->add().setIcon(icon(QStringLiteral("plus"), palette()));
    mCutInfo->remove().setIcon(icon(QStringLiteral("wastebasket"), palette()));
    mCutInfo->clear().setIcon(icon(QStringLiteral("close"), palette()));
    mCutInfo->find().setIcon(icon(QStringLiteral("split"), palette()));
}

// The person does.

// What neither a field nor a button has a use for.
bool EditorPage::act(const QKeyEvent &event) {
    const bool isShifted = event.modifiers() & Qt::ShiftModifier;
    if (event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier) || !mManager.isReady())
        return false;
    switch (event.key()) {
    case Qt::Key_Space:
        play([this, isShifted] { isShifted ? mManager.playCuts() : mManager.playOrPause(); });
        return true;
    case Qt::Key_Left:
    case Qt::Key_Right:
        mManager.step((event.key() == Qt::Key_Left ? -1 : 1) * (isShifted ? kSmallStep : kStep));
        return true;
    case Qt::Key_Up:
    case Qt::Key_Down:
        mManager.focusNeighbour(event.key() == Qt::Key_Up ? -1 : 1);
        return true;
    case Qt::Key_Insert:
        mManager.addNewCutEntity();
        return true;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        mManager.deleteEntity();
        return true;
    case Qt::Key_BracketLeft:
    case Qt::Key_BracketRight:
        mManager.moveEdgeToHead(event.key() == Qt::Key_BracketLeft ? CutList::Edge::Start : CutList::Edge::End);
        return true;
    default:
        return false;
    }
}

void EditorPage::keyPressEvent(QKeyEvent *event) {
    const bool isInPanel = mPanel->isAncestorOf(focusWidget());
    if (isInPanel || !act(*event))
        Page::keyPressEvent(event);
}

void EditorPage::dragEnterEvent(QDragEnterEvent *event) {
    if (localFiles(*event->mimeData()).isEmpty())
        return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void EditorPage::dropEvent(QDropEvent *event) {
    event->setDropAction(Qt::CopyAction); // Nothing is moved.
    event->accept();
    mManager.DrageDelegate_SendTheDrageFileList(localFiles(*event->mimeData()));
    mWave->head().setFocus(Qt::OtherFocusReason);
}

// Words give way where there is no room for them.
void EditorPage::fit() {
    const int room = mWave->width();
    mPlayCuts->setText(Lang::windowPlaySelections());
    if (mPlay->sizeHint().width() + mPlayCuts->sizeHint().width() + mPosition->sizeHint().width()
            + 2 * mZoomIn->sizeHint().width() + 8 * measure::kGap
        > room)
        mPlayCuts->setText({});
}

void EditorPage::resizeEvent(QResizeEvent *event) {
    Page::resizeEvent(event);
    fit();
}

void EditorPage::showEvent(QShowEvent *event) {
    Page::showEvent(event);
    mManager.comeBack();
    showState();
    fit();
}

void EditorPage::hideEvent(QHideEvent *event) {
    if (!event->spontaneous())
        mManager.leave();
    Page::hideEvent(event);
}

} // namespace cantorel::ui
