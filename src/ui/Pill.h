#pragma once

#include <QVariantAnimation>
#include <QWidget>

class QToolButton;

namespace cantorel::ui {

class DigitLabel;

// The running recording as every other page shows it: its time, which leads to the record page, pause and stop.
class Pill : public QWidget {
    Q_OBJECT

public:
    explicit Pill(QWidget *parent);

    void tell(const QString &time, bool isPaused);
    // Comes into sight from its right end, and goes at once.
    void setInSight(bool isInSight);
    void setPauseEnabled(bool isEnabled);
    // Where there is little room, without pause.
    void setNarrow(bool isNarrow);

Q_SIGNALS:
    void shown(); // the record page is asked for
    void paused();
    void stopped();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void showTexts();
    void showIcons();
    void uncover();

    DigitLabel *mTime;
    QToolButton *mPause, *mStop;
    bool mIsPaused = false;
    bool mIsInSight = false; // also while it moves from one page to another
    QVariantAnimation mComing;
};

} // namespace cantorel::ui
