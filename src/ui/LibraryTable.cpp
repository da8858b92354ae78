#include "ui/LibraryTable.h"

#include "recording/library/LibraryPlayer.h"
#include "recording/library/RecordedAudioInfo.h"
#include "recording/library/RecordingsModel.h"
#include "ui/RowDelegate.h"
#include "ui/look/Look.h"

#include <QDateTime>
#include <QHeaderView>
#include <QScrollBar>

#include <utility>

namespace cantorel::ui {

namespace {

constexpr int kCover = 40, kLeastTitle = 200;

} // namespace

LibraryTable::LibraryTable(RecordingsModel &model, LibraryPlayer &player, QWidget *parent)
    : RecordingsTable(parent), mModel(model), mPlayer(player) {
    setModel(&mModel);
    setTileColumn(RecordingsModel::Cover);
    // Behind what the view itself does with its selection.
    connect(&mModel, &QAbstractItemModel::modelAboutToBeReset, this, [this] { remember(); });
    connect(&mModel, &QAbstractItemModel::modelReset, this, [this] { restore(); });
    auto *delegate = new RowDelegate(mModel, this);
    delegate->isHovered = [this](int row) { return row == hoveredRow(); };
    delegate->tile = [this](int row) {
        const RecordedAudioInfo *item = mModel.item(row);
        if (!item || item->isInUse())
            return RowDelegate::Tile::Plain;
        if (mPlayer.isPlaying() && item->getFileName() == mPlayer.file())
            return RowDelegate::Tile::Pause;
        return row == hoveredRow() ? RowDelegate::Tile::Play : RowDelegate::Tile::Plain;
    };
    setItemDelegate(delegate);
    verticalHeader()->setDefaultSectionSize(Look::scaled(*this, measure::kRow));
    horizontalHeader()->setSectionResizeMode(RecordingsModel::Title, QHeaderView::Stretch);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    horizontalHeader()->setMinimumHeight(Look::tall(*this, measure::kTarget));
    horizontalHeader()->setMinimumSectionSize(1);
    // The cover is seen first, while the title stays the first cell that the keys come to.
    horizontalHeader()->moveSection(RecordingsModel::Cover, 0);
    horizontalHeader()->setSectionResizeMode(RecordingsModel::Cover, QHeaderView::Fixed);
    setIconSize(QSize(1, 1) * Look::scaled(*this, kCover));
    setColumnWidth(RecordingsModel::Cover, measure::kMargin + iconSize().width() + measure::kGap);
    // What these say stands in the second line of the title.
    for (const auto said : {RecordingsModel::Artist, RecordingsModel::Album, RecordingsModel::State})
        setColumnHidden(said, true);
    setSortingEnabled(true);
    sortByColumn(RecordingsModel::Date, Qt::DescendingOrder);
    connect(this, &RecordingsTable::tileClicked, this, [this](int row) { playOrPause(row); });
    connect(this, &QTableView::doubleClicked, this, [this](const QModelIndex &index) {
        if (const auto *item = mModel.item(index.row()))
            Q_EMIT playWanted(item->getFileName());
    });
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, &LibraryTable::choiceChanged);
    connect(selectionModel(), &QItemSelectionModel::currentRowChanged, this, &LibraryTable::choiceChanged);
    connect(&mPlayer, &LibraryPlayer::changed, this, [this] { viewport()->update(); });
}

std::vector<RecordedAudioInfo *> LibraryTable::selected() const {
    std::vector<RecordedAudioInfo *> items;
    for (const QModelIndex &index : selectionModel()->selectedRows())
        if (auto *item = mModel.item(index.row()))
            items.push_back(item);
    return items;
}

RecordedAudioInfo *LibraryTable::chosen() const {
    const QItemSelectionModel &selection = *selectionModel();
    if (!selection.hasSelection())
        return nullptr;
    const int current = currentIndex().row();
    return mModel.item(selection.isRowSelected(current) ? current : selection.selection().first().top());
}

void LibraryTable::renameChosen() {
    if (const RecordedAudioInfo *item = chosen(); item && !item->isInUse())
        edit(mModel.index(mModel.rowOf(item), RecordingsModel::Title));
}

void LibraryTable::playOrPause(int row) {
    const RecordedAudioInfo *item = mModel.item(row);
    if (item && mPlayer.isPlaying() && item->getFileName() == mPlayer.file())
        mPlayer.pause();
    else if (item)
        Q_EMIT playWanted(item->getFileName());
}

void LibraryTable::remember() {
    mBefore = {};
    for (const QItemSelectionRange &range : selectionModel()->selection())
        for (int row = range.top(); row <= range.bottom(); ++row)
            mBefore.selected.insert(mModel.item(row));
    mBefore.current = mModel.item(currentIndex().row());
    mBefore.column = qMax(0, currentIndex().column());
    if (verticalScrollBar()->value() > 0) // At its top, a table shows what comes there.
        mBefore.top = mModel.item(rowAt(0));
}

void LibraryTable::restore() {
    if (mBefore.selected.empty() && !mBefore.current && !mBefore.top) {
        Q_EMIT choiceChanged();
        return;
    }
    QItemSelection selection;
    int current = -1, top = -1, first = -1;
    for (int row = 0; row <= mModel.rowCount(); ++row) {
        const RecordedAudioInfo *item = mModel.item(row); // null behind the last
        current = item && item == mBefore.current ? row : current;
        top = item && item == mBefore.top ? row : top;
        const bool isSelected = item && mBefore.selected.contains(item);
        if (isSelected && first < 0)
            first = row;
        if (!isSelected && first >= 0) {
            selection.append(
                QItemSelectionRange(mModel.index(first, 0), mModel.index(row - 1, RecordingsModel::ColumnCount - 1)));
            first = -1;
        }
    }
    QItemSelectionModel &selected = *selectionModel();
    selected.select(selection, QItemSelectionModel::ClearAndSelect);
    if (current >= 0)
        selected.setCurrentIndex(mModel.index(current, mBefore.column), QItemSelectionModel::NoUpdate);
    if (top >= 0)
        verticalScrollBar()->setValue(top * verticalHeader()->defaultSectionSize());
    mBefore = {};
    Q_EMIT choiceChanged();
}

QString LibraryTable::longestDate() const {
    const QDateTime today(QDate::currentDate(), QTime(22, 58));
    QString longest;
    for (const QDateTime &date : {today, today.addDays(-1), QDateTime(QDate(2028, 12, 28), today.time())})
        if (const QString text = mModel.shownDate(date.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
            fontMetrics().horizontalAdvance(text) > fontMetrics().horizontalAdvance(longest))
            longest = text;
    return longest;
}

// As wide as what they show at most, and as their names with the sign of the order. Where a title would lack room, the
// size goes first, then the date, which the second line takes.
void LibraryTable::fitColumns(int width) {
    const std::pair<RecordingsModel::Column, QString> texts[] = {{RecordingsModel::Length, QStringLiteral("00:00:00")},
                                                                 {RecordingsModel::Date, longestDate()},
                                                                 {RecordingsModel::Size, QStringLiteral("888.88 MB")}};
    const QFontMetrics metrics = fontMetrics();
    const int air = 3 * measure::kGap;
    int room = width - columnWidth(RecordingsModel::Cover) - Look::scaled(*this, kLeastTitle);
    for (const auto &[column, text] : texts) {
        const QString name = mModel.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
        const int wanted = air + qMax(metrics.horizontalAdvance(text), metrics.horizontalAdvance(name) + air);
        setColumnWidth(column, wanted);
        setColumnHidden(column, room < wanted);
        room -= wanted;
    }
}

} // namespace cantorel::ui
