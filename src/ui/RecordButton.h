#pragma once

#include <QAbstractButton>
#include <QVariantAnimation>

namespace cantorel::ui {

// The one unmistakable button: a red disc that begins a recording, and a red square that ends one. Its text is what
// it does, for those who cannot see it.
class RecordButton : public QAbstractButton {
public:
    explicit RecordButton(QWidget *parent = nullptr);

    void setRecording(bool recording);
    // Smaller, where the window is low.
    void setLow(bool isLow);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    bool hitButton(const QPoint &position) const override;

private:
    QRectF ring() const;

    bool mIsRecording = false, mIsLow = false;
    QVariantAnimation mTurn;
    bool mTellsFrame = qEnvironmentVariableIsSet("CANTOREL_SHOW_FRAME"); // for measuring the start
};

} // namespace cantorel::ui
