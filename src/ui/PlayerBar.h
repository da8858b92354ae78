#pragma once

#include "ui/Deck.h"

class QLabel;
class QSlider;

namespace cantorel {
class LibraryPlayer;
class RecordedList;
} // namespace cantorel

namespace cantorel::ui {

class DigitLabel;
class PlayButton;

// The player at the bottom of the library: what is played, else the recording that is chosen, else what was played.
class PlayerBar : public Deck {
    Q_OBJECT

public:
    // Both outlive it.
    PlayerBar(LibraryPlayer &player, const RecordedList &list, QWidget *parent);

    // The file of the chosen recording; empty for none.
    void choose(const QString &file);
    void playOrPause();
    // Goes on so many steps of five seconds later, or earlier.
    void step(int steps);
    void showTexts();

Q_SIGNALS:
    // The person asks for this file, which is not loaded or paused.
    void playWanted(const QString &file);
    // It has been clicked at: the keys belong to the list again.
    void clicked();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    QString file() const;
    void seek(double seconds);
    void showPlayer();
    void showNames();

    LibraryPlayer &mPlayer;
    const RecordedList &mList;
    PlayButton *mPlay;
    QWidget *mNames;
    QLabel *mTitle, *mSecond;
    DigitLabel *mTime, *mLength;
    QSlider *mSeek;
    QString mChosen, mShown; // files
    double mListed = 0;      // the length of what is shown, as the list has it
};

} // namespace cantorel::ui
