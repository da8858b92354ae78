#pragma once

#include "editor/models/TimeField.h"

#include <QWidget>

namespace cantorel::ui {

class ZQAudioTimeView;

// Hears what a person does in a field for a time.
class AudioTimeDelegate {
public:
    virtual ~AudioTimeDelegate() = default;
    virtual void AudioTime_UpdateTime(ZQAudioTimeView &view, double seconds) = 0;
};

// A field for a time with hours, minutes, seconds and milliseconds, and a stepper. A click or the arrow keys choose a
// part, digits replace it, up and down change it.
class ZQAudioTimeView : public QWidget {
    Q_OBJECT

public:
    explicit ZQAudioTimeView(QWidget *parent);

    AudioTimeDelegate *delegate = nullptr; // outlives the view or is taken back

    void setTime(double seconds);
    void setTime(double seconds, double MinValue, double MaxValue);
    void setMinTime(double seconds) { mField.setMinTime(seconds); }
    void setMaxTime(double seconds) { mField.setMaxTime(seconds); }
    double time() const { return mField.time(); }
    void setEnable(bool isEnabled) { setEnabled(isEnabled); }
    TimeField::Part focusOnIndex() const { return mField.focusOnIndex(); }
    // Sets the time as a person would.
    void change(double seconds);
    // A stepper's click.
    void controlTimeValueStrpper(int direction);
    // Ends the editing of a part; what was typed counts.
    void clearTextField();
    QRectF rectOf(TimeField::Part part) const;
    QRectF strppetRect() const; // spelling is fixed

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    double scale() const;
    void focusPart(TimeField::Part part);
    void controlTextDidEndEditing_();
    bool keyDown_(int key);
    void tell();
    void drawTime_(QPainter &painter) const;
    void drawStepper(QPainter &painter) const;

    TimeField mField;
    QString mTyped; // in place of the part that has the focus; empty for nothing
};

} // namespace cantorel::ui
