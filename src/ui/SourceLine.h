#pragma once

#include "recording/session/MovieSession.h"

#include <QWidget>

class QLabel;
class QMenu;
class QToolButton;

namespace cantorel::ui {

class SourceSwitch;

// What will be recorded, and from which device. While something is recorded, it is text.
class SourceLine : public QWidget {
    Q_OBJECT

public:
    // movies: null where none are recorded; outlives the line.
    SourceLine(MovieSession *movies, QWidget *parent);

    // As the settings and the desktop have it; while something is recorded it stays what it was at the start.
    void showSettings();
    // The source alone: a recording begins, perhaps with that of a task.
    void showSource();
    void setRecording(bool isRecording);
    void showTexts();
    // The width that there is for it: without room the sources are only drawn, but for the chosen one.
    void fit(int room);

Q_SIGNALS:
    // The person has chosen another source or microphone.
    void chosen();

private:
    void wantScreen(bool isOn);
    void offerMicrophones(QMenu &menu);
    void showNames();
    QString elided(const QString &device) const;
    void showColours();
    void showIcons();
    void changeEvent(QEvent *event) override;

    MovieSession *const mMovies;
    SourceSwitch *mSources;
    QToolButton *mScreen;
    MovieWish::Picture mLastPicture = MovieWish::Picture::Screen;
    QLabel *mIcon, *mSource, *mDevice;
    QToolButton *mMicrophone;
    QString mOutput;
    bool mIsRecording = false;
    int mRoom = QWIDGETSIZE_MAX;
};

} // namespace cantorel::ui
