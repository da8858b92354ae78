#include "ui/ExportPartsTable.h"

#include "editor/ZQAudioEditExportController.h"
#include "lang/Lang.h"
#include "ui/look/Look.h"

#include <QAbstractTableModel>
#include <QHeaderView>
#include <QScrollBar>

namespace cantorel::ui {

namespace {

using Exporting = ZQAudioEditExportController;

constexpr int kColumnWidth = 132, kMostRows = 6;

Exporting::Field fieldOf(int column) {
    return column == 0 ? Exporting::Name : static_cast<Exporting::Field>(column - 1);
}

} // namespace

class ExportPartsTable::Parts : public QAbstractTableModel {
public:
    Parts(Exporting &exporting, QObject *parent) : QAbstractTableModel(parent), mExporting(exporting) { take(); }

    int rowCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : mRows; }
    int columnCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : mColumns; }
    Qt::ItemFlags flags(const QModelIndex &index) const override {
        return QAbstractTableModel::flags(index) | Qt::ItemIsEditable;
    }
    QVariant data(const QModelIndex &index, int role) const override {
        const Exporting::Field field = fieldOf(index.column());
        if (role == Qt::DisplayRole || role == Qt::EditRole)
            return mExporting.partText(index.row(), field);
        if (role == Qt::ForegroundRole && !mExporting.isPartTyped(index.row(), field))
            return static_cast<QWidget *>(parent())->palette().placeholderText();
        return {};
    }
    bool setData(const QModelIndex &index, const QVariant &value, int role) override {
        if (role != Qt::EditRole)
            return false;
        mExporting.setPartText(index.row(), fieldOf(index.column()), value.toString());
        return true;
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
        if (role != Qt::DisplayRole)
            return {};
        if (orientation == Qt::Vertical)
            return section + 1;
        switch (fieldOf(section)) {
        case Exporting::Title:
            return Lang::commTitle();
        case Exporting::Artist:
            return Lang::toolsExportArtist();
        case Exporting::Album:
            return Lang::toolsCDRipperAlbum();
        case Exporting::Year:
            return Lang::toolsCDRipperYear();
        case Exporting::Genre:
            return Lang::toolsCDRipperGenre();
        default:
            return Lang::commFileName();
        }
    }
    void show() {
        if (mRows != rows() || mColumns != columns()) {
            beginResetModel();
            take();
            endResetModel();
        } else if (mRows > 0)
            Q_EMIT dataChanged(index(0, 0), index(mRows - 1, mColumns - 1));
    }

private:
    int rows() const { return mExporting.partCount(); }
    int columns() const { return mExporting.isID3ViewOpen() ? Exporting::FieldCount : 1; }
    void take() {
        mRows = rows();
        mColumns = columns();
    }

    Exporting &mExporting;
    int mRows = 0, mColumns = 0;
};

ExportPartsTable::ExportPartsTable(ZQAudioEditExportController &exporting, QWidget *parent)
    : QTableView(parent), mParts(new Parts(exporting, this)) {
    setObjectName(QStringLiteral("exportParts"));
    setModel(mParts);
    setTabKeyNavigation(false); // Tab leaves the table, but goes on while a cell is edited.
    setEditTriggers(DoubleClicked | EditKeyPressed | AnyKeyPressed | SelectedClicked);
    setSelectionMode(SingleSelection);
    setHorizontalScrollMode(ScrollPerPixel);
    setWordWrap(false);
    horizontalHeader()->setDefaultSectionSize(Look::scaled(*this, kColumnWidth));
    horizontalHeader()->setHighlightSections(false);
    verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
}

void ExportPartsTable::showTexts() {
    setAccessibleName(Lang::toolsEditorExportMltiple());
    Q_EMIT mParts->headerDataChanged(Qt::Horizontal, 0, qMax(0, mParts->columnCount() - 1));
}

void ExportPartsTable::showParts() {
    mParts->show();
    horizontalHeader()->setStretchLastSection(mParts->columnCount() == 1);
    const int rows = qMin(mParts->rowCount(), kMostRows);
    setFixedHeight(horizontalHeader()->sizeHint().height() + rows * qMax(1, verticalHeader()->sectionSize(0))
                   + horizontalScrollBar()->sizeHint().height() + 2 * frameWidth());
    if (!currentIndex().isValid() && rows > 0)
        setCurrentIndex(mParts->index(0, 0)); // where keys begin
}

} // namespace cantorel::ui
