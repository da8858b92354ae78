#pragma once

#include <QVariantAnimation>
#include <QWidget>

namespace cantorel::ui {

// What unfolds when it comes into sight, and goes at once: its body, which is whole all the while, is uncovered from
// the edge that it hangs on.
class Unfolding : public QWidget {
public:
    enum class Edge { Above, Below };

    Unfolding(Edge edge, QWidget *parent);

    void setInSight(bool isInSight);
    // What is left of the motion is spared.
    void unfoldAtOnce() { mUnfold.setCurrentTime(mUnfold.duration()); }

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {mBody->minimumSizeHint().width(), 0}; }

protected:
    QWidget &body() { return *mBody; }
    const QWidget &body() const { return *mBody; }
    bool event(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    qreal unfolded() const { return mUnfold.currentValue().toReal(); } // 0 to 1

    const Edge mEdge;
    QWidget *mBody;
    QVariantAnimation mUnfold;
};

} // namespace cantorel::ui
