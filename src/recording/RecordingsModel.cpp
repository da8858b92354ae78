#include "recording/RecordingsModel.h"

#include "lang/Lang.h"
#include "recording/RecordedList.h"

#include <QFileInfo>
#include <QMimeData>
#include <QUrl>

#include <algorithm>

namespace cantorel {

namespace {

// "1.50 MB" as bytes; the list keeps sizes as they are shown.
double bytesOf(const QString &size) {
    const QStringList parts = size.split(QLatin1Char(' '));
    double bytes = parts.value(0).toDouble();
    const QString units = QStringLiteral("BKMGTP");
    const QString unit = parts.value(1);
    for (qsizetype step = unit.isEmpty() ? 0 : units.indexOf(unit.front().toUpper()); step > 0; --step)
        bytes *= 1024;
    return bytes;
}

QString stateOf(const RecordedAudioInfo &item) {
    if (item.isRecording)
        return Lang::tabRecordStatusRecording();
    if (item.isInterrupted)
        return Lang::windowInterrupted();
    if (!item.status().isEmpty())
        return item.status();
    return item.isProcessing ? Lang::windowFinishing() : QString();
}

QString textOf(const RecordedAudioInfo &item, int column) {
    switch (column) {
    case RecordingsModel::Title:
        return item.getTitle();
    case RecordingsModel::Artist:
        return item.artist();
    case RecordingsModel::Album:
        return item.album();
    case RecordingsModel::Length:
        return item.duration();
    case RecordingsModel::Size:
        return item.size();
    case RecordingsModel::Date:
        return item.dateAdded();
    default:
        return stateOf(item);
    }
}

} // namespace

RecordingsModel::RecordingsModel(RecordedList &list, QObject *parent) : QAbstractTableModel(parent), mList(list) {
    arrange();
}

void RecordingsModel::listDidChange() {
    beginResetModel();
    arrange();
    endResetModel();
}

void RecordingsModel::itemDidChange(const RecordedAudioInfo &item) {
    if (const int row = rowOf(&item); row >= 0)
        Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

void RecordingsModel::languageDidChange() {
    Q_EMIT headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
    if (!mRows.empty())
        Q_EMIT dataChanged(index(0, State), index(rowCount() - 1, State));
}

void RecordingsModel::search(const QString &text) {
    const QStringList words = text.simplified().toCaseFolded().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (words == mSearched)
        return;
    mSearched = words;
    listDidChange();
}

bool RecordingsModel::isShown(const RecordedAudioInfo &item) const {
    return std::all_of(mSearched.begin(), mSearched.end(), [&](const QString &word) {
        return item.getTitle().contains(word, Qt::CaseInsensitive) || item.artist().contains(word, Qt::CaseInsensitive)
               || item.album().contains(word, Qt::CaseInsensitive);
    });
}

void RecordingsModel::arrange() {
    mRows.clear();
    mRows.reserve(mList.items().size());
    for (const auto &item : mList.items())
        if (isShown(*item))
            mRows.push_back(item.get());
    // The list itself is in the order of dates, so the newest come first by turning it around.
    if (mSortColumn == Date) {
        if (mSortOrder == Qt::DescendingOrder)
            std::reverse(mRows.begin(), mRows.end());
        return;
    }
    const auto before = [this](const RecordedAudioInfo *left, const RecordedAudioInfo *right) {
        return mSortColumn == Size
                   ? bytesOf(left->size()) < bytesOf(right->size())
                   : textOf(*left, mSortColumn).compare(textOf(*right, mSortColumn), Qt::CaseInsensitive) < 0;
    };
    if (mSortOrder == Qt::AscendingOrder)
        std::stable_sort(mRows.begin(), mRows.end(), before);
    else
        std::stable_sort(mRows.begin(), mRows.end(),
                         [&](const auto *left, const auto *right) { return before(right, left); });
}

RecordedAudioInfo *RecordingsModel::item(int row) const {
    return row >= 0 && row < rowCount() ? mRows[static_cast<std::size_t>(row)] : nullptr;
}

int RecordingsModel::rowOf(const RecordedAudioInfo *item) const {
    const auto found = std::find(mRows.begin(), mRows.end(), item);
    return found == mRows.end() ? -1 : static_cast<int>(found - mRows.begin());
}

int RecordingsModel::rowCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : static_cast<int>(mRows.size());
}

int RecordingsModel::columnCount(const QModelIndex &parent) const { return parent.isValid() ? 0 : ColumnCount; }

QVariant RecordingsModel::data(const QModelIndex &index, int role) const {
    const RecordedAudioInfo *item = this->item(index.row());
    if (!item)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return textOf(*item, index.column());
    case Qt::EditRole:
        return QFileInfo(item->getFileName()).completeBaseName();
    case Qt::ToolTipRole:
        return item->getFileName();
    case Qt::TextAlignmentRole:
        return index.column() == Length || index.column() == Size ? QVariant(Qt::AlignRight | Qt::AlignVCenter)
                                                                  : QVariant();
    default:
        return {};
    }
}

bool RecordingsModel::setData(const QModelIndex &index, const QVariant &value, int role) {
    RecordedAudioInfo *item = this->item(index.row());
    if (!item || role != Qt::EditRole || index.column() != Title
        || value.toString() == data(index, Qt::EditRole).toString())
        return false;
    const auto renamed = mList.rename(*item, value.toString());
    if (!renamed && trouble)
        trouble(renamed.failure().sentence);
    return bool(renamed);
}

QVariant RecordingsModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Title:
        return Lang::commTitle();
    case Artist:
        return Lang::windowArtist();
    case Album:
        return Lang::windowAlbum();
    case Length:
        return Lang::windowLength();
    case Size:
        return Lang::commSize();
    case Date:
        return Lang::commDateAdded();
    default:
        return Lang::windowState();
    }
}

Qt::ItemFlags RecordingsModel::flags(const QModelIndex &index) const {
    const RecordedAudioInfo *item = this->item(index.row());
    if (!item)
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
    if (item->isInUse())
        return flags; // Its file is not ready.
    flags |= Qt::ItemIsDragEnabled;
    return index.column() == Title ? flags | Qt::ItemIsEditable : flags;
}

void RecordingsModel::sort(int column, Qt::SortOrder order) {
    mSortColumn = column;
    mSortOrder = order;
    listDidChange();
}

QStringList RecordingsModel::mimeTypes() const { return {QStringLiteral("text/uri-list")}; }

QMimeData *RecordingsModel::mimeData(const QModelIndexList &indexes) const {
    QList<QUrl> urls;
    for (const QModelIndex &index : indexes)
        if (index.column() == Title && item(index.row()))
            urls.append(QUrl::fromLocalFile(item(index.row())->getFileName()));
    auto *data = new QMimeData; // The view's drag owns it.
    data->setUrls(urls);
    return data;
}

} // namespace cantorel
