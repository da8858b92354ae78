#pragma once

#include "editor/models/CutList.h"

#include <QAbstractSlider>
#include <QImage>

namespace cantorel::ui {

// The whole sound above the stretch of it that is looked at, which is moved here. Its value is where that begins, in
// milliseconds; it is there only while not all is seen.
class WaveOverview : public QAbstractSlider {
    Q_OBJECT

public:
    // Both outlive it.
    WaveOverview(const WaveGeometry &geometry, const CutList &cuts, QWidget *parent);

    // Other levels, other selections, or another view.
    void showView();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    // The view is to begin at that second.
    void scrollWanted(double seconds);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    double secondsAt(double x) const;
    QRectF frame() const; // what is looked at

    const WaveGeometry &mGeometry;
    const CutList &mCuts;
    WaveGeometry mWhole; // at the size of this
    QImage mPicture;
    double mGrip = 0; // seconds from the beginning of the view to where it was taken hold of
};

} // namespace cantorel::ui
