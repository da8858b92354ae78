#pragma once

#include <QStyledItemDelegate>

namespace cantorel {
class RecordedAudioInfo;
class RecordingsModel;
} // namespace cantorel

namespace cantorel::ui {

// Draws the rows of the library: the title with a second line below it, figures in columns of equally wide digits.
class RowDelegate : public QStyledItemDelegate {
public:
    // The model outlives the delegate.
    RowDelegate(const RecordingsModel &model, QObject *parent) : QStyledItemDelegate(parent), mModel(model) {}

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const override;

private:
    void paintTitle(QPainter &painter, const QStyleOptionViewItem &option, const QModelIndex &index) const;
    static void paintFigures(QPainter &painter, const QStyleOptionViewItem &option, const QString &text);

    const RecordingsModel &mModel;
};

} // namespace cantorel::ui
