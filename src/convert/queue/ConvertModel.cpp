#include "convert/queue/ConvertModel.h"

#include "convert/queue/ZQAudioConvertManager.h"
#include "lang/Lang.h"

#include <QFileInfo>

namespace cantorel {

QString statusPicture(ConvertStatus status, int frame) {
    switch (status) {
    case ConvertStatus::None:
        return {};
    case ConvertStatus::Waiting:
        return QStringLiteral("convert_wait");
    case ConvertStatus::Converting:
        return QStringLiteral("converting%1").arg(frame);
    case ConvertStatus::Completed:
        return QStringLiteral("convert_completed");
    case ConvertStatus::Failed:
        return QStringLiteral("convert_failed");
    }
    return {};
}

namespace {

QString wordOf(ConvertStatus status) {
    switch (status) {
    case ConvertStatus::None:
        return {};
    case ConvertStatus::Waiting:
        return Lang::windowWaiting();
    case ConvertStatus::Converting:
        return Lang::commConverting();
    case ConvertStatus::Completed:
        return Lang::commCompleted();
    case ConvertStatus::Failed:
        return Lang::windowFailed();
    }
    return {};
}

} // namespace

ConvertModel::ConvertModel(ZQAudioConvertManager &queue, QObject *parent)
    : QAbstractTableModel(parent), mQueue(queue), mRows(queue.numberOfAudioEntitys()) {}

void ConvertModel::rowsWereAdded() {
    const int rows = mQueue.numberOfAudioEntitys();
    if (rows <= mRows)
        return;
    beginInsertRows({}, mRows, rows - 1);
    mRows = rows;
    endInsertRows();
}

void ConvertModel::rowsDidChange() {
    beginResetModel();
    mRows = mQueue.numberOfAudioEntitys();
    endResetModel();
}

void ConvertModel::rowDidChange(int row) {
    if (row < mRows)
        Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

void ConvertModel::allDidChange() {
    if (rowCount() > 0)
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
}

int ConvertModel::rowCount(const QModelIndex &parent) const { return parent.isValid() ? 0 : mRows; }

int ConvertModel::columnCount(const QModelIndex &parent) const { return parent.isValid() ? 0 : ColumnCount; }

QString ConvertModel::lineOf(const ZQAudioConvertEntity &row) const {
    if (!row.failure().isEmpty())
        return Lang::sentence(row.failure());
    switch (row.convertStatus()) {
    case ConvertStatus::None:
        return row.isReading() ? Lang::commAnalyzing() : QFileInfo(QFileInfo(row.filePath()).path()).fileName();
    case ConvertStatus::Converting:
        return Lang::windowConvertingSoFar().replace(QLatin1String("[#Count#]"),
                                                     QString::number(static_cast<int>(row.convertProgress())));
    case ConvertStatus::Completed:
        if (!row.outputPath().isEmpty())
            return QFileInfo(row.outputPath()).fileName();
        break;
    default:
        break;
    }
    return wordOf(row.convertStatus());
}

QString ConvertModel::actionOf(const ZQAudioConvertEntity &row) const {
    const ConvertStatus status = row.convertStatus();
    if (mQueue.isStopping() || mQueue.isMerging())
        return {};
    if (status == ConvertStatus::Failed)
        return Lang::windowTryAgain();
    const bool isUnderWay = status == ConvertStatus::Waiting || status == ConvertStatus::Converting;
    return mQueue.isConverting() && isUnderWay ? Lang::btnCancel() : QString();
}

QVariant ConvertModel::data(const QModelIndex &index, int role) const {
    const ZQAudioConvertEntity *row = mQueue.getAudioEntityWithRowIndex(index.row());
    if (!row)
        return {};
    if (role == StatusRole)
        return static_cast<int>(row->convertStatus());
    if (role == ProgressRole)
        return row->convertProgress();
    if (role == LineRole)
        return lineOf(*row);
    if (role == TroubleRole)
        return !row->failure().isEmpty();
    const auto whole = [&] { return row->fileName() + QStringLiteral(", ") + lineOf(*row); };
    if (role == Qt::ToolTipRole) // A paragraph wraps, and what is escaped is no markup.
        return QStringLiteral("<p>%1</p>").arg(whole().toHtmlEscaped());
    if (index.column() == Name && role == Qt::AccessibleTextRole)
        return whole();
    if (role != Qt::DisplayRole && role != Qt::AccessibleTextRole)
        return {};
    switch (index.column()) {
    case Status:
        return role == Qt::AccessibleTextRole ? wordOf(row->convertStatus()) : QString(); // a picture says it
    case Name:
        return row->fileName();
    case Type:
        return row->fileType();
    case Length:
        return row->duration() == QLatin1String("0") ? QString() : row->duration();
    case Size:
        return row->fileSize();
    case Action:
        return actionOf(*row);
    default:
        return {};
    }
}

} // namespace cantorel
