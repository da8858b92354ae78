#include "ui/RecordingsTable.h"

#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>

#include <utility>

namespace cantorel::ui {

RecordingsTable::RecordingsTable(QWidget *parent) : QTableView(parent) {
    setObjectName(QStringLiteral("recordings"));
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setDragEnabled(true);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setShowGrid(false);
    setWordWrap(false);
    setFrameShape(QFrame::NoFrame);
    setTabKeyNavigation(false); // Tab leaves the table.
    setMouseTracking(true);
    setContextMenuPolicy(Qt::CustomContextMenu);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    connect(this, &QAbstractItemView::clicked, this, [this](const QModelIndex &index) {
        if (index.column() == mTileColumn && QGuiApplication::keyboardModifiers() == Qt::NoModifier)
            Q_EMIT tileClicked(index.row());
    });
}

QModelIndex RecordingsTable::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
    const QModelIndex current = currentIndex();
    const int rows = model()->rowCount();
    if (rows == 0)
        return {};
    switch (action) {
    case MoveHome:
        return model()->index(0, qMax(0, current.column()));
    case MoveEnd:
        return model()->index(rows - 1, qMax(0, current.column()));
    case MoveLeft:
    case MoveRight:
        return current;
    default:
        return QTableView::moveCursor(action, modifiers);
    }
}

void RecordingsTable::keyPressEvent(QKeyEvent *event) {
    switch (event->key()) {
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_F2:
    case Qt::Key_Delete:
        if (!(event->modifiers() & Qt::ControlModifier)) {
            event->ignore(); // the page's
            return;
        }
        break;
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (!selectionModel()->hasSelection() && currentIndex().isValid())
            return selectRow(currentIndex().row()); // Where nothing is chosen the first key chooses, and goes nowhere.
        break;
    default:
        break;
    }
    QTableView::keyPressEvent(event);
}

void RecordingsTable::hover(int row) {
    const int before = std::exchange(mHovered, row);
    if (before == row)
        return;
    for (const int changed : {before, row})
        if (changed >= 0)
            viewport()->update(0, rowViewportPosition(changed), viewport()->width(), rowHeight(changed));
}

void RecordingsTable::mouseMoveEvent(QMouseEvent *event) {
    hover(event->buttons() == Qt::NoButton ? rowAt(event->position().toPoint().y()) : -1);
    QTableView::mouseMoveEvent(event);
}

bool RecordingsTable::viewportEvent(QEvent *event) {
    if (event->type() == QEvent::Leave)
        hover(-1);
    return QTableView::viewportEvent(event);
}

} // namespace cantorel::ui
