#include "recording/library/RecordingsModel.h"

#include "lang/Lang.h"
#include "recording/library/RecordedList.h"

#include <QCollator>
#include <QDateTime>
#include <QFileInfo>
#include <QMimeData>
#include <QUrl>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <optional>
#include <utility>

namespace cantorel {

namespace {

const QString kStoredDate = QStringLiteral("yyyy-MM-dd HH:mm:ss");

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

} // namespace

QString RecordingsModel::textOf(const RecordedAudioInfo &item, int column) const {
    switch (column) {
    case Title:
        return item.getTitle();
    case Artist:
        return item.artist();
    case Album:
        return item.album();
    case Length:
        return item.duration();
    case Size:
        return item.size();
    case Date:
        return shownDate(item.dateAdded());
    case State:
        return stateOf(item);
    default:
        return {};
    }
}

QString RecordingsModel::shownDate(const QString &stored) const {
    const QDateTime date = QDateTime::fromString(stored, kStoredDate);
    if (!date.isValid())
        return stored;
    if (!mShortDates)
        mShortDates.emplace(mLocale);
    return mShortDates->text(date, QDate::currentDate());
}

QString RecordingsModel::fullDate(const QString &stored) const {
    const QDateTime date = QDateTime::fromString(stored, kStoredDate);
    return date.isValid() ? mLocale.toString(date, mDateFormat) : stored;
}

RecordingsModel::RecordingsModel(RecordedList &list, QObject *parent) : QAbstractTableModel(parent), mList(list) {
    languageDidChange();
    arrange();
}

void RecordingsModel::listDidChange() {
    beginResetModel();
    arrange();
    endResetModel();
}

void RecordingsModel::itemDidChange(const RecordedAudioInfo &item) {
    if (item.isRecording != (mOnTop == &item))
        listDidChange();
    else if (const int row = rowOf(&item); row >= 0)
        Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

void RecordingsModel::itemsDidChange() {
    if (mOnTop != nullptr && !mOnTop->isRecording)
        listDidChange();
    else if (!mRows.empty())
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
}

void RecordingsModel::languageDidChange() {
    mLocale = Lang::locale();
    mDateFormat = mLocale.dateTimeFormat(QLocale::ShortFormat);
    if (!mDateFormat.contains(QLatin1String("yyyy")))
        mDateFormat.replace(QLatin1String("yy"), QLatin1String("yyyy"));
    mDateFormat.replace(QLatin1Char('B'), QLatin1String("AP")); // which Qt would print as it stands
    mShortDates.reset();
    mPlaces.clear();
    Q_EMIT headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
    itemsDidChange();
}

void RecordingsModel::search(const QString &text) {
    std::vector<QByteArray> words;
    for (const QString &word : text.simplified().toCaseFolded().split(QLatin1Char(' '), Qt::SkipEmptyParts))
        words.push_back(word.toUtf8());
    if (words == mSearched)
        return;
    // What is typed on narrows what is there already.
    const bool narrows = std::all_of(mSearched.begin(), mSearched.end(), [&](const QByteArray &before) {
        return std::any_of(words.begin(), words.end(), [&](const QByteArray &word) { return word.contains(before); });
    });
    mSearched = std::move(words);
    Rows rows;
    const Rows &candidates = narrows ? mRows : mOrder;
    std::copy_if(candidates.begin(), candidates.end(), std::back_inserter(rows),
                 [this](const RecordedAudioInfo *item) { return isShown(*item); });
    if (rows == mRows)
        return;
    beginResetModel();
    mRows.swap(rows);
    endResetModel();
}

bool RecordingsModel::isShown(const RecordedAudioInfo &item) const {
    const QByteArray &key = item.searchKey();
    return std::all_of(mSearched.begin(), mSearched.end(), [&](const QByteArray &word) {
        return ::memmem(key.constData(), static_cast<std::size_t>(key.size()), word.constData(),
                        static_cast<std::size_t>(word.size()))
               != nullptr;
    });
}

void RecordingsModel::arrange() {
    mOrder.clear();
    mOrder.reserve(mList.items().size());
    for (const auto &item : mList.items())
        mOrder.push_back(item.get());
    if (mSortColumn == Size)
        sortBySize();
    else if (mSortColumn != Date && mSortColumn != Cover)
        sortByText();
    // The list itself is in the order of dates, so the newest come first by turning it around.
    else if (mSortOrder == Qt::DescendingOrder)
        std::reverse(mOrder.begin(), mOrder.end());
    const auto recorded =
        std::stable_partition(mOrder.begin(), mOrder.end(), [](const auto *item) { return item->isRecording; });
    mOnTop = recorded == mOrder.begin() ? nullptr : mOrder.front();
    mRows = mOrder;
    if (!mSearched.empty())
        std::erase_if(mRows, [this](const RecordedAudioInfo *item) { return !isShown(*item); });
}

namespace {

// Sorts by what is ready to compare; what is equal keeps its order either way.
template <class Ranks> void sortRanks(Ranks &ranks, Qt::SortOrder order) {
    std::stable_sort(ranks.begin(), ranks.end(), [order](const auto &left, const auto &right) {
        return order == Qt::AscendingOrder ? *left.first < *right.first : *right.first < *left.first;
    });
}

} // namespace

void RecordingsModel::sortBySize() {
    std::vector<std::pair<std::optional<double>, RecordedAudioInfo *>> ranks;
    ranks.reserve(mOrder.size());
    for (RecordedAudioInfo *item : mOrder)
        ranks.emplace_back(bytesOf(item->size()), item);
    sortRanks(ranks, mSortOrder);
    std::transform(ranks.begin(), ranks.end(), mOrder.begin(), [](const auto &rank) { return rank.second; });
}

// The places cost more than the sorting, and most of them are those of the last time.
void RecordingsModel::sortByText() {
    QCollator collator(mLocale);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    collator.setNumericMode(true);
    auto before = std::exchange(mPlaces, {});
    mPlaces.reserve(mOrder.size());
    std::vector<std::pair<const QCollatorSortKey *, RecordedAudioInfo *>> ranks;
    ranks.reserve(mOrder.size());
    for (RecordedAudioInfo *item : mOrder) {
        const QString text = textOf(*item, mSortColumn);
        const auto known = before.find(item);
        auto place = known != before.end() && known->second.text == text
                         ? mPlaces.insert(before.extract(known)).position
                         : mPlaces.emplace(item, Place{text, collator.sortKey(text)}).first;
        ranks.emplace_back(&place->second.key, item);
    }
    sortRanks(ranks, mSortOrder);
    std::transform(ranks.begin(), ranks.end(), mOrder.begin(), [](const auto &rank) { return rank.second; });
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
    case Qt::DecorationRole:
        return index.column() == Cover && picture ? picture(*item) : QVariant();
    case Qt::ToolTipRole:
        return index.column() == Date ? fullDate(item->dateAdded()) : item->getFileName();
    case Qt::TextAlignmentRole:
        return headerData(index.column(), Qt::Horizontal, role);
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
    if (!renamed)
        Q_EMIT renameFailed(renamed.failure().sentence);
    return bool(renamed);
}

QVariant RecordingsModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal)
        return {};
    if (section == Cover) // too narrow for its name
        return role == Qt::ToolTipRole || role == Qt::AccessibleTextRole ? Lang::windowCover() : QVariant();
    if (role == Qt::TextAlignmentRole && (section == Length || section == Size || section == Date))
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole)
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
    case State:
        return Lang::windowState();
    default:
        return {};
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
    if (mSortColumn != column)
        mPlaces.clear();
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
