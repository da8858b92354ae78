#pragma once

#include <QAbstractButton>

namespace cantorel::ui {

// A round button that plays and pauses.
class PlayButton : public QAbstractButton {
public:
    explicit PlayButton(QWidget *parent);

    void setPlaying(bool isPlaying);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool mIsPlaying = false;
};

} // namespace cantorel::ui
