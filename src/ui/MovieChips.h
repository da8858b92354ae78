#pragma once

#include "recording/session/MovieSession.h"

#include <QWidget>

class QComboBox;
class QLabel;

namespace cantorel::ui {

// What a movie shows, and how often a second.
class MovieChips : public QWidget {
public:
    // movies: outlives it.
    MovieChips(MovieSession &movies, QWidget *parent);

    // The displays and cameras that there are now.
    void showChoices();
    void showTexts();

private:
    void choose(int index);
    void pickArea();
    void showEvent(QShowEvent *event) override;

    MovieSession &mMovies;
    QComboBox *mPicture, *mRate;
    QLabel *mFormat;
    std::vector<MovieWish> mWishes; // of each choice; an area without one is asked for
};

} // namespace cantorel::ui
