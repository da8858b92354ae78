#pragma once

#include "recording/control/RecordingAdvice.h"
#include "recording/session/RecordingSessionView.h"

#include <QWidget>

#include <optional>

class QLineEdit;
class QPushButton;

namespace cantorel {
class RecordedList;
class RecorderPanel;
} // namespace cantorel

namespace cantorel::ui {

class Strip;

// The news of the record page, one at a time: what went wrong, what has become of the recording, what is missing.
class RecordStrips : public QWidget {
    Q_OBJECT

public:
    // All outlive it.
    RecordStrips(RecorderPanel &panel, RecordedList &list, QWidget *parent);

    void showState();
    // Source or devices have changed.
    void showAdvice();
    // Something else on the page says the same.
    void setAdviceShown(bool isShown) { mIsAdviceShown = isShown; }
    // Offered until the next start.
    void showResult(const FinishedRecording &recording);
    // Seconds until the computer is shut down; below 0 when it is not any more. True where that is news.
    bool showShutdown(int seconds);
    void showTexts();

Q_SIGNALS:
    // Silence shall be recorded from now on.
    void silenceKept();
    void virtualDeviceWanted();
    void shutdownCancelled();
    // The start that comes next shall not be made; it shall after all.
    void taskCancelled();
    void taskWanted();
    // What is missing may be there now.
    void mended();
    void playWanted(const QString &file);
    void revealWanted(const QString &file);
    void editWanted(const QString &file);

private:
    QString shutdownText() const;
    QString skippedText() const;
    QString resultText() const;
    void mend();
    void editName(bool isEdited);
    void rename();
    void showIcons();
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

    RecorderPanel &mPanel;
    RecordedList &mList;
    Strip *mTrouble, *mShutdown, *mSoon, *mSkipped, *mWaiting, *mResult, *mAdvice; // the most urgent first
    QPushButton *mCancel, *mSkip, *mUndoSkip, *mKeepSilence, *mPlay, *mRename, *mReveal, *mEdit, *mMend;
    QLineEdit *mName; // of the result, while it is renamed
    QString mNameTrouble;
    RecordingAdvice mLack;
    std::optional<FinishedRecording> mFinished;
    int mSecondsToShutdown = -1;
    bool mIsAdviceShown = true;
};

} // namespace cantorel::ui
