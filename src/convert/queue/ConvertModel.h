#pragma once

#include "convert/queue/ZQAudioConvertEntity.h"

#include <QAbstractTableModel>
#include <QString>

namespace cantorel {

class ZQAudioConvertManager;

// The picture that shows a status; empty where there is none. frame: of the picture that moves, 0 to 5.
QString statusPicture(ConvertStatus status, int frame);

// The conversion queue as a table, in the language in force. Its owner, who hears the queue, says what has changed.
// Main thread.
class ConvertModel : public QAbstractTableModel {
public:
    enum Column { Status, Name, Type, Length, Size, Action, ColumnCount };
    enum Role {
        StatusRole = Qt::UserRole, // a ConvertStatus as a number
        ProgressRole,              // 0 to 100
        LineRole,                  // below the name: what has become of it
        TroubleRole,               // whether that is why it failed
    };

    // The queue outlives the model.
    explicit ConvertModel(ZQAudioConvertManager &queue, QObject *parent = nullptr);

    // Rows were appended, or the list is another one.
    void rowsWereAdded();
    void rowsDidChange();
    void rowDidChange(int row);
    void allDidChange(); // what is shown of every row

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    QString lineOf(const ZQAudioConvertEntity &row) const;
    QString actionOf(const ZQAudioConvertEntity &row) const;

    ZQAudioConvertManager &mQueue;
    int mRows; // that are known: the queue has others before it tells
};

} // namespace cantorel
