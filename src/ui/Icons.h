#pragma once

#include <QColor>
#include <QIcon>
#include <QPalette>

class QWidget;

namespace cantorel::ui {

// One of the program's own drawings in the palette's colours, sharp at every size and scale; an empty icon when its
// file is missing. Main thread.
QIcon icon(const QString &name, const QPalette &palette);
QPixmap drawing(const QString &name, const QColor &colour, int size, qreal scale);

// How large an icon is beside the widget's text, in heights of a line of it: icons grow with the text.
QSize textIconSize(const QWidget &widget, qreal lines = 1.1);

// The program's own icon.
QIcon applicationIcon();

} // namespace cantorel::ui
