#pragma once

#include "editor/models/EditorDelegates.h"
#include "editor/views/ZQAudioTimeView.h"
#include "platform/foundation/NotificationCenter.h"

class QBoxLayout;
class QLabel;
class QPushButton;

namespace cantorel::ui {

// Start and end of the focused selection, and what can be done with selections.
class ZQAudioCutInfoView : public QWidget, private AudioTimeDelegate {
    Q_OBJECT

public:
    // infoDelegate: outlives it. lead: stands before the fields, and says which selection it is.
    ZQAudioCutInfoView(AudioCutInfoDelegate &infoDelegate, QWidget *lead, QWidget *parent);

    void showCutAudioInfoWithStartTime(double startTime, double endTime);
    void setMinTime(double seconds) { mMinTimeValue = seconds; }
    void setMaxTime(double seconds) { mMaxTimeValue = seconds; }
    void setTimeControlID(const char *id, double CurrentValue, double minTime, double maxTime);
    void setClearButtonEnable(bool isEnabled);
    void setcutAreaTimeControllerEnable(bool isEnabled);
    void setAddCutAreaFunctionEnable(bool isEnabled);
    void setDeleteAreaFunctionEnable(bool isEnabled);

    ZQAudioTimeView &startTimeView() { return *mStart; }
    ZQAudioTimeView &endTimeView() { return *mEnd; }
    QPushButton &add() { return *mAdd; }
    QPushButton &remove() { return *mDelete; }
    QPushButton &clear() { return *mClear; }
    QPushButton &find() { return *mFind; } // selections between silences
    void showTexts(const QString &start, const QString &end);

    // As narrow as its widest part.
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    bool event(QEvent *event) override;

private:
    void AudioTime_UpdateTime(ZQAudioTimeView &view, double seconds) override;
    void fit();

    AudioCutInfoDelegate &mInfoDelegate;
    QWidget *mLead, *mFieldBox;
    QLabel *mStartLabel, *mEndLabel;
    ZQAudioTimeView *mStart, *mEnd;
    QPushButton *mAdd, *mDelete, *mClear, *mFind;
    QBoxLayout *mRow, *mFields, *mButtons;
    double mMinTimeValue = 0, mMaxTimeValue = 0;
    foundation::NotificationCenter::Subscription mRectDidChange;
};

} // namespace cantorel::ui
