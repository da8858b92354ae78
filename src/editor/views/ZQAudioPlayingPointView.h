#pragma once

#include "editor/views/ZQAudioWave.h"

namespace cantorel::ui {

// The play head over the wave. It covers all of it and has the mouse first: edges of selections are handed to the wave,
// everything else leads the head.
class ZQAudioPlayingPointView : public QWidget {
    Q_OBJECT

public:
    // Both outlive it.
    ZQAudioPlayingPointView(ZQAudioWave &wave, AudioPlayingPointDelegate &delegate, QWidget *parent);

    // Below 0 for none.
    void updatePlayingPoint(QPointF point);
    QPointF currentPlayingPoint() const { return mPoint; }

Q_SIGNALS:
    // Over that point; nothing once the pointer has left.
    void pointed(QPointF point);
    void left();
    void doubleClicked(QPointF point);
    // So many times closer, about that point of the wave.
    void zoomWanted(double factor, double x);
    // By so many points to the right.
    void scrollWanted(double points);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    bool event(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void drawPlayingPoint_(QPainter &painter) const;
    QRect place() const;

    ZQAudioWave &mWave;
    AudioPlayingPointDelegate &mDelegate;
    QPointF mPoint{WaveGeometry::kInset, 0};
};

} // namespace cantorel::ui
