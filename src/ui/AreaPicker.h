#pragma once

#include <QPixmap>
#include <QPointer>
#include <QRect>
#include <QWidget>

#include <functional>

namespace cantorel::ui {

// A picture of a screen in front of it, on which an area is drawn with the mouse or moved with the keys. Deletes itself
// when it is taken or left.
class AreaPicker : public QWidget {
public:
    // frame: what the screen shows of the space that all displays share, in its points. area: to begin with, in that
    // space; may be null. taken: called with the area in that space, not at all when it is left.
    AreaPicker(QScreen &screen, const QRect &frame, const QRect &area, std::function<void(const QRect &area)> taken);

    // In points of the widget.
    QRect area() const { return mArea; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void setArea(const QRect &area);
    void take();
    double scale() const; // points of the shared space in one of the widget

    const QPixmap mPicture;
    const QRect mFrame;
    const std::function<void(const QRect &)> mTaken;
    QRect mArea;
    QPoint mPressed;
    QRect mMoved; // the area as it was taken hold of; null while another one is drawn
};

} // namespace cantorel::ui
