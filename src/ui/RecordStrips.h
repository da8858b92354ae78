#pragma once

#include "recording/control/RecordingAdvice.h"
#include "recording/session/RecordingSessionView.h"

#include <QWidget>

#include <optional>

class QPushButton;

namespace cantorel {
class RecorderPanel;
}

namespace cantorel::ui {

class Strip;

// The news of the record page, one at a time: what went wrong, what has become of the recording, what is missing.
class RecordStrips : public QWidget {
    Q_OBJECT

public:
    // The panel outlives it.
    RecordStrips(RecorderPanel &panel, QWidget *parent);

    void showState();
    // Source or devices have changed.
    void showAdvice();
    // Offered until the next start.
    void showResult(const FinishedRecording &recording);
    void showTexts();

Q_SIGNALS:
    void virtualDeviceWanted();
    // What is missing may be there now.
    void mended();
    void playWanted(const QString &file);
    void revealWanted(const QString &file);

private:
    QString resultText() const;
    void mend();

    RecorderPanel &mPanel;
    Strip *mTrouble, *mResult, *mAdvice;
    QPushButton *mPlay, *mReveal, *mMend;
    RecordingAdvice mLack;
    std::optional<FinishedRecording> mFinished;
};

} // namespace cantorel::ui
