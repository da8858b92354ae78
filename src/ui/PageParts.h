#pragma once

#include <QColor>
#include <QHBoxLayout>
#include <QLabel>
#include <QMimeData>
#include <QStringList>
#include <QUrl>

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

// Of what is dragged or pasted.
inline QStringList localFiles(const QMimeData &data) {
    QStringList files;
    for (const QUrl &url : data.urls())
        if (url.isLocalFile())
            files << url.toLocalFile();
    return files;
}

} // namespace cantorel::ui
