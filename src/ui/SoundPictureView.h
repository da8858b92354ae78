#pragma once

#include <QWidget>

namespace cantorel {
class SoundHistory;
}

namespace cantorel::ui {

// The last minute of sound at most, a bar for each 0.3 s, with splits, lost frames and lost devices marked in it. It
// grows from the left, and scrolls once it is full.
class SoundPictureView : public QWidget {
public:
    // The history outlives the view.
    explicit SoundPictureView(const SoundHistory &history, QWidget *parent = nullptr);

    // Whether the sound is that of a recording under way; else it rests.
    void setRunning(bool isRunning);
    // A column has come.
    void wake();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    int pitch() const; // from one bar to the next
    std::size_t firstBar() const;

    const SoundHistory &mHistory;
    std::size_t mShownFirst = 0, mShownTotal = 0;
    bool mIsRunning = false;
};

} // namespace cantorel::ui
