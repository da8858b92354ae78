#include "ui/ZQAudioConvertController.h"

#include "lang/Lang.h"
#include "ui/ConvertDelegates.h"
#include "ui/ConvertOptions.h"
#include "ui/Deck.h"
#include "ui/FileDialogs.h"
#include "ui/Icons.h"
#include "ui/PageParts.h"
#include "ui/RecordingsTable.h"
#include "ui/look/Look.h"

#include <QBoxLayout>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
#include <QToolButton>

#include <algorithm>
#include <chrono>

namespace cantorel::ui {

namespace {

using namespace std::chrono_literals;

constexpr auto kFrame = 100ms;
constexpr int kBarHeight = 72, kCountWidth = 112, kLeastName = 180, kLeastRows = 2;

QString soMany(const ZQAudioConvertManager::Progress &progress) {
    return Lang::windowSoMany()
        .replace(QLatin1String("[#Count#]"), QString::number(qMin(progress.ended + 1, progress.rows)))
        .replace(QLatin1String("[#Total#]"), QString::number(progress.rows));
}

} // namespace

ZQAudioConvertController::ZQAudioConvertController(ZQAudioConvertManager &queue, QWidget *parent)
    : Page(parent),
      mQueue(queue),
      mModel(queue),
      mAdd(&addAction(QStringLiteral("addToConvert"))),
      mUp(&addAction(QStringLiteral("convertUp"))),
      mDown(&addAction(QStringLiteral("convertDown"))),
      mRemove(&addAction(QStringLiteral("convertRemove"))),
      mTable(new RecordingsTable(this)),
      mStatuses(new ConvertStatusDelegate(mTable)),
      mEmpty(new QLabel(this)),
      mOptions(new ConvertOptions(queue, this)),
      mCount(new QLabel(this)),
      mTime(new QLabel(this)),
      mBar(new QProgressBar(this)),
      mReveal(new QPushButton(this)),
      mStart(new QPushButton(this)) {
    setAcceptDrops(true);
    mQueue.delegate = this;
    auto *content = new QWidget(this);
    auto *column = new QVBoxLayout(content);
    column->setContentsMargins({});
    column->setSpacing(0);
    auto *upper = new QWidget;
    auto *rows = new QVBoxLayout(upper);
    rows->setContentsMargins({});
    rows->setSpacing(0);
    rows->addWidget(makeTable(), 1);
    rows->addWidget(mOptions);
    auto *scrolled = new QScrollArea(this);
    scrolled->setFrameShape(QFrame::NoFrame);
    scrolled->setWidgetResizable(true);
    scrolled->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrolled->setFocusPolicy(Qt::NoFocus);
    scrolled->setWidget(upper); // which it owns now
    column->addWidget(scrolled, 1);
    column->addWidget(makeBar());
    setContent(*content);
    connect(mAdd, &QToolButton::clicked, this,
            [this] { chooseFiles(*this, Lang::windowSoundFiles(), [this](const QStringList &files) { add(files); }); });
    connect(mUp, &QToolButton::clicked, this, [this] { move(-1); });
    connect(mDown, &QToolButton::clicked, this, [this] { move(1); });
    connect(mRemove, &QToolButton::clicked, this, [this] { remove(); });
    mFrames.setInterval(kFrame);
    connect(&mFrames, &QTimer::timeout, this, [this] {
        mStatuses->step();
        mTable->viewport()->update(0, 0, mTable->columnWidth(ConvertModel::Status), mTable->viewport()->height());
    });
    mAdded.setSingleShot(true);
    connect(&mAdded, &QTimer::timeout, this, [this] {
        mModel.rowsWereAdded();
        showState();
    });
    auto *opens = new QShortcut(QKeySequence::Open, this);
    opens->setContext(Qt::WidgetWithChildrenShortcut);
    connect(opens, &QShortcut::activated, mAdd, &QToolButton::click);
    showIcons();
    showTexts();
}

ZQAudioConvertController::~ZQAudioConvertController() { mQueue.delegate = nullptr; }

QWidget *ZQAudioConvertController::makeTable() {
    mTable->setObjectName(QStringLiteral("convertRows"));
    mTable->setModel(&mModel);
    mTable->setTileColumn(ConvertModel::Action);
    mTable->setDragEnabled(false);
    auto *rows = new ConvertRowDelegate(mTable);
    rows->isHovered = mStatuses->isHovered = [this](int row) { return row == mTable->hoveredRow(); };
    mTable->setItemDelegate(rows);
    mTable->setItemDelegateForColumn(ConvertModel::Status, mStatuses);
    mTable->horizontalHeader()->hide();
    mTable->horizontalHeader()->setMinimumSectionSize(1);
    mTable->horizontalHeader()->setSectionResizeMode(ConvertModel::Name, QHeaderView::Stretch);
    mTable->horizontalHeader()->moveSection(ConvertModel::Action, ConvertModel::Type); // beside the name
    mTable->verticalHeader()->setDefaultSectionSize(Look::scaled(*this, measure::kRow));
    mTable->setMinimumHeight(kLeastRows * Look::scaled(*this, measure::kRow));
    connect(mTable, &RecordingsTable::tileClicked, this, [this](int row) { act(row); });
    connect(mTable, &RecordingsTable::customContextMenuRequested, this, [this](const QPoint &at) { showMenu(at); });
    connect(mTable->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] { showState(); });
    mEmpty->setObjectName(QStringLiteral("convertEmpty"));
    mEmpty->setAlignment(Qt::AlignCenter);
    mEmpty->setWordWrap(true);
    auto *box = new QWidget(this);
    auto *stacked = new QVBoxLayout(box);
    stacked->setContentsMargins({});
    stacked->addWidget(mTable, 1);
    stacked->addWidget(mEmpty, 1);
    return box;
}

QWidget *ZQAudioConvertController::makeBar() {
    auto *deck = new Deck(this);
    deck->setMinimumHeight(Look::tall(*this, kBarHeight));
    mCount->setObjectName(QStringLiteral("convertCount"));
    mTime->setObjectName(QStringLiteral("convertTime"));
    mBar->setObjectName(QStringLiteral("convertBar"));
    mReveal->setObjectName(QStringLiteral("revealConverted"));
    mStart->setObjectName(QStringLiteral("startConvert"));
    mBar->setTextVisible(false);
    for (QLabel *label : {mCount, mTime})
        label->setWordWrap(true);
    auto *row = rowIn(deck, 2 * measure::kGap);
    row->setContentsMargins(measure::kMargin, measure::kGap, measure::kMargin, measure::kGap);
    auto *lines = new QVBoxLayout;
    lines->setSpacing(0);
    lines->addStretch();
    lines->addWidget(mCount);
    lines->addWidget(mTime);
    lines->addStretch();
    row->addLayout(lines, 2);
    row->addWidget(mBar, 5);
    row->addWidget(mReveal);
    row->addWidget(mStart);
    mCount->setMinimumWidth(kCountWidth);
    connect(mReveal, &QPushButton::clicked, this, [this] { Q_EMIT revealWanted(results()); });
    connect(mStart, &QPushButton::clicked, this, [this] { mQueue.isConverting() ? stop() : start(); });
    return deck;
}

void ZQAudioConvertController::begin() { mModel.rowCount() > 0 ? mTable->setFocus() : mAdd->setFocus(); }

void ZQAudioConvertController::add(const QStringList &paths) {
    mAdding.find(paths, [this](const QList<QUrl> &files) {
        if (!mQueue.isConverting())
            mRun = Run::None; // What the last one has led to is known by now.
        mQueue.parseAudioInfoWithURLs(files);
    });
}

void ZQAudioConvertController::start() {
    if (mModel.rowCount() == 0)
        return;
    mRun = Run::UnderWay;
    mQueue.startConvertWithMergeStatus(mOptions->joins());
    mModel.allDidChange();
    showState();
    Q_EMIT progressed();
}

// What is under way may take a moment to end.
void ZQAudioConvertController::stop() {
    mQueue.stopConvert();
    mModel.allDidChange();
    showState();
}

QList<int> ZQAudioConvertController::selected() const {
    QList<int> rows;
    for (const QModelIndex &index : mTable->selectionModel()->selectedRows())
        rows << index.row();
    std::sort(rows.begin(), rows.end());
    return rows;
}

void ZQAudioConvertController::remove() {
    mModel.rowsWereAdded();
    const QList<int> rows = selected();
    if (rows.isEmpty() || !mQueue.removeSelectedAudioIndexSet(rows))
        return;
    if (const int left = mModel.rowCount(); left > 0)
        mTable->selectRow(qMin(rows.constFirst(), left - 1));
}

void ZQAudioConvertController::move(int step) {
    const QList<int> rows = selected();
    if (rows.size() != 1)
        return;
    const int from = rows.constFirst(), to = from + step;
    if (step < 0 ? mQueue.moveUpEntityAtIndex(from, to) : mQueue.moveDownEntityAtIndex(from, to)) {
        mModel.allDidChange();
        mTable->selectRow(to);
    }
}

// What the row offers: once more, or not at all.
void ZQAudioConvertController::act(int row) {
    const ZQAudioConvertEntity *entity = mQueue.getAudioEntityWithRowIndex(row);
    if (!entity || mModel.index(row, ConvertModel::Action).data().toString().isEmpty())
        return;
    if (entity->convertStatus() != ConvertStatus::Failed)
        return mQueue.cancelEntityAtIndex(row);
    mRun = Run::UnderWay;
    (void)mQueue.retryEntityAtIndex(row); // which stays as it is where the queue cannot take it
    mModel.rowDidChange(row);
    showState();
    Q_EMIT progressed();
}

void ZQAudioConvertController::showMenu(const QPoint &position) {
    const QList<int> rows = selected();
    if (rows.isEmpty())
        return;
    const int row = rows.constFirst();
    QMenu menu(this);
    if (const QString action = mModel.index(row, ConvertModel::Action).data().toString(); !action.isEmpty())
        menu.addAction(action, this, [this, row] { act(row); });
    if (const auto *entity = mQueue.getAudioEntityWithRowIndex(row); entity && entity->hasItsOutput())
        menu.addAction(Lang::btnShowInFinder(), this,
                       [this, file = entity->outputPath()] { Q_EMIT revealWanted({file}); });
    if (!mQueue.isConverting())
        menu.addAction(Lang::btnRemove(), this, [this] { remove(); });
    if (!menu.isEmpty())
        menu.exec(mTable->viewport()->mapToGlobal(position));
}

// What is shown.

QStringList ZQAudioConvertController::results() const { return mQueue.summary().files; }

QString ZQAudioConvertController::progressText() const {
    return mQueue.isMerging() ? Lang::commMerging()
                              : Lang::commConverting() + QLatin1Char(' ') + soMany(mQueue.progress());
}

QString ZQAudioConvertController::summaryText() const {
    if (mRun != Run::Done && mRun != Run::Stopped)
        return {};
    const ZQAudioConvertManager::Summary summary = mQueue.summary();
    QStringList parts;
    if (summary.completed > 0 || summary.failed == 0)
        parts << Lang::windowFilesConverted(summary.completed);
    if (summary.failed > 0)
        parts << Lang::windowFailedCount().replace(QLatin1String("[#Count#]"), QString::number(summary.failed));
    if (!summary.mergeFailure.isEmpty())
        parts << Lang::sentence(summary.mergeFailure);
    if (!summary.mergedPath.isEmpty())
        parts << QFileInfo(summary.mergedPath).fileName();
    return parts.join(QStringLiteral(". "));
}

void ZQAudioConvertController::showState() {
    const int count = mModel.rowCount();
    const bool isRunning = mQueue.isConverting();
    const QString title = Lang::btnConvert();
    setTitle(count > 0 ? title + QStringLiteral("   ") + Lang::windowFileCount(count) : title);
    mTable->setVisible(count > 0);
    mEmpty->setVisible(count == 0);
    setInk(*mEmpty, Look::tokens().text2);
    const QList<int> rows = selected();
    for (QToolButton *button : {mUp, mDown}) // At an end of the list too: who moves a row there keeps the focus.
        button->setVisible(!isRunning && rows.size() == 1 && count > 1);
    mRemove->setVisible(!isRunning && !rows.isEmpty());
    mOptions->setRunning(isRunning);
    mStart->setText(isRunning ? Lang::btnStop() : Lang::btnConvert());
    mStart->setDefault(!isRunning);
    mStart->setEnabled(count > 0 && !mQueue.isStopping());
    mReveal->setVisible(!isRunning && mRun != Run::None && !results().isEmpty());
    animate();
    showProgress();
}

void ZQAudioConvertController::showProgress() {
    const bool isRunning = mQueue.isConverting();
    const ZQAudioConvertManager::Progress progress = mQueue.progress();
    mBar->setVisible(isRunning);
    mBar->setValue(static_cast<int>(progress.percent));
    mCount->setText(mQueue.isMerging() ? Lang::commMerging() : isRunning ? soMany(progress) : summaryText());
    QString left;
    if (isRunning && progress.secondsLeft) {
        const bool isMinutes = *progress.secondsLeft > 60;
        const QString time = isMinutes ? Lang::windowMinutes() : Lang::windowSeconds();
        left = Lang::windowAboutLeft().replace(
            QLatin1String("[#Time#]"),
            QString(time).replace(
                QLatin1String("[#Count#]"),
                QString::number(isMinutes ? (*progress.secondsLeft + 59) / 60 : *progress.secondsLeft)));
    }
    mTime->setText(left);
    mTime->setVisible(!left.isEmpty());
    setInk(*mTime, Look::tokens().text2);
    mCount->setFont(Look::font(*this, text_size::kBody, QFont::Bold));
    mTime->setFont(Look::font(*this, text_size::kSecondLine));
}

void ZQAudioConvertController::animate() {
    if (isVisible() && mQueue.isConverting() && Look::hasMotion())
        mFrames.start();
    else
        mFrames.stop();
}

void ZQAudioConvertController::runDidEnd() {
    mModel.allDidChange();
    showState();
    Q_EMIT ended();
}

// As wide as what they show; where the name would lack room, the size goes first, then the type and the length.
void ZQAudioConvertController::fit() {
    const QFontMetrics metrics = fontMetrics();
    const int air = 4 * measure::kGap, side = Look::scaled(*this, 22);
    mTable->setColumnWidth(ConvertModel::Status, measure::kMargin + side + measure::kGap);
    const QFontMetrics bold(Look::font(*this, text_size::kBody, QFont::Bold));
    const int action =
        2 * measure::kGap
        + qMax(bold.horizontalAdvance(Lang::windowTryAgain()), bold.horizontalAdvance(Lang::btnCancel()));
    mTable->setColumnWidth(ConvertModel::Action, action);
    int room = width() - mTable->columnWidth(ConvertModel::Status) - action - Look::scaled(*this, kLeastName);
    const std::pair<ConvertModel::Column, const char *> columns[] = {
        {ConvertModel::Length, "00:00:00"}, {ConvertModel::Type, "WEBM"}, {ConvertModel::Size, "888.88 MB"}};
    for (const auto &[column, text] : columns) {
        const int width = air + metrics.horizontalAdvance(QLatin1String(text));
        mTable->setColumnWidth(column, width);
        mTable->setColumnHidden(column, room < width);
        room -= width;
    }
}

void ZQAudioConvertController::showIcons() {
    mAdd->setIcon(icon(QStringLiteral("plus"), palette()));
    mUp->setIcon(icon(QStringLiteral("up"), palette()));
    mDown->setIcon(icon(QStringLiteral("down"), palette()));
    mRemove->setIcon(icon(QStringLiteral("wastebasket"), palette()));
    showState();
}

void ZQAudioConvertController::showTexts() {
    mAdd->setText(Lang::windowAddFiles());
    mUp->setText(Lang::btnMoveUp());
    mDown->setText(Lang::btnMoveDown());
    mRemove->setText(Lang::btnRemove());
    mReveal->setText(Lang::btnShowInFinder());
    mEmpty->setText(Lang::windowDropToConvert());
    mTable->setAccessibleName(Lang::menuAudioConverter());
    mBar->setAccessibleName(Lang::commProcess());
    mOptions->showTexts();
    mModel.allDidChange();
    fit();
    showState();
}

// The queue tells.

void ZQAudioConvertController::ConvertManagerDelegate_NumberOfEntitysDidChange() {
    if (mQueue.numberOfAudioEntitys() > mModel.rowCount())
        return mAdded.start(); // All that are added in one go are shown in one go.
    const QList<int> rows = selected();
    mModel.rowsDidChange();
    if (rows.size() == 1 && rows.constFirst() < mModel.rowCount())
        mTable->selectRow(rows.constFirst());
    showState();
}

void ZQAudioConvertController::ConvertManagerDelegate_NeedUpdateEntiyInfoWithIndex(int index, bool) {
    mModel.rowDidChange(index);
}

void ZQAudioConvertController::ConvertManagerDelegate_StartConvertEntiyInfoWithIndex(int index) {
    mModel.rowDidChange(index);
}

void ZQAudioConvertController::ConvertManagerDelegate_UpdateConvertEntiyInfoWithIndexForProgress(int index, double) {
    mModel.rowDidChange(index);
    showProgress();
    Q_EMIT progressed();
}

void ZQAudioConvertController::ConvertManagerDelegate_UpdateConvertEntiyInfoWithIndexForSuccess(int index, bool) {
    mModel.rowDidChange(index);
    showProgress();
    Q_EMIT progressed();
}

void ZQAudioConvertController::ConvertManagerDelegate_QueueDidGoOn() {
    mModel.allDidChange();
    showProgress();
    Q_EMIT progressed();
}

void ZQAudioConvertController::ConvertManagerDelegate_ConvertDidDone() {
    mRun = Run::Done;
    runDidEnd();
}

void ZQAudioConvertController::ConvertManagerDelegate_ConvertDidCancel() {
    mRun = Run::Stopped;
    runDidEnd();
}

// The person does.

void ZQAudioConvertController::keyPressEvent(QKeyEvent *event) {
    const QList<int> rows = selected();
    const bool isInTable = mTable->hasFocus() && !rows.isEmpty();
    if (isInTable && event->key() == Qt::Key_Delete)
        return remove();
    if (isInTable && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter))
        return act(rows.constFirst());
    Page::keyPressEvent(event);
}

void ZQAudioConvertController::dragEnterEvent(QDragEnterEvent *event) {
    if (localFiles(*event->mimeData()).isEmpty())
        return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void ZQAudioConvertController::dropEvent(QDropEvent *event) {
    event->setDropAction(Qt::CopyAction); // Nothing is moved.
    event->accept();
    add(localFiles(*event->mimeData()));
}

void ZQAudioConvertController::resizeEvent(QResizeEvent *event) {
    fit();
    Page::resizeEvent(event);
}

void ZQAudioConvertController::showEvent(QShowEvent *event) {
    Page::showEvent(event);
    fit();
    showState();
}

void ZQAudioConvertController::hideEvent(QHideEvent *event) {
    mFrames.stop();
    Page::hideEvent(event);
}

} // namespace cantorel::ui
