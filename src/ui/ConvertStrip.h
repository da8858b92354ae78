#pragma once

#include "ui/Strip.h"

class QProgressBar;

namespace cantorel::ui {

class ZQAudioConvertController;

// How far the conversion is, on every page but its own; at the end what has become of it, until it is closed.
class ConvertStrip : public Strip {
    Q_OBJECT

public:
    // The page outlives the strip.
    ConvertStrip(ZQAudioConvertController &page, QWidget *parent);

    // Whether another page than that of the conversion is shown.
    void setElsewhere(bool isElsewhere);

Q_SIGNALS:
    void showWanted();

private:
    void showState();
    void showTexts();
    void changeEvent(QEvent *event) override;

    ZQAudioConvertController &mPage;
    QProgressBar *mBar;
    QPushButton *mShow, *mStop, *mReveal;
    bool mIsElsewhere = true;
    bool mIsSeen = false; // what the last run has led to
};

} // namespace cantorel::ui
