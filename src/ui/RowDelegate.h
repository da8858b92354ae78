#pragma once

#include <QStyledItemDelegate>

#include <functional>

namespace cantorel {
class RecordedAudioInfo;
class RecordingsModel;
} // namespace cantorel

namespace cantorel::ui {

// Who plays a recording, else where it lies.
QString whoOrWhere(const RecordedAudioInfo &item);

// The ground below all cells of a row: chosen, below the pointer, or none.
void paintRowGround(QPainter &painter, const QStyleOptionViewItem &option, bool isHovered);
// Figures at the right of a cell, in digits of one width.
void paintFigures(QPainter &painter, const QStyleOptionViewItem &option, const QString &text);
// The ring of a cell that the keys stand on, once a key was used.
void paintCellFocus(QPainter &painter, const QStyleOptionViewItem &option);

// Draws the rows of the library: the title with a second line below it, figures in columns of equally wide digits.
class RowDelegate : public QStyledItemDelegate {
public:
    // The model outlives the delegate.
    RowDelegate(const RecordingsModel &model, QObject *parent) : QStyledItemDelegate(parent), mModel(model) {}

    // What a row's picture does when it is clicked, if it tells; and whether the pointer is on the row.
    enum class Tile { Plain, Play, Pause };
    std::function<Tile(int row)> tile = [](int) { return Tile::Plain; };
    std::function<bool(int row)> isHovered = [](int) { return false; };

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const override;

private:
    void paintCover(QPainter &painter, const QStyleOptionViewItem &option, const QModelIndex &index) const;
    void paintTitle(QPainter &painter, const QStyleOptionViewItem &option, const QModelIndex &index) const;

    const RecordingsModel &mModel;
};

} // namespace cantorel::ui
