#pragma once

#include <QStyledItemDelegate>

namespace cantorel::ui {

// Draws the rows of a list: a bold title and a second line below it, both wrapped. What they say together is the text
// of the row, for those who are read to.
class TwoLineDelegate : public QStyledItemDelegate {
public:
    enum Role { Title = Qt::UserRole, Second, IsTrouble };

    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

} // namespace cantorel::ui
