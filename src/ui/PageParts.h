#pragma once

#include <QColor>
#include <QHBoxLayout>
#include <QLabel>

namespace cantorel::ui {

// A row without margins, which the widget owns.
inline QHBoxLayout *rowIn(QWidget *widget, int spacing) {
    auto *row = new QHBoxLayout(widget);
    row->setContentsMargins({});
    row->setSpacing(spacing);
    return row;
}

inline void setInk(QLabel &label, const QColor &ink) {
    QPalette palette = label.palette();
    if (palette.color(QPalette::WindowText) == ink)
        return;
    palette.setColor(QPalette::WindowText, ink);
    label.setPalette(palette);
}

} // namespace cantorel::ui
