#pragma once

#include <QWidget>

namespace cantorel {
class SoundHistory;
}

namespace cantorel::ui {

// The last minute of sound, the newest at the right, with splits, lost frames and lost devices marked in it.
class SoundPictureView : public QWidget {
public:
    // The history outlives the view.
    explicit SoundPictureView(const SoundHistory &history, QWidget *parent = nullptr);

    // A column has come.
    void wake();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const SoundHistory &mHistory;
};

} // namespace cantorel::ui
