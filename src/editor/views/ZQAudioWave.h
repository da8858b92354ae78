#pragma once

#include "editor/models/EditorDelegates.h"

#include <QImage>
#include <QWidget>

#include <vector>

namespace cantorel::ui {

// The whole sound as bars, with the selections and their edges in their colours, kept as a picture. The edges are
// dragged here.
class ZQAudioWave : public QWidget {
    Q_OBJECT

public:
    // Both outlive it.
    ZQAudioWave(const WaveGeometry &geometry, AudioCutRequestDelegate &delegate, QWidget *parent);

    // Other levels, another length: everything is painted anew.
    void waveDidChange();
    // Selections have come, gone or changed: what looks different is painted anew.
    void cutsDidChange();

    // A press takes hold of an edge or not; the hit code says which, and what follows drags it.
    CutHit press(QPointF point);
    void drag(QPointF point);
    void release();
    void hover(QPointF point);
    bool isWholeSeen() const { return mGeometry.zoom() <= 1; }
    bool isDragging() const { return mHit == CutHit::LeftEdge || mHit == CutHit::RightEdge; }

    QSize minimumSizeHint() const override { return {2 * static_cast<int>(WaveGeometry::kInset) + 1, kLeastHeight}; }

    static constexpr int kLeastHeight = 160;

Q_SIGNALS:
    // What pointer stands for what is below it.
    void cursorWanted(Qt::CursorShape shape);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    struct Shown {
        double left = 0, right = 0;
        bool isFocusOn = false;
        bool operator==(const Shown &) const = default;
    };
    void paint(double from, double to);    // in points
    void paintColumns(int first, int end); // of the picture, in its pixels

    const WaveGeometry &mGeometry;
    AudioCutRequestDelegate &mDelegate;
    QImage mPicture;
    bool mIsPainted = false; // the picture shows what it should
    std::vector<Shown> mShown;
    // The press that is being dragged: on what, and how far beside the edge.
    CutHit mHit = CutHit::None;
    ZQAudioCutEntity *mEntity = nullptr;
    double mBeside = 0;
};

} // namespace cantorel::ui
