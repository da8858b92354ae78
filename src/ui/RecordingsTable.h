#pragma once

#include <QTableView>

namespace cantorel::ui {

// The table of recordings: a list in columns, whose keys go by rows. What its page does with a key, and its tiles'
// clicks, are left to the page.
class RecordingsTable : public QTableView {
    Q_OBJECT

public:
    explicit RecordingsTable(QWidget *parent);

    // The row below the pointer; -1 for none.
    int hoveredRow() const { return mHovered; }

Q_SIGNALS:
    // The picture of a row has been clicked.
    void tileClicked(int row);

protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    bool viewportEvent(QEvent *event) override;

private:
    void hover(int row);

    int mHovered = -1;
};

} // namespace cantorel::ui
