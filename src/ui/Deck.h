#pragma once

#include "ui/look/Look.h"

#include <QPainter>
#include <QWidget>

namespace cantorel::ui {

// The ground of what stands at the bottom of a page, with a hairline on top.
class Deck : public QWidget {
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        painter.fillRect(rect(), Look::tokens().surface);
        painter.fillRect(0, 0, width(), 1, Look::tokens().line);
    }
};

} // namespace cantorel::ui
