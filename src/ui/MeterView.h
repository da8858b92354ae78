#pragma once

#include <QTimer>
#include <QWidget>

namespace cantorel {
class LevelDisplay;
}

namespace cantorel::ui {

// The level in 20 steps, average and peak, 30 times a second while there is something to see and somebody can see it.
class MeterView : public QWidget {
public:
    // The display outlives the view.
    explicit MeterView(LevelDisplay &level, QWidget *parent = nullptr);

    const LevelDisplay &level() const { return mLevel; }
    // A level has come.
    void wake();

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void step();

    LevelDisplay &mLevel;
    int mShownLit = 0, mShownPeak = 0;
    QTimer mTimer;
};

} // namespace cantorel::ui
