#pragma once

#include <QAbstractTableModel>

#include <functional>
#include <vector>

namespace cantorel {

class RecordedAudioInfo;
class RecordedList;

// The library as a table: sorted by a column, and narrowed to what a person searches for. Rows name items of the list,
// which own themselves. Owned by the window; main thread.
class RecordingsModel : public QAbstractTableModel {
public:
    enum Column { Title, Artist, Album, Length, Size, Date, State, ColumnCount };

    // The list outlives the model.
    explicit RecordingsModel(RecordedList &list, QObject *parent = nullptr);

    // Told why a renaming failed, in one sentence. May be empty.
    std::function<void(const QString &sentence)> trouble;

    // The items of the list have come, gone or changed places; the language has changed.
    void listDidChange();
    // What is shown of the item has changed.
    void itemDidChange(const RecordedAudioInfo &item);
    void languageDidChange();

    // Shows what has every word of the text in its title, artist or album.
    void search(const QString &text);
    QString searched() const { return mSearched.join(QLatin1Char(' ')); }

    RecordedAudioInfo *item(int row) const;
    // -1 when it is not shown; the item may be gone.
    int rowOf(const RecordedAudioInfo *item) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    void sort(int column, Qt::SortOrder order) override;
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;

private:
    void arrange();
    bool isShown(const RecordedAudioInfo &item) const;

    RecordedList &mList;
    std::vector<RecordedAudioInfo *> mRows;
    QStringList mSearched; // folded words
    int mSortColumn = Date;
    Qt::SortOrder mSortOrder = Qt::DescendingOrder;
};

} // namespace cantorel
