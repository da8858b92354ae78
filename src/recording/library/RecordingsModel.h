#pragma once

#include "platform/foundation/Sentence.h"
#include "util/ShortDates.h"

#include <QAbstractTableModel>
#include <QCollator>
#include <QLocale>

#include <functional>
#include <optional>
#include <unordered_map>
#include <vector>

namespace cantorel {

class RecordedAudioInfo;
class RecordedList;

// The library as a table: sorted by a column, and narrowed to what a person searches for. Rows name items of the list,
// which own themselves. A reset tells every change of rows. Owned by the window; main thread.
class RecordingsModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { Title, Artist, Album, Length, Size, Date, State, Cover, ColumnCount };

    // The list outlives the model.
    explicit RecordingsModel(RecordedList &list, QObject *parent = nullptr);

    // The picture of a recording, for the view to draw. May be empty.
    std::function<QVariant(const RecordedAudioInfo &item)> picture;

    // The items of the list have come, gone or changed places.
    void listDidChange();
    // What is shown of the item, or of any, has changed.
    void itemDidChange(const RecordedAudioInfo &item);
    void itemsDidChange();
    void languageDidChange();

    // Shows what has every word of the text in its title, artist or album.
    void search(const QString &text);

    // A stored date in the window's language, as short as can be or in full; any other text unchanged.
    QString shownDate(const QString &stored) const;
    QString fullDate(const QString &stored) const;

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

Q_SIGNALS:
    // In one sentence why.
    void renameFailed(const foundation::Sentence &why);

private:
    using Rows = std::vector<RecordedAudioInfo *>;
    // Where a text stands among the others of its column.
    struct Place {
        QString text;
        QCollatorSortKey key;
    };

    void arrange();
    void sortBySize();
    void sortByText();
    bool isShown(const RecordedAudioInfo &item) const;
    QString textOf(const RecordedAudioInfo &item, int column) const;

    RecordedList &mList;
    Rows mOrder;                                                  // all recordings, sorted
    Rows mRows;                                                   // those that are shown
    std::unordered_map<const RecordedAudioInfo *, Place> mPlaces; // of the column that is sorted by
    std::vector<QByteArray> mSearched;                            // folded words
    // What is being recorded stands on top, whatever the order.
    const RecordedAudioInfo *mOnTop = nullptr;
    QLocale mLocale;
    QString mDateFormat;
    mutable std::optional<ShortDates> mShortDates; // made when a date is shown
    int mSortColumn = Date;
    Qt::SortOrder mSortOrder = Qt::DescendingOrder;
};

} // namespace cantorel
