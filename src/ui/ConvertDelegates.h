#pragma once

#include <QStyledItemDelegate>

#include <functional>

namespace cantorel::ui {

// Draws the status of a row of the conversion queue; the picture of the one under way moves.
class ConvertStatusDelegate : public QStyledItemDelegate {
public:
    explicit ConvertStatusDelegate(QObject *parent);

    std::function<bool(int row)> isHovered = [](int) { return false; };
    // The next picture of the movement.
    void step();

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    int mFrame = 0;
};

// Draws the other cells of a row: the name with a line below it, what can be done, and figures.
class ConvertRowDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    std::function<bool(int row)> isHovered = [](int) { return false; };

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    static void paintName(QPainter &painter, const QStyleOptionViewItem &option, const QModelIndex &index);
};

} // namespace cantorel::ui
