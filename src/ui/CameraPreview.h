#pragma once

#include "recording/session/MovieSession.h"

#include <QWidget>

#include <memory>

namespace cantorel {
class VideoPreviewLayer;
}

namespace cantorel::ui {

// What the camera of the wish sees. The camera runs while this is shown.
class CameraPreview : public QWidget {
public:
    // movies: outlives it.
    CameraPreview(MovieSession &movies, QWidget *parent);
    ~CameraPreview() override;

    // Another camera is wanted, or none.
    void showWish();

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void look();

    MovieSession &mMovies;
    std::shared_ptr<VideoPreviewLayer> mLayer;
};

} // namespace cantorel::ui
