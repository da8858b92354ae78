#pragma once

#include <QTableView>

namespace cantorel::ui {

// The table of recordings, or of files: a list in columns, whose keys go by rows. What its page does with a key, and
// its tiles' clicks, are left to the page.
class RecordingsTable : public QTableView {
    Q_OBJECT

public:
    explicit RecordingsTable(QWidget *parent);

    // Where the cells are pictures or words that a click acts on.
    void setTileColumn(int column) { mTileColumn = column; }
    // The row below the pointer; -1 for none.
    int hoveredRow() const { return mHovered; }

Q_SIGNALS:
    // Such a cell of a row has been clicked.
    void tileClicked(int row);

protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    bool viewportEvent(QEvent *event) override;

private:
    void hover(int row);

    int mTileColumn = -1;
    int mHovered = -1;
};

} // namespace cantorel::ui
